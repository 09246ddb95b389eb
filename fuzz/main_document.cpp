#include "fuzz_installation.h"

// For the run and for the collect engine, which reads the collector section.
bool qorn::fuzzing::read_input(const FuzzInstallation& installation, Config& config,
                               std::string_view input) {
  config.config_file = installation.write("etc/qorn.xml", input);
  Config engine = config;
  const bool collected = preproc::read_config(engine, config.config_file) == 0;
  return preproc::ConfigParser().parse_configuration_xml(config) == 0 && collected;
}
