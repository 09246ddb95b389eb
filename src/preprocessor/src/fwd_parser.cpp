#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include <qorn/detail/notes.h>
#include <qorn/document_kind.h>
#include <qorn/log/error_log.h>
#include <qorn/preproc/config_parser.h>
#include <qorn/preproc/fwd_parser.h>
#include <qorn/str.h>
#include <qorn/written_path.h>
#include <qorn/xml.h>

#include "postprocessor_documents.h"

namespace qorn::preproc {
namespace {

/// One node of the walk whose includes are being followed.
struct Frame {
  std::shared_ptr<FwdNode> node;
  std::size_t first_group;  // of those that its document brought
  std::size_t group;        // of the next member
  std::size_t member = 0;   // within that group

  /// The next member to follow, or null behind the last.
  std::shared_ptr<FwdNode> next() {
    for (; group < node->groups.size(); ++group, member = 0) {
      const auto& members = node->groups[group].members;
      if (member < members.size()) {
        return members[member++];
      }
    }
    return nullptr;
  }
};

bool is_member(const std::vector<std::shared_ptr<FwdNode>>& list, const FwdNode* node) {
  return std::any_of(list.begin(), list.end(),
                     [&](const auto& each) { return each.get() == node; });
}

/// The way from the walk's root.
struct Walk {
  Walk(FwdRegistry& fwd_registry, std::unordered_map<const FwdNode*, bool>& entered_nodes)
      : registry(fwd_registry), entered(entered_nodes) {}

  void enter(const std::shared_ptr<FwdNode>& node, FwdNode::Groups groups) {
    const std::size_t first = node->groups.size();
    std::move(groups.begin(), groups.end(), std::back_inserter(node->groups));
    entered[node.get()] = true;
    way.push_back({node, first, first});
  }

  // Nothing raises blocking_count, so that every node ends up here. One that is entered below the
  // root was never visited: only the root may stand in the list already.
  void leave() {
    const Frame frame = std::move(way.back());
    way.pop_back();
    const bool has_groups = frame.first_group < frame.node->groups.size();
    if ((!has_groups || frame.node->blocking_count <= 0) &&
        !(way.empty() && is_member(registry.ready_nodes, frame.node.get()))) {
      registry.ready_nodes.push_back(frame.node);
      frame.node->fwd->state = 2;
    }
    entered[frame.node.get()] = false;
  }

  FwdRegistry& registry;
  std::vector<Frame> way;
  std::unordered_map<const FwdNode*, bool>& entered;
};

void link(const std::shared_ptr<FwdNode>& node, const std::shared_ptr<Fwd>& fwd) {
  node->fwd = fwd;
  fwd->node = node;
}

/// Nobody asks for the blanks between includes, of which a dense graph has many.
bool is_includes(const xmlNode& element) {
  return xml::name_of(&element) == "includes" && element.parent != nullptr &&
         xml::name_of(element.parent) == "framework_definition";
}

int report_cycle(const FwdNode& member, const FwdNode& node) {
  log::ErrorLog(log::level::ERROR).stream() << "\n Circular depedency detected for "
                                            << member.fwd->path << " in " << node.fwd->path << "\n";
  return 1;
}

}  // namespace

/// What one load keeps.
struct FWDParser::Load {
  /// Includes as they are written, with their nodes: for one graph a text always leads to the same
  /// one, and dense graphs write the same texts over and over.
  std::unordered_map<std::string, std::shared_ptr<FwdNode>> includes;
  /// The nodes that the load has read; true while one stands on the way from its root.
  std::unordered_map<const FwdNode*, bool> entered;
  /// A node was met that somebody else has visited: it may lead anywhere, to the way here as well.
  bool met_others = false;
};

int FWDParser::load_fwds(Config& config, bool update) {
  if (update) {
    update_defaults(config);
  }
  std::vector<std::string> paths;
  for (const std::string& name : config.fwds->names) {
    process_fwd(name, paths.emplace_back(), config, false);
  }
  Load load;
  for (const std::string& path : paths) {
    if (load_root(path, config, load) == 1) {
      log::ErrorLog(log::level::DEBUG).stream() << "Runtime error: Could not process " << path;
      return 1;
    }
  }
  const std::string reports_xsd = schema_path(DocumentKind::REPORT, config.root);
  std::vector<xml::Fault> faults;
  if (read_postproc_tables(config, schema_path(DocumentKind::TABLE, config.root), faults) != 1) {
    pass_over_reports(config, reports_xsd, faults);
    xml::report(faults);
  } else if (read_postproc_reports(config, reports_xsd, faults) == 1) {
    return 1;
  }
  return ConfigParser().parse_kb_config(config,
                                        schema_path(DocumentKind::KNOWLEDGE_BASE, config.root)) == 1
             ? 1
             : 0;
}

int FWDParser::process_fwd(const std::string& name, std::string& path, Config& config,
                           bool /*flag*/) {
  path = written_path::asked_framework(name, config.root);
  return 0;
}

int FWDParser::recurse_fwd(const std::string& path, Config& config) {
  Load load;
  return load_root(path, config, load);
}

int FWDParser::load_root(const std::string& path, Config& config, Load& load) {
  if (path.empty()) {
    return 1;
  }
  auto fwd = std::make_shared<Fwd>();
  fwd->name = path;
  compute_name_and_path(*fwd);
  const auto [entry, added] = config.fwds->by_path.emplace(fwd->path, fwd);
  if (!added) {
    config.fwds->roots.push_back(entry->second->node);
    return 0;
  }
  auto node = std::make_shared<FwdNode>();
  link(node, fwd);
  node->visited = true;
  return walk_from(node, config, nullptr, load);
}

int FWDParser::recurse_fwd_impl(std::shared_ptr<FwdNode>& node, Config& config,
                                const std::shared_ptr<FwdNode>& parent, bool /*flag*/) {
  Load load;
  return walk_from(node, config, parent, load);
}

int FWDParser::walk_from(const std::shared_ptr<FwdNode>& node, Config& config,
                         const std::shared_ptr<FwdNode>& parent, Load& load) {
  Walk walk(*config.fwds, load.entered);
  std::shared_ptr<FwdNode> next = node;
  std::shared_ptr<FwdNode> above = parent;
  while (true) {
    FwdNode::Groups groups;
    if (read_document(next, config, groups, load) == 1) {
      return 1;
    }
    if (above != nullptr) {
      next->parents.push_back(above);
    } else if (!is_member(config.fwds->roots, next.get())) {
      config.fwds->roots.push_back(next);
    }
    walk.enter(next, std::move(groups));
    for (next = nullptr; next == nullptr && !walk.way.empty();) {
      above = walk.way.back().node;
      next = walk.way.back().next();
      if (next == nullptr) {
        walk.leave();
      } else if (next->visited) {
        if (closes_cycle(next, above, config, load)) {
          return report_cycle(*next, *above);
        }
        next->parents.push_back(above);
        next = nullptr;
      }
    }
    if (next == nullptr) {
      return 0;
    }
    next->visited = true;
  }
}

// Among nodes that the load itself has read, one that is reached again closes a cycle exactly when
// it still stands on the way here.
bool FWDParser::closes_cycle(const std::shared_ptr<FwdNode>& member,
                             const std::shared_ptr<FwdNode>& current, Config& config, Load& load) {
  const auto found = load.entered.find(member.get());
  load.met_others = load.met_others || found == load.entered.end();
  return load.met_others ? check_circ_dependency(config, member, current) : found->second;
}

int FWDParser::read_document(const std::shared_ptr<FwdNode>& node, Config& config,
                             FwdNode::Groups& groups, Load& load) {
  if (node == nullptr) {
    return 1;
  }
  Fwd& fwd = *node->fwd;
  log::debug("Include: ", fwd.path);
  const xml::DocumentPtr doc = xml::open_valid_document(fwd.path, fwd_xsd, {is_includes});
  log::debug("Opening Fwd: ", fwd.path);
  if (doc == nullptr) {
    log::ErrorLog(log::level::ERROR).stream()
        << "Failed to open and validate framework definition " << fwd.path;
    log::ErrorLog(log::level::ERROR).stream()
        << "Please use the -X list option to print list of valid frameworks.";
    return 1;
  }
  xmlNode* definition = xml::get_child_node(xml::root_of(doc), "framework_definition");
  fwd.kb_path = xml::get_str(definition, "kb_path", kb_path);
  fwd.provider_aux_path =
      str::wordexp(xml::get_str(definition, "provider_auxiliary_path", provider_aux_path));
  log::debug("provider aux path: ", fwd.provider_aux_path);
  fwd.provider_path = str::wordexp(xml::get_str(definition, "provider_path", provider_path));
  log::debug("provider path: ", fwd.provider_path);
  if (read_tags(definition, doc.get(), fwd, config) == 1) {
    return 1;
  }
  set_fwd_paths(config, fwd);
  return read_includes(config, xml::get_child_node(definition, "includes"), groups,
                       node->blocking_count, load);
}

int FWDParser::read_tags(xmlNode* definition, xmlDoc* doc, Fwd& fwd, Config& config) {
  const auto failed = [](const char* tag) {
    log::ErrorLog(log::level::ERROR).stream()
        << "Failed to parse " << tag << " tag in framework definition";
    return 1;
  };
  if (parse_tag_provider(definition, fwd, config) == 1) {
    return failed("provider");
  }
  parse_tag_kb_mods(definition, fwd, config);  // what can't be scanned doesn't stop a run
  if (parse_tag_analyze_ext(definition, fwd, doc, config) == 1) {
    return failed("analyzer extension");
  }
  if (parse_tag_postproc_ext(definition, fwd, doc, config) == 1) {
    return failed("postprocessor extension");
  }
  // Catalogs and schemas fail with the same words.
  if (parse_tag_mesg_catalogs(definition, fwd, doc, config) == 1 ||
      parse_tag_mesg_schemas(definition, fwd, doc, config) == 1) {
    return failed("message catalog");
  }
  if (parse_tag_description(definition, fwd) == 1) {
    return failed("description");
  }
  if (parse_tag_custom_result(definition, fwd) == 1) {
    return failed("custom result");
  }
  return 0;
}

int FWDParser::parse_fwd_groups(Config& config, const xmlNode* includes,
                                std::vector<internal::GroupAttributes<FwdNode>>& groups,
                                int& blocking_count) {
  Load load;
  return read_includes(config, includes, groups, blocking_count, load);
}

int FWDParser::read_includes(Config& config, const xmlNode* includes, FwdNode::Groups& groups,
                             int& blocking_count, Load& load) {
  if (includes == nullptr) {
    return 0;
  }
  blocking_count = 0;
  internal::GroupAttributes<FwdNode> group;
  group.attributes = {{"dependency_type", "non-blocking"}, {"passing_constraint", "0"}};
  std::string name;  // kept, so that its memory serves all of them
  group.members.reserve(static_cast<std::size_t>(xml::get_num_element_children(includes)));
  for (const xmlNode* include : xml::Elements(includes)) {
    if (xml::name_of(include) != "include") {
      continue;
    }
    if (!xml::get_txt(include, name)) {
      throw std::out_of_range(to_string(xml::place_of(includes)) +
                              ": an <include> of this element is empty");
    }
    std::shared_ptr<FwdNode>& node = load.includes[name];
    if (node == nullptr) {
      node = node_of(name, config);
      detail::note_named({DocumentKind::FRAMEWORK, name, node->fwd->path, xml::place_of(include)});
    }
    group.members.push_back(node);
  }
  if (group.members.empty()) {
    log::debug("Empty includes/group tag detected.");
    return 0;
  }
  groups.push_back(std::move(group));
  return 0;
}

std::shared_ptr<FwdNode> FWDParser::node_of(const std::string& include, Config& config) {
  Fwd scratch;
  scratch.name = include;
  compute_name_and_path(scratch);
  const auto known = config.fwds->by_path.find(scratch.path);
  if (known != config.fwds->by_path.end()) {
    return known->second->node;
  }
  auto fwd = std::make_shared<Fwd>();
  fwd->name = scratch.name;
  fwd->path = scratch.path;
  config.fwds->by_path.emplace(fwd->path, fwd);
  link(std::make_shared<FwdNode>(), fwd);
  return fwd->node;
}

bool FWDParser::check_circ_dependency(Config& /*config*/,
                                      const std::shared_ptr<FwdNode>& dependency,
                                      const std::shared_ptr<FwdNode>& current) {
  if (dependency == nullptr) {
    return false;
  }
  const std::string& path = dependency->fwd->path;
  if (current != nullptr && current->fwd->path == path) {
    return true;
  }
  std::unordered_set<const FwdNode*> known;
  std::vector<const FwdNode*> unfinished{dependency.get()};
  while (!unfinished.empty()) {
    const FwdNode* node = unfinished.back();
    unfinished.pop_back();
    for (const auto& group : node->groups) {
      for (const auto& member : group.members) {
        if (member->fwd->path == path) {
          return true;
        }
        if (known.insert(member.get()).second) {
          unfinished.push_back(member.get());
        }
      }
    }
  }
  return false;
}

}  // namespace qorn::preproc
