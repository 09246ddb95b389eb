#include <qorn/preproc/clips_parser.h>

#include "fuzz_installation.h"

bool qorn::fuzzing::read_input(const FuzzInstallation& installation, Config& config,
                               std::string_view input) {
  preproc::clips_parser::parse_diagnoses(installation.write("kb/rules/diagnosis.clp", input),
                                         config);
  return true;
}
