#include "fuzz_installation.h"

bool qorn::fuzzing::read_input(const FuzzInstallation& installation, Config& config,
                               std::string_view input) {
  config.postproc_config_files = {installation.write("etc/postprocessor/any.xml", input)};
  preproc::ConfigParser parser;
  return parser.parse_postproc_table_config(
             config, installation.path("etc/postprocessor/table.xsd")) == 0 ||
         parser.parse_postproc_reports_config(
             config, installation.path("etc/postprocessor/postproc.xsd")) == 0;
}
