#pragma once

#include <string>
#include <vector>

#include "place.h"

namespace qorn::inspect {

/// An element `nodegroup` of a node group document.
struct NodeGroup {
  std::string name;
  Place place;
  std::vector<std::string> hosts;  // sorted, each once
};

/// A node group document.
struct NodeGroups {
  /// An element `fwd`, or a group that it names.
  struct Tie {
    std::string framework;  // as it is written
    std::string path;       // as a run computes it
    std::string group;      // empty for the element itself
    Place place;
  };
  std::vector<NodeGroup> groups;
  std::vector<Tie> ties;

  /// Null for a name that no group has; of two groups with one name the first counts.
  const NodeGroup* find(const std::string& name) const;
  std::vector<std::string> names() const;
};

/// Reads the node group document `file`. Throws Trouble, after the reasons, when it or one of
/// its node files can't be used.
NodeGroups read_node_groups(const std::string& file, const std::string& root);

/// The node group document that the main document of the installation names, or empty.
std::string node_group_file_of_installation();

}  // namespace qorn::inspect
