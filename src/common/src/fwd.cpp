#include <unordered_set>

#include <qorn/config.h>
#include <qorn/fwd.h>

#include "fwd_members.h"

namespace qorn {

void FwdNode::insert(const Groups& more) {
  groups.insert(groups.end(), more.begin(), more.end());
}

std::shared_ptr<FwdNode> FwdNode::find(std::string path) {
  std::unordered_set<const FwdNode*> visited_nodes;
  std::vector<FwdNode*> stack{this};
  while (!stack.empty()) {
    FwdNode* node = stack.back();
    stack.pop_back();
    if (!visited_nodes.insert(node).second) {
      continue;
    }
    if (node->fwd->path == path) {
      return std::make_shared<FwdNode>(*node);
    }
    const std::vector<FwdNode*> members = members_reversed(*node);
    stack.insert(stack.end(), members.begin(), members.end());
  }
  return nullptr;
}

void FwdRegistry::release() {
  for (const auto& [path, fwd] : by_path) {
    if (fwd->node != nullptr) {
      release_tree(fwd->node);
      fwd->node.reset();
    }
  }
}

void release_frameworks(Config& config) {
  for (const auto& [name, group] : config.node_groups) {
    if (group != nullptr) {
      std::for_each(group->fwd_nodes.begin(), group->fwd_nodes.end(), release_tree);
    }
  }
  config.fwds->release();
}

}  // namespace qorn
