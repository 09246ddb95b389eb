#pragma once

#include <optional>
#include <string>
#include <vector>

#include "terminal.h"

namespace qorn::inspect {

/// Prints what runs on the node of that name and how that comes about, or the first condition
/// that fails; of all framework definitions, or of that one, by name or path. Gives 0 when
/// something runs there, else 1. Throws Trouble when the run would fail.
int explain(const std::string& node_name, const std::optional<std::string>& framework,
            const std::vector<std::string>& arguments, const Terminal& terminal);

}  // namespace qorn::inspect
