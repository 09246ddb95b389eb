#include "why.h"

#include <algorithm>
#include <iostream>
#include <map>
#include <optional>
#include <set>

#include <qorn/node.h>
#include <qorn/str.h>
#include <qorn/written_path.h>
#include <qorn/xml.h>

#include "capture.h"
#include "include_chains.h"
#include "joined.h"
#include "loaded_run.h"
#include "node_group_document.h"
#include "reference.h"
#include "suggestion.h"
#include "terminal.h"

namespace qorn::inspect {
namespace {

/// The groups that a node is in, and what they run.
class GroupsOfNode {
 public:
  GroupsOfNode(const Config& config, const Node& node) : config_(config) {
    for (const auto& [name, group] : config.node_groups) {
      if (group->is_node_present(node)) {
        mine_.insert(name);
        for (const auto& tree : group->fwd_nodes) {
          add_tree(*tree, name);
        }
      }
    }
    if (!config.node_groups.empty()) {
      ties_ = read_node_group_document(config.node_group_file, config.root).ties;
    }
  }

  /// Groups decide what runs where.
  bool are_in_force() const { return !config_.node_groups.empty(); }

  /// The group by which the definition runs on the node, with the definition at the root of its
  /// tree; an explicit one rather than an implicit one. Empty when there is none.
  std::optional<std::pair<std::string, std::string>> find(const std::string& path) const {
    const auto found = runs_.find(path);
    if (found == runs_.end()) {
      return std::nullopt;
    }
    for (const auto& entry : found->second) {
      if (!config_.node_groups.at(entry.first)->implicit) {
        return entry;
      }
    }
    return *found->second.begin();
  }

  std::string describe(const std::string& name, const std::string& root) const {
    const ClusterDefinition& group = *config_.node_groups.at(name);
    if (group.implicit && group.excluded_groups.empty()) {
      return "group " + name + ": every node, for what no group is tied to";
    }
    if (group.implicit) {
      return "group " + name + ": the nodes outside " + joined(group.excluded_groups) +
             place_of_tie(root, *group.excluded_groups.begin());
    }
    return "group " + name + place_of_tie(root, name);
  }

  std::string why_not(const std::string& path) const {
    std::string text = "no group of the node runs it";
    text += mine_.empty() ? ": the node is in none" : ": the node is in " + joined(mine_);
    std::string tied;
    for (const NodeGroupDocument::Tie& tie : ties_) {
      if (tie.path == path && !tie.group.empty()) {
        tied.append(tied.empty() ? "" : ", ").append(tie.group + " (" + to_string(tie.place) + ")");
      }
    }
    return text + (tied.empty() ? "" : "; it is tied to " + tied);
  }

 private:
  void add_tree(const FwdNode& tree, const std::string& group) {
    std::vector<const FwdNode*> unvisited{&tree};
    while (!unvisited.empty()) {
      const FwdNode* node = unvisited.back();
      unvisited.pop_back();
      runs_[node->fwd->path].emplace(group, tree.fwd->path);
      for (const auto& members : node->groups) {
        for (const auto& member : members) {
          unvisited.push_back(member.get());
        }
      }
    }
  }

  std::string place_of_tie(const std::string& root, const std::string& group) const {
    for (const NodeGroupDocument::Tie& tie : ties_) {
      if (tie.path == root && tie.group == group) {
        return ", tied at " + to_string(tie.place);
      }
    }
    return "";
  }

  const Config& config_;
  std::set<std::string> mine_;
  /// For a path: group and root of the tree in it.
  std::map<std::string, std::map<std::string, std::string>> runs_;
  std::vector<NodeGroupDocument::Tie> ties_;
};

class Explanation {
 public:
  Explanation(LoadedRun& run, const Node& node, const Terminal& terminal)
      : config_(run.config),
        node_(node),
        terminal_(terminal),
        chains_(run.config, run.notes()),
        groups_(run.config, node) {}

  /// Prints one definition; whether it runs on the node.
  bool print(const std::string& path) {
    const std::string name_of_definition = written_path::framework_name(path);
    const auto group = groups_.find(path);
    if (groups_.are_in_force() && !group) {
      print_verdict(name_of_definition, "", "group: " + groups_.why_not(path));
      return false;
    }
    const Fwd& fwd = *config_.fwds->by_path.at(path);
    std::vector<std::pair<std::string, std::string>> providers;  // name and what fails
    for (const auto& members : fwd.provider_groups) {
      for (const auto& provider : members) {
        providers.emplace_back(provider->name,
                               fault_of(*provider, group ? group->first : std::string()));
      }
    }
    const bool runs =
        providers.empty() || std::any_of(providers.begin(), providers.end(),
                                         [](const auto& each) { return each.second.empty(); });
    print_verdict(name_of_definition, providers.empty() ? " (rules alone)" : "",
                  runs ? "" : "none of its providers does");
    for (const std::string& line : chains_.lines_of(path)) {
      std::cout << "    " << str::printable(line) << '\n';
    }
    if (group) {
      std::cout << "    " << str::printable(groups_.describe(group->first, group->second)) << '\n';
    }
    for (const auto& [name, fault] : providers) {
      std::cout << "    provider ";
      print_words(name, "", fault);
    }
    return runs;
  }

  const std::vector<std::string>& in_order() const { return chains_.in_order(); }

 private:
  void print_verdict(const std::string& name, const std::string& remark, const std::string& fault) {
    std::cout << "  ";
    print_words(name, remark, fault);
  }

  void print_words(const std::string& name, const std::string& remark, const std::string& fault) {
    std::cout << str::printable(name) << ": "
              << (fault.empty() ? terminal_.paint(Terminal::GREEN, "runs")
                                : terminal_.paint(Terminal::RED, "does not run"))
              << remark << (fault.empty() ? "" : ": " + str::printable(fault)) << '\n';
  }

  /// The first condition that a provider fails on the node; empty when it runs.
  std::string fault_of(const provider_config& provider, const std::string& group) const {
    const auto known = config_.providers.find(provider.name);
    if (known == config_.providers.end() || known->second.get() != &provider) {
      return "provider readable: " + reason_of(provider);
    }
    const std::set<std::string> roles(node_.roles.begin(), node_.roles.end());
    if (!shares_role(provider, node_)) {
      return "role: it needs " + joined(provider.roles) + ", the node has " + joined(roles);
    }
    const std::size_t nodes = count_nodes(provider, group);
    if (nodes < provider.min_nodes) {
      return "number of nodes: it needs " + std::to_string(provider.min_nodes) + ", there are " +
             std::to_string(nodes) + " of its roles" +
             (group.empty() ? " in the run" : " in group " + group);
    }
    return {};
  }

  std::string reason_of(const provider_config& provider) const {
    provider_config scratch;
    const Capture capture;
    preproc::Preprocessor::parse_provider_config_xml(scratch, provider.config_file, config_, "");
    const std::vector<std::string> lines = capture.error_lines();
    return lines.empty() ? provider.config_file : lines.front();
  }

  static bool shares_role(const provider_config& provider, const Node& node) {
    return std::any_of(node.roles.begin(), node.roles.end(),
                       [&](const std::string& role) { return provider.roles.count(role) != 0; });
  }

  std::size_t count_nodes(const provider_config& provider, const std::string& group) const {
    std::set<std::string> names;
    for (const Node& node : config_.nodes) {
      if (shares_role(provider, node) &&
          (group.empty() || config_.node_groups.at(group)->is_node_present(node))) {
        names.insert(node.hostname);
      }
    }
    return names.size();
  }

  const Config& config_;
  const Node& node_;
  const Terminal& terminal_;
  IncludeChains chains_;
  GroupsOfNode groups_;
};

const Node* find_node(const std::string& name, const Config& config) {
  const auto found = std::find_if(config.nodes.begin(), config.nodes.end(),
                                  [&](const Node& node) { return node.hostname == name; });
  return found == config.nodes.end() ? nullptr : &*found;
}

void print_unknown_node(const std::string& name, const Config& config) {
  std::vector<std::string> names;
  for (const Node& node : config.nodes) {
    names.push_back(node.hostname);
  }
  std::cout << str::printable(name) << ": node known: the run has " << names.size()
            << " nodes, not this one" << did_you_mean(name, names) << '\n';
}

void print_unreached(const std::string& name, const Explanation& explanation,
                     const Config& config) {
  std::vector<std::string> names;
  for (const std::string& path : explanation.in_order()) {
    names.push_back(written_path::framework_name(path));
  }
  const std::string path = framework_path(name, config.root);
  std::vector<xml::Fault> faults;
  const bool exists = xml::read_document(path, faults) != nullptr;
  std::cout << "  " << str::printable(name) << ": does not run: framework reached: "
            << str::printable(exists ? "nothing that is asked for includes " + path
                                     : path + ": " + faults.front().text)
            << did_you_mean(name, names) << '\n';
}

}  // namespace

int explain(const Question& question) {
  LoadedRun run;
  run.take_command_line(question.run_arguments);
  run.read_nodes();
  run.read_documents();
  const Node* node = find_node(question.node, run.config);
  if (node == nullptr) {
    print_unknown_node(question.node, run.config);
    return 1;
  }
  const Terminal terminal(question.color);
  Explanation explanation(run, *node, terminal);
  const std::optional<std::string>& framework = question.framework;
  std::cout << node->hostname << " ("
            << joined(std::set<std::string>(node->roles.begin(), node->roles.end())) << ")\n";
  bool found = !framework;
  bool runs = false;
  for (const std::string& path : explanation.in_order()) {
    if (!framework || written_path::framework_name(path) == framework || path == framework) {
      found = true;
      runs = explanation.print(path) || runs;
    }
  }
  if (!found) {
    print_unreached(*framework, explanation, run.config);
  }
  return runs ? 0 : 1;
}

}  // namespace qorn::inspect
