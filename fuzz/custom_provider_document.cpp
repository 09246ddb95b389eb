#include <qorn/xml.h>

#include "fuzz_installation.h"

bool qorn::fuzzing::read_input(const FuzzInstallation& installation, Config& config,
                               std::string_view input) {
  static const xml::DocumentPtr definition = [&] {
    std::vector<xml::Fault> faults;
    return xml::read_document(
        installation.write("tag.xml", "<providers config_file='custom.xml'/>"), faults);
  }();
  installation.write("etc/providers/custom.xml", input);
  std::vector<std::string> names;
  const bool valid = preproc::get_provider_list(xml::root_of(definition), names, config);
  for (const auto& [name, sets] : config.provider_options) {
    preproc::populate_option_vars_map(config, name);
  }
  return valid;
}
