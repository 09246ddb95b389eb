#include "implicit_groups.h"

#include <algorithm>
#include <utility>

#include <qorn/detail/tree_budget.h>
#include <qorn/detail/unheld_trees.h>
#include <qorn/log/error_log.h>
#include <qorn/preproc/node_group_parser.h>

namespace qorn::preproc {
namespace {

constexpr const char* ALL = "All";

using SharedNodes = std::vector<std::shared_ptr<Node>>;

// An engine's record may hold null in the place of a group.
bool is_implicit(const std::shared_ptr<ClusterDefinition>& group) {
  return group != nullptr && group->implicit;
}

bool is_explicit(const std::shared_ptr<ClusterDefinition>& group) {
  return group != nullptr && !group->implicit;
}

/// The explicit groups that run the definition with that path.
std::set<std::string> groups_that_run(const std::string& fwd_path, const Config& config) {
  std::set<std::string> names;
  for (const auto& [name, group] : config.node_groups) {
    if (is_explicit(group) && group->get_root_fwd_path().count(fwd_path) != 0) {
      names.insert(name);
    }
  }
  return names;
}

std::string name_of_rest(const std::set<std::string>& excluded) {
  std::string name = "All-except-nodegroup";
  if (excluded.size() > 1) {
    name += "s";
  }
  for (const std::string& each : excluded) {
    name += "-" + each;
  }
  return name;
}

/// The implicit group of that name that runs something; null when there is none.
ClusterDefinition* present_group(const std::string& name, const Config& config) {
  for (const auto& [key, group] : config.node_groups) {
    if (is_implicit(group) && !group->fwd_nodes.empty() && group->name == name) {
      return group.get();
    }
  }
  return nullptr;
}

void add_tree(const std::shared_ptr<FwdNode>& clone, ClusterDefinition& group) {
  if (clone != nullptr) {
    group.fwd_nodes.insert(clone);
  }
}

/// Adds those of `nodes`, which are in name order, that no group in `excluded` holds.
void insert_outside(const SharedNodes& nodes, const std::set<std::string>& excluded,
                    const Config& config, ClusterDefinition& group) {
  ClusterDefinition::NodeSet inside;
  for (const std::string& name : excluded) {
    const ClusterDefinition& each = *config.node_groups.at(name);
    inside.insert(each.nodes.begin(), each.nodes.end());
  }
  auto next = inside.begin();
  for (const auto& node : nodes) {
    int order = -1;  // of the node and the next one inside
    while (next != inside.end() && (order = node->hostname.compare((*next)->hostname)) > 0) {
      ++next;
    }
    if (next == inside.end() || order != 0) {
      group.insert_node_instance(node);
    }
  }
}

void insert_all(const SharedNodes& nodes, ClusterDefinition& group) {
  for (const auto& node : nodes) {
    group.insert_node_instance(node);
  }
}

/// Takes the first member with that path out of a group's members; null when it has none.
std::shared_ptr<FwdNode> take_member(internal::GroupAttributes<FwdNode>& group,
                                     const std::string& path) {
  const auto found = std::find_if(group.members.begin(), group.members.end(),
                                  [&](const auto& member) { return member->fwd->path == path; });
  if (found == group.members.end()) {
    return nullptr;
  }
  std::shared_ptr<FwdNode> member = *found;
  group.members.erase(found);
  return member;
}

/// See NodeGroupParser::cut_fwd; what was taken out is added to `removed`.
bool cut(const std::shared_ptr<FwdNode>& copy, const std::string& path,
         std::vector<std::shared_ptr<FwdNode>>& removed) {
  const std::shared_ptr<FwdNode> found = copy->find(path);
  if (found == nullptr) {
    return false;
  }
  bool taken = false;
  for (const auto& parent : found->parents) {
    // Once a member was taken, only the first group of a further parent is looked at.
    const std::size_t groups =
        taken ? std::min<std::size_t>(parent->groups.size(), 1) : parent->groups.size();
    for (std::size_t i = 0; i < groups; ++i) {
      std::shared_ptr<FwdNode> member = take_member(parent->groups[i], path);
      if (member != nullptr) {
        removed.push_back(std::move(member));
        taken = true;
        break;
      }
    }
  }
  return true;
}

/// The paths of a group's trees, sorted; of two trees of one path both.
std::vector<std::string> tree_paths(const ClusterDefinition& group) {
  std::vector<std::string> paths;
  for (const auto& tree : group.fwd_nodes) {
    paths.push_back(tree->fwd->path);
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

/// Cuts what the explicit groups name out of a root's copy and records the first group's cuts.
/// Returns whether a group names the root itself.
bool cut_claimed(const std::shared_ptr<FwdNode>& copy, const std::string& root_path,
                 const Config& config, ClusterDefinition& all) {
  bool claimed = false;
  for (const auto& [name, group] : config.node_groups) {
    if (!is_explicit(group)) {
      continue;
    }
    std::set<std::string> removed_paths;
    for (const std::string& path : tree_paths(*group)) {
      std::vector<std::shared_ptr<FwdNode>> removed;
      if (path == copy->fwd->path) {
        claimed = true;
      } else if (cut(copy, path, removed)) {
        removed_paths.insert(path);
      }
      for (const auto& node : removed) {
        node->parents.clear();  // nothing else holds a node of the copy
        release_tree(node);
      }
    }
    all.removed_fwds.emplace(root_path, removed_paths);
  }
  return claimed;
}

void fill_from_database(ClusterDefinition& group, const Config& config) {
  if (group.name == ALL) {
    insert_all(config.cluster_definition->get_default_node_list(), group);
    return;
  }
  ClusterDefinition excluded;
  for (const std::string& name : group.excluded_groups) {
    const auto found = config.node_groups.find(name);
    if (found != config.node_groups.end() && found->second != nullptr) {
      insert_all(found->second->get_default_node_list(), excluded);
    }
  }
  insert_all(config.cluster_definition->get_nodes_difference(excluded), group);
}

/// Drops the groups that a run can't use.
void drop_groups_without_data(Config& config) {
  std::set<std::shared_ptr<const FwdNode>> dropped;
  std::erase_if(config.node_groups, [&](const auto& entry) {
    const auto& group = entry.second;
    const bool usable = group != nullptr && group->is_valid_data();
    if (!usable && group != nullptr) {
      dropped.insert(group->fwd_nodes.begin(), group->fwd_nodes.end());
    }
    return !usable;
  });
  detail::release_unheld(dropped);
}

}  // namespace

SharedNodes share_nodes(const std::vector<Node>& nodes) {
  std::vector<const Node*> sorted;
  sorted.reserve(nodes.size());
  for (const Node& node : nodes) {
    sorted.push_back(&node);
  }
  const auto by_name = [](const Node* a, const Node* b) { return a->hostname < b->hostname; };
  if (!std::is_sorted(sorted.begin(), sorted.end(), by_name)) {
    std::stable_sort(sorted.begin(), sorted.end(), by_name);
  }
  SharedNodes shared;
  shared.reserve(sorted.size());
  for (const Node* node : sorted) {
    if (shared.empty() || shared.back()->hostname != node->hostname) {
      shared.push_back(std::make_shared<Node>(*node));
    }
  }
  return shared;
}

SharedNodes implicit_group_nodes(const Config& config) {
  return config.node_file.empty() ? SharedNodes() : share_nodes(config.nodes);
}

std::shared_ptr<FwdNode> find_in_roots(const FwdRegistry& registry, const std::string& path) {
  for (const auto& root : registry.roots) {
    std::shared_ptr<FwdNode> found = root->find(path);
    if (found != nullptr) {
      return found;
    }
  }
  return nullptr;
}

int NodeGroupParser::create_implicit_groups(std::string fwd_path, Config& config) {
  const detail::TreeCall call;
  create_implicit_group(fwd_path, implicit_group_nodes(config), config);
  return 0;
}

void NodeGroupParser::create_implicit_group(const std::string& fwd_path, const SharedNodes& nodes,
                                            Config& config) {
  const std::set<std::string> excluded = groups_that_run(fwd_path, config);
  if (excluded.empty()) {
    return;
  }
  const std::string name = name_of_rest(excluded);
  const std::shared_ptr<FwdNode> found = find_in_roots(*config.fwds, fwd_path);
  const std::shared_ptr<FwdNode> clone = found == nullptr ? nullptr : found->clone();
  if (ClusterDefinition* present = present_group(name, config)) {
    add_tree(clone, *present);
    return;
  }
  auto group = std::make_shared<ClusterDefinition>();
  group->implicit = true;
  group->name = name;
  insert_outside(nodes, excluded, config, *group);
  group->excluded_groups = excluded;
  add_tree(clone, *group);
  if (!config.node_groups.emplace(name, group).second) {
    log::ErrorLog(log::level::ERROR).stream() << "Failed to add " << name << "to list of groups";
    release_tree(clone);
  }
}

int NodeGroupParser::create_node_groups(Config& config) {
  const detail::TreeCall call;
  if (!is_node_group_file_available(config)) {
    return 0;
  }
  if (create_all_group(config) != 0) {
    return 1;
  }
  update_nodes_from_db(config);
  return 0;
}

int NodeGroupParser::create_all_group(Config& config) {
  const detail::TreeCall call;
  if (std::any_of(config.nodes.begin(), config.nodes.end(), historic_subcluster_present)) {
    return 0;
  }
  auto all = std::make_shared<ClusterDefinition>();
  all->implicit = true;
  all->name = ALL;
  insert_all(share_nodes(config.nodes), *all);
  for (const auto& root : config.fwds->roots) {
    const std::shared_ptr<FwdNode> copy = root->clone_impl(nullptr);
    if (cut_claimed(copy, root->fwd->path, config, *all)) {
      release_tree(copy);
    } else {
      all->fwd_nodes.insert(copy);
    }
  }
  std::set<std::shared_ptr<const FwdNode>> replaced;
  std::shared_ptr<ClusterDefinition>& entry = config.node_groups[ALL];
  if (entry != nullptr) {
    replaced = entry->fwd_nodes;
  }
  entry = std::move(all);
  detail::release_unheld(replaced);
  return 0;
}

int NodeGroupParser::update_nodes_from_db(Config& config) {
  if (config.cluster_definition == nullptr) {
    return 1;
  }
  for (const auto& [name, group] : config.node_groups) {
    if (is_implicit(group) && group->getNodeListSize() < 1) {
      fill_from_database(*group, config);
    }
  }
  drop_groups_without_data(config);
  return 0;
}

bool NodeGroupParser::cut_fwd(const std::shared_ptr<FwdNode>& copy, const std::string& path) {
  std::vector<std::shared_ptr<FwdNode>> removed;
  return cut(copy, path, removed);
}

}  // namespace qorn::preproc
