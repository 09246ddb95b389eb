#include <algorithm>

#include <qorn/detail/notes.h>
#include <qorn/detail/tree_budget.h>
#include <qorn/detail/unheld_trees.h>
#include <qorn/document_kind.h>
#include <qorn/log/error_log.h>
#include <qorn/log/output_log.h>
#include <qorn/node.h>
#include <qorn/node/nodelist.h>
#include <qorn/preproc/node_group_parser.h>
#include <qorn/written_path.h>
#include <qorn/xml.h>

#include "implicit_groups.h"

namespace qorn::preproc {
namespace {

bool has_historic_subcluster(const Config& config) {
  return std::any_of(config.nodes.begin(), config.nodes.end(), historic_subcluster_present);
}

void drop_all_groups(Config& config) {
  std::set<std::shared_ptr<const FwdNode>> trees;
  for (const auto& [name, group] : config.node_groups) {
    if (group != nullptr) {
      trees.insert(group->fwd_nodes.begin(), group->fwd_nodes.end());
    }
  }
  config.node_groups.clear();
  detail::release_unheld(trees);
}

void add_nodes(node::Nodelist&& list, ClusterDefinition& group) {
  for (Node& each : list.nodes) {
    group.insert_node_instance(std::make_shared<Node>(std::move(each)));
  }
}

}  // namespace

bool NodeGroupParser::is_node_group_file_available(const Config& config) {
  return !config.node_group_file.empty();
}

int NodeGroupParser::parse_group_file(Config& config) {
  const detail::TreeCall call;
  if (!is_node_group_file_available(config)) {
    return 0;
  }
  xml::DocumentPtr doc = xml::open_valid_document(config.node_group_file,
                                                  schema_path(DocumentKind::GROUPS, config.root));
  if (doc == nullptr) {
    log::ErrorLog(log::level::ERROR).stream()
        << "Failed to open and validate group file " << config.node_group_file << "\n";
    return 1;
  }
  const xmlNode* root = xml::root_of(doc);
  if (read_groups(xml::get_child_nodes(root, "nodegroup"), config) == 1) {
    return 1;
  }
  if (config.node_groups.empty()) {
    return 0;
  }
  std::set<std::string> seen;
  for (xmlNode* element : xml::get_child_nodes(root, "fwd")) {
    if (parse_fwd_node(element, config, seen) == 1) {
      drop_all_groups(config);
      return 1;
    }
  }
  doc.reset();  // large where groups name their nodes one by one
  const SharedNodes nodes = implicit_group_nodes(config);
  for (const std::string& path : seen) {
    create_implicit_group(path, nodes, config);
  }
  return 0;
}

int NodeGroupParser::read_groups(const std::vector<xmlNode*>& elements, Config& config) {
  const bool turned_off = has_historic_subcluster(config);
  for (const xmlNode* element : elements) {
    auto group = std::make_shared<ClusterDefinition>();
    if (!xml::get_attr(element, "name", group->name)) {
      continue;
    }
    if (!turned_off && read_group_nodes(element, *group, config) == 1) {
      return 1;
    }
    if (group->nodes.empty()) {
      continue;
    }
    if (!config.node_groups.emplace(group->name, group).second) {
      log::ErrorLog(log::level::ERROR).stream()
          << "Failed to add " << group->name << "to list of groups\n";
    }
  }
  return 0;
}

// A node file that uses subclusters turns the whole group document off, unread files included.
int NodeGroupParser::parse_node_group(xmlNode* group_element, NodeSet& nodes, Config& config) {
  nodes.clear();
  if (has_historic_subcluster(config)) {
    return 0;
  }
  ClusterDefinition group;
  const int status = read_group_nodes(group_element, group, config);
  nodes = std::move(group.nodes);
  return status;
}

int NodeGroupParser::read_group_nodes(const xmlNode* group_element, ClusterDefinition& group,
                                      const Config& config) {
  const xmlNode* files = xml::get_child_node(group_element, "nodefiles");
  for (const xmlNode* element : xml::get_child_nodes(files, "path")) {
    const std::string path = xml::content_of(element);
    detail::note_named(
        {DocumentKind::NODE_FILE, path, written_path::plain_file(path), xml::place_of(element)});
    node::Nodelist list;
    if (!node::read_nodefile(path, list)) {
      log::OutputLog().stream() << "Please check the hostfile included by the <nodefiles> tag in: "
                                << config.node_group_file << "\n";
      return 1;
    }
    add_nodes(std::move(list), group);
  }
  const xmlNode* names = xml::get_child_node(group_element, "nodes");
  add_nodes(node::Nodelist(xml::get_str_list(names, "node")), group);
  return 0;
}

int NodeGroupParser::parse_fwd_node(xmlNode* fwd_element, Config& config,
                                    std::set<std::string>& seen) {
  std::string name;
  if (!xml::get_attr(fwd_element, "name", name)) {
    log::ErrorLog(log::level::ERROR).stream() << "The framework definition: "
                                              << "was not found for this run. No filtering done.\n";
    return 0;
  }
  const std::string path = written_path::group_framework(name, config.root);
  if (seen.count(path) != 0 || seen.count(name) != 0) {
    log::OutputLog().stream() << "ERROR: The framework definition " << name
                              << " has been declared multiple times in the node group file.\n"
                              << "Please correct the node group file framework definition "
                              << "groups and try again. For assistance please refer to either"
                              << " the User's Guide or the sample node group file provided.\n\n";
    return 1;
  }
  seen.insert(path);
  const std::shared_ptr<FwdNode> found = find_in_roots(*config.fwds, path);
  if (found == nullptr) {
    return 0;  // not part of this run
  }
  const std::shared_ptr<FwdNode> clone = found->clone();
  const xmlNode* groups = xml::get_child_node(fwd_element, "nodegroups");
  bool used = false;
  for (const std::string& group : xml::get_str_list(groups, "group")) {
    const auto entry = config.node_groups.find(group);
    if (entry != config.node_groups.end() && entry->second != nullptr) {
      entry->second->fwd_nodes.insert(clone);
      used = true;
    }
  }
  if (!used) {
    release_tree(clone);
  }
  return 0;
}

}  // namespace qorn::preproc
