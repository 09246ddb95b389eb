#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace qorn {

struct FwdNode;

/// One cluster node. Its identity is the host name alone.
struct Node {
  std::string subcluster;  // empty or DEFAULT_SUBCLUSTER: none of its own
  std::string hostname;
  std::vector<std::string> roles;
  std::set<std::string> reader_set;  // reader_…: a node reader's, only copied here
  std::string reader_text;
  std::array<std::uint64_t, 2> reader_words{};
};

/// Whether `node` belongs to a subcluster of its own.
bool historic_subcluster_present(const Node& node);

/// Orders nodes by host name, so that a set holds one node for each name: the first one inserted.
struct CompareNodes {
  bool operator()(const std::shared_ptr<Node>& a, const std::shared_ptr<Node>& b) const {
    return a->hostname < b->hostname;
  }
};

/// A named set of nodes with the framework definitions that run on them.
struct ClusterDefinition {
  using NodeSet = std::set<std::shared_ptr<Node>, CompareNodes>;

  std::string name = "default-subcluster";
  /// Trees of framework definitions; a tree may be shared between groups.
  std::set<std::shared_ptr<const FwdNode>> fwd_nodes;
  bool implicit = false;  // true for a group that the system made by itself
  /// Explicit groups that an "All-except-nodegroup" group leaves out.
  std::set<std::string> excluded_groups;
  /// Of the group "All": path of a root, to the paths cut out of that root's copy.
  std::map<std::string, std::set<std::string>> removed_fwds;
  NodeSet nodes;           // every node; kept by the operations below
  NodeSet historic_nodes;  // those with a subcluster of their own; kept by the operations below

  /// Adds a copy of `node`; a node of that host name that is already there stays as it is.
  void insert_node_instance(const Node& node);
  /// Adds `node` itself, shared; a node of that host name that is already there stays.
  void insert_node_instance(const std::shared_ptr<Node>& node);

  /// Whether a node of that host name is in the definition.
  bool is_node_present(const Node& node) const;
  bool is_node_present(const std::shared_ptr<Node>& node) const;

  /// The definition's nodes, in the order of their names.
  std::vector<std::shared_ptr<Node>> get_default_node_list() const;

  /// The number of nodes.
  std::size_t getNodeListSize() const;

  /// The nodes of this definition that `other` doesn't hold, in the order of their names.
  std::vector<std::shared_ptr<Node>> get_nodes_difference(const ClusterDefinition& other) const;

  /// The paths of the framework definitions at the roots of `fwd_nodes`.
  std::set<std::string> get_root_fwd_path() const;

  /// Whether the definition holds what a run needs: a name and at least one node.
  bool is_valid_data() const;
};

}  // namespace qorn
