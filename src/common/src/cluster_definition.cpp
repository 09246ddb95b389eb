#include <algorithm>
#include <iterator>

#include <qorn/cluster_definition.h>
#include <qorn/constants.h>
#include <qorn/fwd.h>

namespace qorn {

bool historic_subcluster_present(const Node& node) {
  return !node.subcluster.empty() && node.subcluster != DEFAULT_SUBCLUSTER;
}

void ClusterDefinition::insert_node_instance(const Node& node) {
  insert_node_instance(std::make_shared<Node>(node));
}

void ClusterDefinition::insert_node_instance(const std::shared_ptr<Node>& node) {
  const std::size_t before = nodes.size();
  nodes.insert(nodes.end(), node);  // the hint makes insertion in name order constant
  if (nodes.size() > before && historic_subcluster_present(*node)) {
    historic_nodes.insert(historic_nodes.end(), node);
  }
}

bool ClusterDefinition::is_node_present(const Node& node) const {
  // A set under CompareNodes is asked with a pointer; this one doesn't own its node.
  const std::shared_ptr<Node> key(std::shared_ptr<Node>(), const_cast<Node*>(&node));
  return is_node_present(key);
}

bool ClusterDefinition::is_node_present(const std::shared_ptr<Node>& node) const {
  return nodes.find(node) != nodes.end();
}

std::vector<std::shared_ptr<Node>> ClusterDefinition::get_default_node_list() const {
  return {nodes.begin(), nodes.end()};
}

std::size_t ClusterDefinition::getNodeListSize() const {
  return nodes.size();
}

std::vector<std::shared_ptr<Node>> ClusterDefinition::get_nodes_difference(
    const ClusterDefinition& other) const {
  std::vector<std::shared_ptr<Node>> difference;
  std::set_difference(nodes.begin(), nodes.end(), other.nodes.begin(), other.nodes.end(),
                      std::back_inserter(difference), CompareNodes());
  return difference;
}

std::set<std::string> ClusterDefinition::get_root_fwd_path() const {
  std::set<std::string> paths;
  for (const auto& node : fwd_nodes) {
    paths.insert(node->fwd->path);
  }
  return paths;
}

bool ClusterDefinition::is_valid_data() const {
  return !name.empty() && !nodes.empty();
}

}  // namespace qorn
