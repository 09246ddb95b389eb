#include "why.h"

#include <algorithm>
#include <iostream>
#include <map>
#include <optional>
#include <set>

#include <qorn/node.h>
#include <qorn/str.h>
#include <qorn/xml.h>

#include "framework_graph.h"
#include "node_group.h"
#include "run_loader.h"
#include "suggestion.h"
#include "survey.h"

namespace qorn::inspect {
namespace {

/// More ways than this to one definition are not counted.
constexpr std::size_t MOST_WAYS = 1'000'000;

/// A longer chain is shown with its start and its end.
constexpr std::size_t MOST_LINES = 20;

std::string joined(const std::set<std::string>& words) {
  std::string text;
  for (const std::string& word : words) {
    text.append(text.empty() ? "" : ", ").append(word);
  }
  return text;
}

/// How the definitions of a run come to be in it.
class Chains {
 public:
  explicit Chains(const Config& config) : config_(config), graph_(config.root) {
    for (const auto& root : config.fwds->roots) {
      graph_.load(root->fwd->path);
      asked_.insert(root->fwd->path);
    }
    for (const Definition* definition : graph_.in_order()) {
      order_.emplace(definition->path, order_.size());
    }
    for (const Definition* definition : graph_.in_order()) {
      for (const Reference* include : definition->of_kind(Kind::FRAMEWORK)) {
        includes_[include->path].push_back(include);
      }
    }
    count_ways();
    name_origins();
  }

  const std::vector<const Definition*>& in_order() const { return graph_.in_order(); }

  /// The first way to a definition in load order, its start first.
  std::vector<std::string> lines_of(const std::string& path) const {
    std::vector<std::string> lines;
    std::string at = path;
    for (const Reference* include = first_include(at); include != nullptr;
         include = first_include(at)) {
      lines.push_back("included by " + to_string(include->place));
      at = include->place.file;
    }
    lines.push_back(origins_.at(at));
    std::reverse(lines.begin(), lines.end());
    if (lines.size() > MOST_LINES) {
      const std::size_t left_out = lines.size() - MOST_LINES;
      lines.erase(lines.begin() + 1, lines.begin() + 1 + static_cast<long>(left_out));
      lines.insert(lines.begin() + 1, "and " + std::to_string(left_out) + " includes between");
    }
    if (const std::size_t more = ways_.at(path) - 1; more > 0) {
      lines.back() += " (and " + std::string(more >= MOST_WAYS - 1 ? "at least " : "") +
                      std::to_string(more) + (more == 1 ? " more way)" : " more ways)");
    }
    return lines;
  }

 private:
  /// The include by which a run reaches the definition first; null when it is asked for first.
  const Reference* first_include(const std::string& path) const {
    const auto includes = includes_.find(path);
    if (includes != includes_.end()) {
      for (const Reference* include : includes->second) {
        if (order_.at(include->place.file) < order_.at(path)) {
          return include;
        }
      }
    }
    return nullptr;
  }

  // The last of the ready nodes include and are not included: ways flow down from there.
  void count_ways() {
    for (const auto& root : config_.fwds->roots) {
      add_ways(ways_[root->fwd->path], 1);
    }
    const auto& nodes = config_.fwds->ready_nodes;
    for (auto node = nodes.rbegin(); node != nodes.rend(); ++node) {
      const std::size_t ways = ways_[(*node)->fwd->path];
      for (const auto& group : (*node)->groups) {
        for (const auto& member : group) {
          add_ways(ways_[member->fwd->path], ways);
        }
      }
    }
  }

  static void add_ways(std::size_t& ways, std::size_t more) {
    ways = std::min(ways + more, MOST_WAYS);
  }

  void name_origins() {
    std::vector<xml::Fault> faults;
    const xml::DocumentPtr doc =
        xml::read_document(str::unescape_blanks(config_.config_file), faults);
    std::map<std::string, std::string> named;
    std::vector<std::string> names;
    for (const Reference& reference : graph_.reader().read(Kind::MAIN, doc)) {
      if (reference.kind == Kind::FRAMEWORK) {
        named.emplace(reference.path, "named at " + to_string(reference.place));
        names.push_back(reference.name);
      }
    }
    const bool by_document = names == config_.fwds->names;
    const bool given = (config_.option_flags & option_flag::FWD_GIVEN) != 0;
    for (const std::string& path : asked_) {
      origins_[path] = by_document ? named[path]
                       : given     ? "asked for on the command line"
                                   : "asked for by default";
      origins_[path] = graph_.find(path)->name + ", " + origins_[path];
    }
  }

  const Config& config_;
  FrameworkGraph graph_;
  std::set<std::string> asked_;
  std::map<std::string, std::size_t> order_;
  std::map<std::string, std::vector<const Reference*>> includes_;  // by the included path
  std::map<std::string, std::size_t> ways_;
  std::map<std::string, std::string> origins_;
};

/// The groups that a node is in, and what they run.
class Groups {
 public:
  Groups(const Config& config, const Node& node) : config_(config) {
    for (const auto& [name, group] : config.node_groups) {
      if (group->is_node_present(node)) {
        mine_.insert(name);
        for (const auto& tree : group->fwd_nodes) {
          add_tree(*tree, name);
        }
      }
    }
    if (!config.node_groups.empty()) {
      ties_ = read_node_groups(config.node_group_file, config.root).ties;
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
    for (const NodeGroups::Tie& tie : ties_) {
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
    for (const NodeGroups::Tie& tie : ties_) {
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
  std::vector<NodeGroups::Tie> ties_;
};

class Explanation {
 public:
  Explanation(LoadedRun& run, const Node& node, const Terminal& terminal)
      : config_(run.config),
        node_(node),
        terminal_(terminal),
        chains_(run.config),
        groups_(run.config, node) {}

  /// Prints one definition; whether it runs on the node.
  bool print(const Definition& definition) {
    const auto group = groups_.find(definition.path);
    if (groups_.are_in_force() && !group) {
      print_verdict(definition.name, "", "group: " + groups_.why_not(definition.path));
      return false;
    }
    const Fwd& fwd = *config_.fwds->by_path.at(definition.path);
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
    print_verdict(definition.name, providers.empty() ? " (rules alone)" : "",
                  runs ? "" : "none of its providers does");
    for (const std::string& line : chains_.lines_of(definition.path)) {
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

  const std::vector<const Definition*>& in_order() const { return chains_.in_order(); }

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
  Chains chains_;
  Groups groups_;
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
  for (const Definition* definition : explanation.in_order()) {
    names.push_back(definition->name);
  }
  const std::string path = ReferenceReader(config.root).framework_path(name);
  std::vector<xml::Fault> faults;
  const bool exists = xml::read_document(path, faults) != nullptr;
  std::cout << "  " << str::printable(name) << ": does not run: framework reached: "
            << str::printable(exists ? "nothing that is asked for includes " + path
                                     : path + ": " + faults.front().text)
            << did_you_mean(name, names) << '\n';
}

}  // namespace

int explain(const std::string& node_name, const std::optional<std::string>& framework,
            const std::vector<std::string>& arguments, const Terminal& terminal) {
  LoadedRun run;
  run.read_arguments(arguments);
  run.read_nodes();
  run.read_main_document();
  run.read_frameworks();
  const Node* node = find_node(node_name, run.config);
  if (node == nullptr) {
    print_unknown_node(node_name, run.config);
    return 1;
  }
  Explanation explanation(run, *node, terminal);
  std::cout << node->hostname << " ("
            << joined(std::set<std::string>(node->roles.begin(), node->roles.end())) << ")\n";
  bool found = !framework;
  bool runs = false;
  for (const Definition* definition : explanation.in_order()) {
    if (!framework || definition->name == framework || definition->path == framework) {
      found = true;
      runs = explanation.print(*definition) || runs;
    }
  }
  if (!found) {
    print_unreached(*framework, explanation, run.config);
  }
  return runs ? 0 : 1;
}

}  // namespace qorn::inspect
