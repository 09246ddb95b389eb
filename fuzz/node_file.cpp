#include <cstdlib>
#include <set>

#include <qorn/node.h>

#include "fuzz_installation.h"

namespace {

using namespace qorn;

constexpr std::size_t MOST_NAMES = 2000;  // more take time and show nothing new

/// Folding and expanding are each other's inverse.
void check_folding(const std::string& hosts) {
  const std::vector<std::string> names = node::expand_hosts(hosts).names;
  if (names.empty()) {
    return;
  }
  const std::string folded = node::fold_hosts(names);
  const std::vector<std::string> again = node::expand_hosts(folded).names;
  if (std::set(again.begin(), again.end()) != std::set(names.begin(), names.end()) ||
      node::fold_hosts(again) != folded) {
    std::abort();
  }
}

}  // namespace

bool qorn::fuzzing::read_input(const FuzzInstallation& installation, Config& config,
                               std::string_view input) {
  std::size_t names = 0;
  std::size_t start = 0;
  while (start < input.size()) {
    const std::size_t end = input.find_first_of(" \t\r\n#", start);
    const std::string_view word = input.substr(start, end - start);
    names += node::count_hosts(word).hosts;
    if (names > MOST_NAMES) {
      return true;
    }
    check_folding(std::string(word));
    start = end == std::string_view::npos ? input.size() : end + 1;
  }
  return preproc::Preprocessor().parse_nodefile(installation.write("nodes", input), config);
}
