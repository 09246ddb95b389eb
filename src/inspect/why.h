#pragma once

#include <string>
#include <vector>

#include "terminal.h"

namespace qorn::inspect {

/// Prints what runs on a node and how that comes about, or the first condition that fails.
/// `question` is the node and, optionally, one framework definition. Gives 0 when something runs
/// there, else 1. Throws Trouble when the run would fail.
int explain(const std::vector<std::string>& question, const std::vector<std::string>& arguments,
            const Terminal& terminal);

}  // namespace qorn::inspect
