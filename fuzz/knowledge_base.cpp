#include "fuzz_installation.h"

bool qorn::fuzzing::read_input(const FuzzInstallation& installation, Config& config,
                               std::string_view input) {
  config.kb_config_files = {installation.write("etc/kb/any.xml", input)};
  return preproc::ConfigParser().parse_kb_config(
             config, installation.path("etc/postprocessor/postproc.xsd")) == 0;
}
