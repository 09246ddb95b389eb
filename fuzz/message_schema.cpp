#include "fuzz_installation.h"

bool qorn::fuzzing::read_input(const FuzzInstallation& installation, Config& config,
                               std::string_view input) {
  installation.write("kb/data/msg_schema.xml", input);
  return preproc::ConfigParser().parse_tag_message_schema(
             config, installation.path("etc/schema_map.xsd")) == 0;
}
