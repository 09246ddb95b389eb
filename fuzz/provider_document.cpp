#include "fuzz_installation.h"

bool qorn::fuzzing::read_input(const FuzzInstallation& installation, Config& config,
                               std::string_view input) {
  provider_config provider;
  return preproc::Preprocessor::parse_provider_config_xml(
             provider, installation.write("etc/providers/any.xml", input), config,
             installation.path("provider/share")) == 0;
}
