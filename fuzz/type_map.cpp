#include "fuzz_installation.h"

bool qorn::fuzzing::read_input(const FuzzInstallation& installation, Config& config,
                               std::string_view input) {
  const std::string file = installation.write("etc/CLIPS_type_map.xml", input);
  return preproc::ConfigParser().parse_type_map(config, file,
                                                installation.path("etc/type_map.xsd")) == 0;
}
