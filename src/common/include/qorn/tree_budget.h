#pragma once

#include <cstddef>

namespace qorn {

struct FwdNode;

namespace internal {

/// The tree form of an include graph can be exponentially larger than the graph. A run may make
/// this many tree nodes, in clones and listings together.
inline constexpr std::size_t TREE_NODES_PER_RUN = 1'000'000;

/// Makes the whole budget available again; called at the start of a run.
void start_tree_budget();

/// Takes the nodes of the tree form below `node` from the budget, before any of them is made.
/// Throws std::runtime_error that names the definition when they are more than what is left.
void spend_tree_budget(const FwdNode& node);

}  // namespace internal
}  // namespace qorn
