#pragma once

#include <cstddef>
#include <optional>

namespace qorn {

struct FwdNode;

namespace detail {
#pragma GCC visibility push(hidden)

/// The tree form of an include graph can be exponentially larger than the graph. So many tree nodes
/// may be made in one run, in clones and listings together.
inline constexpr std::size_t TREE_NODES_PER_RUN = 1'000'000;

/// While one lives, trees are counted together. Of nested ones the innermost counts.
class TreeBudget {
 public:
  TreeBudget();
  TreeBudget(const TreeBudget&) = delete;
  TreeBudget& operator=(const TreeBudget&) = delete;
  ~TreeBudget();

  /// Takes the nodes of the tree form below `node` from the budget in force, before any of them is
  /// made. Throws std::runtime_error that names the definition when they are more than what is
  /// left.
  static void spend(const FwdNode& node);

 private:
  friend class TreeCall;

  static TreeBudget* current;
  std::size_t left_ = TREE_NODES_PER_RUN;
  TreeBudget* outer_;
};

/// One call from outside: outside of a run it has a budget of its own, and what it calls shares it.
class TreeCall {
 public:
  TreeCall();

 private:
  std::optional<TreeBudget> own_;
};

#pragma GCC visibility pop
}  // namespace detail
}  // namespace qorn
