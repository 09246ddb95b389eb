#include "fuzz_installation.h"

bool qorn::fuzzing::read_input(const FuzzInstallation& installation, Config& config,
                               std::string_view input) {
  config.rules_file = installation.write("rules.xml", input);
  config.rules_xsd = installation.path("etc/rules_generator.xsd");
  return parseRulesXML(config) == 0;
}
