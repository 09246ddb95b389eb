#pragma once

#include "question.h"

namespace qorn::inspect {

/// Prints the hosts of the expressions together: folded, one a line, or their number. In an
/// expression "," unites, "!" takes away and "&" keeps what both have, from left to right; an
/// operand is a folded name or "@GROUP" of the node group document of -g, by default the one of
/// the main document. Gives 0. Throws Trouble for what is no expression.
int print_nodes(const Question& question);

}  // namespace qorn::inspect
