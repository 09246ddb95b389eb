#include "fuzz_installation.h"

// The documents of "base" and of three more that it may include, with their listing.
bool qorn::fuzzing::read_input(const FuzzInstallation& installation, Config& config,
                               std::string_view input) {
  installation.write_pieces({"etc/fwd/base.xml", "etc/fwd/a.xml", "etc/fwd/b.xml", "etc/fwd/c.xml"},
                            input);
  preproc::FWDParser parser;
  const bool loaded = parser.load_fwds(config, true) == 0;
  for (const auto& root : config.fwds->roots) {
    parser.print_fwd_info_all(*root->fwd, "", "  ", config);
  }
  return loaded;
}
