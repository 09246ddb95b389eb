#pragma once

#include <string>
#include <vector>

#include "terminal.h"

namespace qorn::inspect {

struct CheckOptions {
  std::vector<std::string> documents;  // empty: the whole installation
  std::string node_file;
  std::string node_group_file;
  bool strict = false;
  bool verbose = false;
};

/// Reads an installation and prints everything that is wrong with it. Gives the exit status: 0
/// clean or warnings alone, 1 errors, 3 warnings alone with `strict`.
int check(const CheckOptions& options, bool json, const Terminal& terminal);

}  // namespace qorn::inspect
