#pragma once

#include <string>
#include <vector>

#include "terminal.h"

namespace qorn::inspect {

/// Compares two records that QORN_RECORD has written. Prints the differences by section; gives 0
/// when there are none, else 1. Throws Trouble for a file that is no record.
int diff_records(const std::string& a, const std::string& b, const Terminal& terminal);

/// Compares the runs with the same arguments under two installation roots, each loaded in a
/// process of its own. The roots themselves are no difference.
int diff_roots(const std::string& a, const std::string& b,
               const std::vector<std::string>& arguments, const Terminal& terminal);

}  // namespace qorn::inspect
