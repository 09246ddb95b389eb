#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <qorn/config.h>

/// A small record with something in every part of it, made by hand.
namespace qorn::example {

/// A framework definition with one rule and `includes`, as one group each.
inline std::shared_ptr<FwdNode> add_fwd(Config& config, const std::string& name,
                                        const std::vector<std::shared_ptr<FwdNode>>& includes) {
  auto node = std::make_shared<FwdNode>();
  node->visited = true;
  node->fwd = std::make_shared<Fwd>();
  node->fwd->name = name;
  node->fwd->path = config.root + "/etc/fwd/" + name + ".xml";
  node->fwd->node = node;
  for (const auto& member : includes) {
    node->groups.push_back({{{"passing_constraint", "0"}}, {member}});
    member->parents.push_back(node);
  }
  config.fwds->by_path[node->fwd->path] = node->fwd;
  config.fwds->ready_nodes.push_back(node);
  return node;
}

inline std::shared_ptr<provider_config> add_provider(Config& config, const std::string& name,
                                                     const std::vector<Fwd*>& fwds) {
  auto provider = std::make_shared<provider_config>();
  provider->name = name;
  provider->config_file = "/q/etc/providers/" + name + ".xml";
  for (Fwd* fwd : fwds) {
    provider->fwds.insert(fwd);
    fwd->provider_groups.push_back({{{"b", ""}, {"a", ""}}, {provider}});
  }
  config.providers[name] = provider;
  return provider;
}

inline void add_frameworks(Config& config) {
  const auto sensors = add_fwd(config, "sensors", {});
  const auto cpu = add_fwd(config, "cpu", {sensors});
  const auto memory = add_fwd(config, "memory", {sensors});
  config.fwds->roots = {add_fwd(config, "base", {cpu, memory})};
  config.fwds->names = {"base"};
  cpu->fwd->kb_mods = {"/q/kb/rules/cpu.clp", "/q/kb/rules/gone.clp"};
  cpu->fwd->rules = {{"cpu-count", "/q/kb/rules/cpu.clp", "Counts\nthem."}};
  cpu->fwd->analyzer_extensions = {{"ext"}};
  const auto lscpu = add_provider(config, "lscpu", {cpu->fwd.get(), sensors->fwd.get()});
  lscpu->command = "lscpu \x1b[31m-J";
  lscpu->roles.insert(NODE_ROLES.begin(), NODE_ROLES.end());
  const auto imb = add_provider(config, "imb", {memory->fwd.get()});
  imb->command = "mpirun imb";
  imb->min_nodes = 2;
  imb->max_nodes = 16;
  imb->timeout_scale = ScaleType::LINEAR;
  imb->roles = {"compute", "head"};
  add_provider(config, "lost", {cpu->fwd.get()});
  config.providers.erase("lost");
}

inline void add_node(Config& config, const std::string& subcluster, const std::string& hostname,
                     const std::vector<std::string>& roles) {
  Node& node = config.nodes.emplace_back();
  node.subcluster = subcluster;
  node.hostname = hostname;
  node.roles = roles;
}

inline void add_groups(Config& config) {
  add_node(config, "", "node1", {"compute"});
  add_node(config, "", "node2", {"compute"});
  add_node(config, "old", "h\xC3\xA4\"\xFF", {"compute", "head"});
  add_node(config, "old", "login", {});
  auto group = std::make_shared<ClusterDefinition>();
  group->name = "All-except-nodegroup-gpu";
  group->implicit = true;
  group->excluded_groups = {"gpu"};
  group->removed_fwds = {{"/q/etc/fwd/base.xml", {"/q/etc/fwd/cpu.xml"}}};
  group->insert_node_instance(config.nodes[1]);
  group->insert_node_instance(config.nodes[0]);
  group->fwd_nodes = {config.fwds->roots[0]->clone(),
                      config.fwds->by_path["/q/etc/fwd/cpu.xml"]->node->clone()};
  config.node_groups[group->name] = group;
}

inline void add_rule_elements(Config& config) {
  Element slot;
  slot.type = Element::SLOT;
  slot.slot = {-1, "speed", "ge", "", "2000"};
  Element control;
  control.type = Element::CONTROL;
  control.control = CONTROL_TYPE::NOT;
  control.children = {slot};
  Element& rule = config.rule_elements.emplace_back();
  rule.type = Element::RULE;
  rule.block.class_name = "CPU";
  rule.block.msg_id = "slow";
  rule.block.severity = 8;
  rule.block.nodes = {"node1"};
  rule.children = {control};
}

struct Record : Config {
  Record();
  Record(const Record&) = delete;
  Record& operator=(const Record&) = delete;
  ~Record() { release_frameworks(*this); }
};

inline Record::Record() {
  Config& config = *this;
  config.root = "/q";
  config.operations = operation::COLLECT;
  config.command_line = "qorn-collect -f nodes -F base";
  config.message_categories = {{"b", "SYSTEM"}, {"a", "CPU"}};
  config.sort_fields = {{true, Sorting::FIELD::NODE}};
  config.suppressions = {{5, "id", "node1", 4}};
  config.datastores = {
      {datastore::DatabaseType::SQLITE, "DATA", "sqlite", "", "read_only=true|source=\"~/x.db\""}};
  config.postproc_tables = {{"summary", {{"node", "msg-1"}, {"value", "msg-2"}}}};
  config.diagnosis_signs = {{"bad-memory", {"ecc", "oom"}}};
  config.diagnosis_rules = {{"bad-memory", {"mem-ecc", "mem-ecc"}}, {"ecc", {"mem-ecc"}}};
  config.postproc_reports = {{"r", {{{{"a", "c"}, "m", {{"alpha", {"1", "", ""}}}}}}}};
  config.solutions["kernel"].name = "kernel";
  config.solutions["kernel"].expected["expected-release"]["arch"] = {{"x86_64", "6.1"}};
  config.type_map = {{"count", templates::DataPt_TYPES::LONG}};
  config.config_params = {{"checks", "x", "x", "qorn-checks", {"1", "2"}}};
  config.async_output_dir[0] = '/';
  config.collector_timeout_scale = ScaleType::LOGARITHMIC;
  ProviderOptionset& set = config.provider_options["IMB"].emplace_back();
  set.id = "small";
  set.timeout = 600;
  set.variables = {{"SIZE", "4"}, {"timeout", "600"}};
  add_frameworks(config);
  add_groups(config);
  add_rule_elements(config);
}

}  // namespace qorn::example
