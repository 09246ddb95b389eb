#pragma once

#include "question.h"

namespace qorn::inspect {

/// Prints the includes of the framework definitions as a DOT graph: one node for each document,
/// missing ones marked, one edge for each pair. Gives 0. Throws Trouble for an unknown name.
int print_graph(const Question& question);

}  // namespace qorn::inspect
