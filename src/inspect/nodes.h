#pragma once

#include <string>
#include <vector>

namespace qorn::inspect {

enum class NodeForm { FOLD, EXPAND, COUNT };

/// Prints the hosts of the expressions together: folded, one a line, or their number. In an
/// expression "," unites, "!" takes away and "&" keeps what both have, from left to right; an
/// operand is a folded name or "@GROUP" of the node group document `group_file`, by default the
/// one of the main document. Throws Trouble for what is no expression.
void print_nodes(const std::vector<std::string>& expressions, NodeForm form,
                 std::string group_file);

}  // namespace qorn::inspect
