#include "plan.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include <qorn/datastore/datastore_parse_utility.h>
#include <qorn/node.h>

#include "plan_frameworks.h"
#include "plan_layout.h"
#include "plan_passed_over.h"

namespace qorn::frontend {
namespace {

void add_section(std::string& plan, const std::string& heading, const std::string& content) {
  plan.append("\n").append(heading).append("\n").append(content);
}

/// A section that stands only when it has rows; its heading tells their number.
void add_rows(std::string& plan, const std::string& heading, std::size_t count,
              const std::vector<Row>& rows) {
  if (!rows.empty()) {
    add_section(plan, heading + ": " + std::to_string(count), aligned(rows));
  }
}

std::string stages(const Config& config) {
  std::vector<std::string> names;
  if ((config.operations & operation::COLLECT) != 0) {
    names.emplace_back("collect");
  }
  if ((config.operations & operation::ANALYZE) != 0) {
    names.emplace_back("analyze");
  }
  if (!config.rules_file.empty()) {
    names.emplace_back("generate rules");
  }
  return names.empty() ? "none" : joined(names, ", ");
}

void add_run(std::string& plan, const Config& config) {
  std::vector<Row> rows = {{"Command line:", config.command_line},
                           {"Stages:", stages(config)},
                           {"Installation:", config.root}};
  const std::pair<const char*, const std::string&> files[] = {
      {"Main document:", config.config_file},   {"Node file:", config.node_file},
      {"Node groups:", config.node_group_file}, {"Custom providers:", config.custom_provider_file},
      {"Rules document:", config.rules_file},   {"Log file:", config.log_file}};
  for (const auto& [title, file] : files) {
    if (!file.empty()) {
      rows.push_back({title, file});
    }
  }
  plan.append("Plan of the run\n").append(aligned(rows));
}

struct RoleNodes {
  std::size_t count = 0;
  node::HostFolder names;
};

/// Nodes come by the million, and most have the roles of the one before.
std::map<std::string, RoleNodes> nodes_by_role(const std::vector<Node>& nodes) {
  std::map<std::string, RoleNodes> by_role;
  std::set<RoleNodes*> roles;  // of the node
  const Node* before = nullptr;
  for (const Node& node : nodes) {
    if (before == nullptr || node.roles != before->roles) {
      roles.clear();
      for (const std::string& role : node.roles) {
        roles.insert(&by_role[role]);
      }
    }
    before = &node;
    for (RoleNodes* role : roles) {
      ++role->count;
      role->names.add(node.hostname);
    }
  }
  return by_role;
}

void add_nodes(std::string& plan, const Config& config) {
  std::vector<Row> rows;
  for (auto& [role, nodes] : nodes_by_role(config.nodes)) {
    rows.push_back({role, std::to_string(nodes.count), shortened(nodes.names.fold())});
  }
  if (config.nodes.empty() && (config.operations & operation::ANALYZE) != 0) {
    rows.push_back({"none given: they come from the database"});
  }
  add_section(plan, "Nodes: " + std::to_string(config.nodes.size()), aligned(rows));
}

void add_frameworks(std::string& plan, const Config& config) {
  const std::string tree = framework_tree(config);
  if (tree.empty()) {
    return;
  }
  std::size_t rules = 0;
  for (const auto& [path, fwd] : config.fwds->by_path) {
    rules += fwd->rules.size();
  }
  add_section(plan,
              "Framework definitions: " + std::to_string(config.fwds->by_path.size()) +
                  " (rules: " + std::to_string(rules) + ")",
              tree);
}

std::string time_limit(std::int64_t seconds, ScaleType scale) {
  std::string text = std::to_string(seconds) + " s";
  if (scale != ScaleType::CONSTANT) {
    text.append(", ").append(word_of(SCALE_TYPES, scale));
  }
  return text;
}

/// A provider without a role of its own has all that there are.
std::string roles_of(const provider_config& provider) {
  const auto is_role = [&](const char* role) { return provider.roles.count(role) != 0; };
  if (std::all_of(NODE_ROLES.begin(), NODE_ROLES.end(), is_role)) {
    return "any role";
  }
  return joined({provider.roles.begin(), provider.roles.end()}, ",");
}

void add_providers(std::string& plan, const Config& config) {
  std::map<std::string_view, const provider_config*> by_name;
  for (const auto& [name, provider] : config.providers) {
    by_name.emplace(name, provider.get());
  }
  std::vector<Row> rows = {{"NAME", "NODES", "TIME LIMIT", "ON", "COMMAND"}};
  for (const auto& [name, provider] : by_name) {
    std::string nodes = std::to_string(provider->min_nodes);
    if (provider->max_nodes != provider->min_nodes) {
      nodes.append("-").append(std::to_string(provider->max_nodes));
    }
    rows.push_back({std::string(name), nodes,
                    provider->timeout <= 0 ? "no limit"
                                           : time_limit(provider->timeout, provider->timeout_scale),
                    roles_of(*provider), provider->command});
  }
  if (!by_name.empty()) {
    add_rows(plan, "Providers", by_name.size(), rows);
  }
}

std::string assignments(const std::map<std::string, std::string>& variables) {
  std::vector<std::string> texts;
  for (const auto& [name, value] : variables) {
    if (name != "timeout" && name != "scale") {  // these two make the set's limit
      texts.push_back(concat({name, "=", value}));
    }
  }
  return joined(texts, " ");
}

void add_option_sets(std::string& plan, const Config& config) {
  std::vector<Row> rows;
  for (const auto& [provider, sets] : config.provider_options) {
    for (const ProviderOptionset& set : sets) {
      rows.push_back(
          {provider, set.id,
           set.timeout <= 0 ? "the provider's limit" : time_limit(set.timeout, set.scale),
           assignments(set.variables)});
    }
  }
  add_rows(plan, "Option sets", rows.size(), rows);
}

void add_datastores(std::string& plan, const Config& config) {
  std::vector<Row> rows;
  for (const auto& store : config.datastores) {
    std::string source;
    bool read_only = false;
    datastore::parse_sqlite_params(store.parameters, source, read_only);
    rows.push_back(
        {store.name, store.extension_name, read_only ? "read only" : "read and write", source});
  }
  add_rows(plan, "Datastores", rows.size(), rows);
}

std::string folded_names(const ClusterDefinition& group) {
  node::HostFolder names;
  for (const auto& node : group.nodes) {
    names.add(node->hostname);
  }
  return shortened(names.fold());
}

void add_groups(std::string& plan, const Config& config) {
  std::vector<Row> rows;
  for (const auto& [name, group] : config.node_groups) {
    if (group == nullptr) {
      continue;
    }
    std::set<std::string> fwds;
    for (const auto& tree : group->fwd_nodes) {
      fwds.insert(tree->fwd->name);
    }
    rows.push_back(
        {name + (group->implicit ? " (implicit)" : ""),
         std::to_string(group->nodes.size()) + " nodes",
         fwds.empty() ? "runs nothing" : "runs " + joined({fwds.begin(), fwds.end()}, ", "),
         folded_names(*group)});
  }
  add_rows(plan, "Node groups", rows.size(), rows);
}

void add_postprocessing(std::string& plan, const Config& config) {
  std::vector<Row> tables;
  for (const auto& [id, columns] : config.postproc_tables) {
    std::vector<std::string> texts;
    for (const auto& [column, message] : columns) {
      texts.push_back(concat({column, " (", message, ")"}));
    }
    tables.push_back({id, joined(texts, ", ")});
  }
  add_rows(plan, "Tables", tables.size(), tables);
  std::vector<Row> variants;
  for (const auto& [name, report] : config.postproc_reports) {
    for (const templates::Reports_kb_t& variant : report.variants) {
      std::vector<std::string> constraints;
      for (const auto& [attribute, values] : variant.constraints) {
        constraints.push_back(concat({attribute, "=", std::get<0>(values)}));
      }
      variants.push_back({name, variant.message_id, joined(variant.columns, ", "),
                          constraints.empty() ? "" : "when " + joined(constraints, " and ")});
    }
  }
  add_rows(plan, "Reports", config.postproc_reports.size(), variants);
}

void add_solutions(std::string& plan, const Config& config) {
  std::vector<Row> rows;
  for (const auto& [name, solution] : config.solutions) {
    std::vector<std::string> texts;
    for (const auto& [element, attributes] : solution.expected) {
      for (const auto& [attribute, values] : attributes) {
        for (const auto& [value, text] : values) {
          texts.push_back(attribute == "default"
                              ? concat({element, " ", text})
                              : concat({element, "[", attribute, "=", value, "] ", text}));
        }
      }
    }
    rows.push_back({name, joined(texts, "; ")});
  }
  add_rows(plan, "Solutions", rows.size(), rows);
}

/// What the diagnosis files conclude and from which signs, then which rules assert the signs.
void add_diagnoses(std::string& plan, const Config& config) {
  std::vector<Row> diagnoses;
  for (const auto& [id, signs] : config.diagnosis_signs) {
    diagnoses.push_back({id, "signs: " + joined(signs, ", ")});
    const auto rules = config.diagnosis_rules.find(id);
    if (rules != config.diagnosis_rules.end()) {
      diagnoses.back().push_back("rules: " + joined(rules->second, ", "));
    }
  }
  add_rows(plan, "Diagnoses", diagnoses.size(), diagnoses);
  std::vector<Row> signs;
  for (const auto& [id, rules] : config.diagnosis_rules) {
    if (config.diagnosis_signs.count(id) == 0) {
      signs.push_back({id, "rules: " + joined(rules, ", ")});
    }
  }
  add_rows(plan, "Signs", signs.size(), signs);
}

std::string condition(const Element& element);

std::string conditions(const std::vector<Element>& elements) {
  std::vector<std::string> texts;
  std::transform(elements.begin(), elements.end(), std::back_inserter(texts), condition);
  return joined(texts, ", ");
}

std::string condition(const Element& element) {
  if (element.type != Element::SLOT) {
    return word_of(CONTROL_TYPES, element.control) + "(" + conditions(element.children) + ")";
  }
  const Slot& slot = element.slot;
  std::string text = slot.name;
  for (const std::string& part : {slot.multislot_constraint, slot.value_constraint, slot.value}) {
    text.append(part.empty() ? "" : " ").append(part);
  }
  return text;
}

std::string severity_word(int identifier) {
  for (const auto& [word, severity] : SEVERITIES) {
    if (severity.identifier == identifier) {
      return word;
    }
  }
  return std::to_string(identifier);
}

void add_rule_elements(std::string& plan, const Config& config) {
  std::vector<Row> rows;
  for (const Element& rule : config.rule_elements) {
    const RuleBlock& block = rule.block;
    rows.push_back({block.class_name, block.msg_id, severity_word(block.severity),
                    block.nodes.empty()
                        ? "all nodes"
                        : "on " + joined({block.nodes.begin(), block.nodes.end()}, ","),
                    conditions(rule.children)});
  }
  add_rows(plan, "Rules to generate", rows.size(), rows);
}

void add_passed_over(std::string& plan, const RunNotes& notes) {
  std::vector<Row> rows;
  for (std::string& line : passed_over(notes)) {
    rows.push_back({std::move(line)});
  }
  add_rows(plan, "Passed over", rows.size(), rows);
}

}  // namespace

std::string plan_text(const Config& config, const RunNotes& notes) {
  std::string plan;
  add_run(plan, config);
  add_nodes(plan, config);
  add_frameworks(plan, config);
  add_providers(plan, config);
  add_option_sets(plan, config);
  add_datastores(plan, config);
  add_groups(plan, config);
  add_postprocessing(plan, config);
  add_solutions(plan, config);
  add_diagnoses(plan, config);
  add_rule_elements(plan, config);
  add_passed_over(plan, notes);
  return plan;
}

}  // namespace qorn::frontend
