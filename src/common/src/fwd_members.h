#pragma once

#include <algorithm>
#include <vector>

#include <qorn/fwd.h>

namespace qorn {

/// Calls `visit` with each member of all groups, in order.
template <typename Visit>
void for_each_member(const FwdNode& node, Visit visit) {
  for (const auto& group : node.groups) {
    for (const auto& member : group.members) {
      visit(member);
    }
  }
}

/// Calls `visit` with everything that `node` holds: its members and its parents.
template <typename Visit>
void for_each_link(const FwdNode& node, Visit visit) {
  for_each_member(node, visit);
  std::for_each(node.parents.begin(), node.parents.end(), visit);
}

/// The members of all groups, last one first: the order in which a stack takes them.
inline std::vector<FwdNode*> members_reversed(const FwdNode& node) {
  std::vector<FwdNode*> members;
  for_each_member(node, [&](const auto& member) { members.push_back(member.get()); });
  std::reverse(members.begin(), members.end());
  return members;
}

}  // namespace qorn
