#pragma once

#include <cstddef>
#include <string>

namespace qorn::inspect {

struct GraphOptions {
  std::string from;  // a framework definition, as -F takes it; empty: all that nothing includes
  std::size_t depth = static_cast<std::size_t>(-1);  // includes to follow from there
  bool reverse = false;                              // what leads there instead
  bool providers = false;                            // provider documents as well
};

/// Prints the includes of the framework definitions as a DOT graph: one node for each document,
/// missing ones marked, one edge for each pair. Throws Trouble for an unknown name.
void print_graph(const GraphOptions& options);

}  // namespace qorn::inspect
