#pragma once

#include <string>
#include <vector>

#include <qorn/place.h>

namespace qorn::inspect {

/// A node group document.
struct NodeGroupDocument {
  /// An element `nodegroup`.
  struct Group {
    std::string name;
    Place place;
    std::vector<std::string> hosts;  // sorted, each once
  };
  /// An element `fwd`, or a group that it names.
  struct Tie {
    std::string framework;  // as it is written
    std::string path;       // as a run computes it
    std::string group;      // empty for the element itself
    Place place;
  };
  std::vector<Group> groups;
  std::vector<Tie> ties;

  /// Null for a name that no group has; of two groups with one name the first counts.
  const Group* find(const std::string& name) const;
  std::vector<std::string> names() const;
};

/// Reads the node group document `file`. Throws Trouble, after the reasons, when it or one of
/// its node files can't be used.
NodeGroupDocument read_node_group_document(const std::string& file, const std::string& root);

}  // namespace qorn::inspect
