#include <qorn/preproc/clips_parser.h>

#include "fuzz_installation.h"

// A rule file and three more that it may load.
bool qorn::fuzzing::read_input(const FuzzInstallation& installation, Config& config,
                               std::string_view input) {
  installation.write_pieces(
      {"kb/rules/base.clp", "kb/rules/a.clp", "kb/rules/b.clp", "kb/rules/c.clp"}, input);
  std::set<Rule> rules;
  return preproc::clips_parser::parse_clips_rules(installation.path("kb/rules/base.clp"), rules,
                                                  config, installation.path("kb")) == 0;
}
