#include <unordered_map>
#include <vector>

#include <qorn/detail/unheld_trees.h>

#include "fwd_members.h"

namespace qorn::detail {
namespace {

/// The owners of a node that are known.
using Owners = std::unordered_map<std::shared_ptr<FwdNode>, long>;

/// Everything that is reachable from the set, with the links to each that start among it.
Owners count_owners(const std::set<std::shared_ptr<const FwdNode>>& dropped) {
  Owners owners;
  std::vector<FwdNode*> unvisited;
  const auto add_owner = [&](const std::shared_ptr<FwdNode>& node) {
    if (node != nullptr && ++owners[node] == 1) {
      unvisited.push_back(node.get());
    }
  };
  for (const auto& tree : dropped) {
    add_owner(std::const_pointer_cast<FwdNode>(tree));
  }
  while (!unvisited.empty()) {
    const FwdNode* node = unvisited.back();
    unvisited.pop_back();
    for_each_link(*node, add_owner);
  }
  return owners;
}

/// Takes out what somebody else holds, and all that it leads to.
void keep_held(Owners& owners) {
  std::vector<std::shared_ptr<FwdNode>> kept;
  for (const auto& [node, known] : owners) {
    if (node.use_count() > known + 1) {  // the table's own
      kept.push_back(node);
    }
  }
  while (!kept.empty()) {
    const std::shared_ptr<FwdNode> node = kept.back();
    kept.pop_back();
    if (owners.erase(node) != 0) {
      for_each_link(*node, [&](const auto& other) {
        if (other != nullptr) {
          kept.push_back(other);
        }
      });
    }
  }
}

}  // namespace

// The table holds every node until all links are gone, so that no destructor recurses.
void release_unheld(const std::set<std::shared_ptr<const FwdNode>>& dropped) {
  Owners owners = count_owners(dropped);
  keep_held(owners);
  for (const auto& [node, known] : owners) {
    node->groups.clear();
    node->parents.clear();
  }
}

}  // namespace qorn::detail
