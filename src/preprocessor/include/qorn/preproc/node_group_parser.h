#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include <libxml/tree.h>

#include <qorn/config.h>

namespace qorn::preproc {

/// Divides the cluster into named groups and ties framework definitions to them. Operations
/// return 0 for success and 1 for failure unless they say otherwise.
class NodeGroupParser {
 public:
  using NodeSet = std::set<std::shared_ptr<Node>, CompareNodes>;

  /// Reads config.node_group_file, if there is one, into config.node_groups, with the implicit
  /// groups of the framework definitions that it names. 1, with the reason at level 3 or on the
  /// output streams, for a document or a node file that can't be used and for a framework
  /// definition that is declared twice. Throws std::runtime_error, see FwdNode::clone_impl.
  int parse_group_file(Config& config);

  /// Fills `nodes` with the nodes of one group: its node files first, then its node elements.
  /// Leaves it empty when a node of the run has a subcluster of its own. 1 when a node file can't
  /// be used.
  int parse_node_group(xmlNode* group_element, NodeSet& nodes, Config& config);

  /// Ties one framework definition to its groups; `seen` holds the paths handled so far. 1 when
  /// it was handled before.
  int parse_fwd_node(xmlNode* fwd_element, Config& config, std::set<std::string>& seen);

  /// Whether the run has a node group document.
  bool is_node_group_file_available(const Config& config);

  /// Makes the group of all nodes outside the explicit groups that run the definition, unless a
  /// group of that name can take it. Always 0; a name that is taken is logged at level 3.
  int create_implicit_groups(std::string fwd_path, Config& config);

  /// For the engine, once the run's nodes are known: makes the group "All" and fills implicit
  /// groups. Does nothing without a node group document.
  int create_node_groups(Config& config);

  /// Makes the group "All", which runs every root that no explicit group names, without the
  /// branches that groups name. Does nothing when a node has a subcluster of its own. Always 0.
  int create_all_group(Config& config);

  /// Fills implicit groups that are still empty from config.cluster_definition and drops groups
  /// that hold nothing. 1 when cluster_definition is null.
  int update_nodes_from_db(Config& config);

  /// Cuts the node with that path out of the tree `copy`, by the parents that the node lists: the
  /// first parent that has it as a member loses it in the first group that holds it; every parent
  /// behind that one is searched in its first group alone. The node's own list of parents stays.
  /// Returns whether the tree holds the path.
  static bool cut_fwd(const std::shared_ptr<FwdNode>& copy, const std::string& path);

 private:
  using SharedNodes = std::vector<std::shared_ptr<Node>>;

  int read_groups(const std::vector<xmlNode*>& elements, Config& config);
  int read_group_nodes(const xmlNode* group_element, ClusterDefinition& group,
                       const Config& config);
  void create_implicit_group(const std::string& fwd_path, const SharedNodes& nodes, Config& config);
};

}  // namespace qorn::preproc
