#include "record_json.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "json_stream.h"

namespace qorn::frontend {
namespace {

constexpr int RECORD_VERSION = 1;

// One form for each kind of value; all are declared ahead, since they contain one another.
void write(JsonStream& json, bool value);
void write(JsonStream& json, std::integral auto value);
void write(JsonStream& json, const std::string& text);
void write(JsonStream& json, const char* text) = delete;  // it would be taken for a boolean
void write(JsonStream& json, const FwdNode& node);
void write(JsonStream& json, const FwdRegistry& fwds);
void write(JsonStream& json, const Fwd& fwd);
void write(JsonStream& json, const provider_config& provider);
void write(JsonStream& json, const Rule& rule);
void write(JsonStream& json, const internal::GroupAttributes<FwdNode>& group);
void write(JsonStream& json, const internal::GroupAttributes<provider_config>& group);
void write(JsonStream& json, const PostprocessorExtension& extension);
void write(JsonStream& json, const AnalyzerExtensionType& extension);
void write(JsonStream& json, const MessageCatalog& catalog);
void write(JsonStream& json, const Sorting& key);
void write(JsonStream& json, const Suppression& suppression);
void write(JsonStream& json, const CommonOptions& options);
void write(JsonStream& json, const ConfigParam& param);
void write(JsonStream& json, const datastore::DataStoreConfig& store);
void write(JsonStream& json, const ProviderOptionset& options);
void write(JsonStream& json, const templates::Reports_t& report);
void write(JsonStream& json, const templates::Reports_kb_t& variant);
void write(JsonStream& json, const Solution& solution);
void write(JsonStream& json, templates::DataPt_TYPES type);
void write(JsonStream& json, const Element& element);
void write(JsonStream& json, const ClusterDefinition& group);
template <typename Value>
void write(JsonStream& json, const std::shared_ptr<Value>& value);
template <typename Value>
void write(JsonStream& json, const std::vector<Value>& values);
template <typename Value>
void write(JsonStream& json, const std::set<Value>& values);
template <typename Value>
void write(JsonStream& json, const std::map<std::string, Value>& values);
template <typename Value>
void write(JsonStream& json, const std::unordered_map<std::string, Value>& values);
template <typename... Values>
void write(JsonStream& json, const std::tuple<Values...>& values);
template <typename First, typename Second>
void write(JsonStream& json, const std::pair<First, Second>& values);

/// An object that is written member by member.
class Object {
 public:
  explicit Object(JsonStream& json) : json_(json) { json_.open('{'); }

  template <typename Value>
  Object& add(std::string_view key, const Value& value) {
    json_.key(key);
    write(json_, value);
    return *this;
  }

  /// Not the destructor's: it may run out of memory.
  void end() { json_.close('}'); }

 private:
  JsonStream& json_;
};

void write(JsonStream& json, bool value) {
  json.boolean(value);
}

void write(JsonStream& json, std::integral auto value) {
  json.number(value);
}

void write(JsonStream& json, const std::string& text) {
  json.text(text);
}

template <typename Value>
void write(JsonStream& json, const std::shared_ptr<Value>& value) {
  if (value == nullptr) {
    json.null();
  } else {
    write(json, *value);
  }
}

template <typename List>
void write_list(JsonStream& json, const List& values) {
  json.open('[');
  for (const auto& value : values) {
    write(json, value);
  }
  json.close(']');
}

template <typename Value>
void write(JsonStream& json, const std::vector<Value>& values) {
  write_list(json, values);
}

template <typename Value>
void write(JsonStream& json, const std::set<Value>& values) {
  write_list(json, values);
}

template <typename Value>
void write(JsonStream& json, const std::map<std::string, Value>& values) {
  Object object(json);
  for (const auto& [key, value] : values) {
    object.add(key, value);
  }
  object.end();
}

/// Sorted by key.
template <typename Value>
void write(JsonStream& json, const std::unordered_map<std::string, Value>& values) {
  std::vector<const std::pair<const std::string, Value>*> entries;
  entries.reserve(values.size());
  for (const auto& entry : values) {
    entries.push_back(&entry);
  }
  std::sort(entries.begin(), entries.end(),
            [](const auto* a, const auto* b) { return a->first < b->first; });
  Object object(json);
  for (const auto* entry : entries) {
    object.add(entry->first, entry->second);
  }
  object.end();
}

template <typename... Values>
void write(JsonStream& json, const std::tuple<Values...>& values) {
  json.open('[');
  std::apply([&](const auto&... each) { (write(json, each), ...); }, values);
  json.close(']');
}

template <typename First, typename Second>
void write(JsonStream& json, const std::pair<First, Second>& values) {
  write(json, std::tie(values.first, values.second));
}

const std::string& path_of(const FwdNode& node) {
  return node.fwd->path;
}

std::vector<std::string> paths_of(const std::vector<std::shared_ptr<FwdNode>>& nodes) {
  std::vector<std::string> paths;
  paths.reserve(nodes.size());
  for (const auto& node : nodes) {
    paths.push_back(path_of(*node));
  }
  return paths;
}

std::vector<std::string> names_of(const std::vector<std::shared_ptr<provider_config>>& providers) {
  std::vector<std::string> names;
  names.reserve(providers.size());
  for (const auto& provider : providers) {
    names.push_back(provider->name);
  }
  return names;
}

/// The set itself is in the order of its pointers.
std::vector<std::string> sorted_paths(const std::set<const Fwd*>& fwds) {
  std::vector<std::string> paths;
  paths.reserve(fwds.size());
  for (const Fwd* fwd : fwds) {
    paths.push_back(fwd->path);
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

void write(JsonStream& json, const PostprocessorExtension& extension) {
  Object(json).add("name", extension.name).end();
}

void write(JsonStream& json, const AnalyzerExtensionType& extension) {
  Object(json).add("name", extension.name).end();
}

void write(JsonStream& json, const MessageCatalog& catalog) {
  Object(json).add("name", catalog.name).end();
}

void write(JsonStream& json, const Rule& rule) {
  Object(json)
      .add("name", rule.name)
      .add("file", rule.file)
      .add("description", rule.description)
      .end();
}

void write(JsonStream& json, const internal::GroupAttributes<FwdNode>& group) {
  Object(json).add("attributes", group.attributes).add("members", paths_of(group.members)).end();
}

void write(JsonStream& json, const internal::GroupAttributes<provider_config>& group) {
  Object(json).add("attributes", group.attributes).add("members", names_of(group.members)).end();
}

void write(JsonStream& json, const Sorting& key) {
  Object(json).add("ascending", key.ascending).add("field", word_of(SORT_FIELDS, key.field)).end();
}

void write(JsonStream& json, const Suppression& suppression) {
  Object(json)
      .add("confidence", suppression.confidence)
      .add("id", suppression.id)
      .add("node_id", suppression.node_id)
      .add("severity", suppression.severity)
      .end();
}

void write(JsonStream& json, const CommonOptions& options) {
  Object(json)
      .add("debug_log", options.debug_log)
      .add("config_parsed", options.config_parsed)
      .add("skip_command_processing", options.skip_command_processing)
      .add("parse_node_groups", options.parse_node_groups)
      .add("deprecation_messages", options.deprecation_messages)
      .end();
}

void write(JsonStream& json, const ConfigParam& param) {
  Object(json).add("group", param.group).add("name", param.name).add("values", param.values).end();
}

void write(JsonStream& json, const datastore::DataStoreConfig& store) {
  Object(json)
      .add("type", static_cast<int>(store.type))
      .add("name", store.name)
      .add("extension_name", store.extension_name)
      .add("extension_text", store.extension_text)
      .add("parameters", store.parameters)
      .end();
}

void write(JsonStream& json, const ProviderOptionset& options) {
  Object(json)
      .add("scale", word_of(SCALE_TYPES, options.scale))
      .add("timeout", options.timeout)
      .add("id", options.id)
      .add("variables", options.variables)
      .end();
}

void write(JsonStream& json, const templates::Reports_t& report) {
  Object(json).add("variants", report.variants).end();
}

void write(JsonStream& json, const templates::Reports_kb_t& variant) {
  Object(json)
      .add("columns", variant.columns)
      .add("message_id", variant.message_id)
      .add("constraints", variant.constraints)
      .end();
}

void write(JsonStream& json, const Solution& solution) {
  Object(json).add("name", solution.name).add("expected", solution.expected).end();
}

void write(JsonStream& json, templates::DataPt_TYPES type) {
  json.text(word_of(templates::DATA_POINT_TYPES, type));
}

void write(JsonStream& json, const Element& element) {
  const RuleBlock& block = element.block;
  const Slot& slot = element.slot;
  Object object(json);
  switch (element.type) {
    case Element::RULE:
      object.add("type", std::string("rule"))
          .add("class_name", block.class_name)
          .add("msg_id", block.msg_id)
          .add("analysis_extension", block.analysis_extension)
          .add("severity", block.severity)
          .add("list", block.list)
          .add("nodes", block.nodes)
          .add("children", element.children);
      break;
    case Element::CONTROL:
      object.add("type", std::string("control"))
          .add("control", word_of(CONTROL_TYPES, element.control))
          .add("children", element.children);
      break;
    case Element::SLOT:
      object.add("type", std::string("slot"))
          .add("name", slot.name)
          .add("value_constraint", slot.value_constraint)
          .add("multislot_constraint", slot.multislot_constraint)
          .add("value", slot.value);
      break;
    default:
      object.add("type", element.type);
  }
  object.end();
}

void write(JsonStream& json, const FwdNode& node) {
  Object(json)
      .add("blocking_count", node.blocking_count)
      .add("visited", node.visited)
      .add("groups", node.groups)
      .add("parents", paths_of(node.parents))
      .end();
}

void write(JsonStream& json, const Fwd& fwd) {
  Object(json)
      .add("kb_mods", fwd.kb_mods)
      .add("rules", fwd.rules)
      .add("provider_path", fwd.provider_path)
      .add("provider_aux_path", fwd.provider_aux_path)
      .add("kb_path", fwd.kb_path)
      .add("description", fwd.description)
      .add("name", fwd.name)
      .add("postproc_extensions", fwd.postproc_extensions)
      .add("analyzer_extensions", fwd.analyzer_extensions)
      .add("message_catalogs", fwd.message_catalogs)
      .add("custom_result", fwd.custom_result)
      .add("path", fwd.path)
      .add("provider_groups", fwd.provider_groups)
      .add("state", fwd.state)
      .add("node", fwd.node)
      .end();
}

void write(JsonStream& json, const FwdRegistry& fwds) {
  Object(json)
      .add("names", fwds.names)
      .add("by_path", fwds.by_path)
      .add("roots", paths_of(fwds.roots))
      .add("ready_nodes", paths_of(fwds.ready_nodes))
      .end();
}

void write(JsonStream& json, const provider_config& provider) {
  Object(json)
      .add("name", provider.name)
      .add("config_file", provider.config_file)
      .add("config_dir", provider.config_dir)
      .add("aux_path", provider.aux_path)
      .add("command", provider.command)
      .add("max_nodes", provider.max_nodes)
      .add("min_nodes", provider.min_nodes)
      .add("encoding", word_of(ENCODINGS, provider.encoding))
      .add("timeout", provider.timeout)
      .add("architecture", word_of(ARCHITECTURES, provider.architecture))
      .add("cluster", word_of(CLUSTER_TYPES, provider.cluster))
      .add("timeout_scale", word_of(SCALE_TYPES, provider.timeout_scale))
      .add("version", provider.version)
      .add("nodelist_method", word_of(NODELIST_METHODS, provider.nodelist_method))
      .add("permutations", provider.permutations)
      .add("roles", provider.roles)
      .add("success_codes", provider.success_codes)
      .add("fwds", sorted_paths(provider.fwds))
      .end();
}

using Tree = std::shared_ptr<const FwdNode>;

void check_depth(const Tree& tree, const std::string& group) {
  std::vector<std::pair<const FwdNode*, std::size_t>> unfinished{{tree.get(), 1}};
  while (!unfinished.empty()) {
    const auto [node, level] = unfinished.back();
    unfinished.pop_back();
    if (level > MOST_TREE_LEVELS) {
      throw std::runtime_error("The tree of the framework definition " + path_of(*tree) +
                               " in the node group " + group + " has more than " +
                               std::to_string(MOST_TREE_LEVELS) + " levels.");
    }
    for (const auto& members : node->groups) {
      for (const auto& member : members) {
        unfinished.emplace_back(member.get(), level + 1);
      }
    }
  }
}

void write_tree(JsonStream& json, const FwdNode& node) {
  Object object(json);
  object.add("path", path_of(node));
  json.key("members");
  json.open('[');
  for (const auto& group : node.groups) {
    for (const auto& member : group) {
      write_tree(json, *member);
    }
  }
  json.close(']');
  object.end();
}

void write_trees(JsonStream& json, const std::set<Tree>& set) {
  std::vector<Tree> trees(set.begin(), set.end());
  std::sort(trees.begin(), trees.end(),
            [](const Tree& a, const Tree& b) { return path_of(*a) < path_of(*b); });
  json.open('[');
  for (const Tree& tree : trees) {
    write_tree(json, *tree);
  }
  json.close(']');
}

void write(JsonStream& json, const ClusterDefinition& group) {
  Object object(json);
  object.add("name", group.name);
  json.key("fwd_nodes");
  write_trees(json, group.fwd_nodes);
  object.add("implicit", group.implicit)
      .add("excluded_groups", group.excluded_groups)
      .add("removed_fwds", group.removed_fwds);
  json.key("nodes");
  json.open('[');
  for (const auto& node : group.nodes) {
    json.text(node->hostname);
  }
  json.close(']');
  object.end();
}

/// What stands ahead of and behind the host name of a node.
struct NodeFrame {
  std::string head;
  std::string tail;
};

NodeFrame frame_of(const Node& node) {
  NodeFrame frame{"{\n      \"subcluster\": ", ",\n      \"roles\": ["};
  JsonStream::append_quoted(frame.head, node.subcluster);
  frame.head.append(",\n      \"hostname\": ");
  for (const std::string& role : node.roles) {
    frame.tail.append(&role == &node.roles.front() ? "\n        " : ",\n        ");
    JsonStream::append_quoted(frame.tail, role);
  }
  frame.tail.append(node.roles.empty() ? "]\n    }" : "\n      ]\n    }");
  return frame;
}

/// Nodes come by the million, and most differ from the one before in their host name alone.
void write_nodes(JsonStream& json, const std::vector<Node>& nodes) {
  json.open('[');
  const Node* before = nullptr;
  NodeFrame frame;
  for (const Node& node : nodes) {
    if (before == nullptr || node.roles != before->roles || node.subcluster != before->subcluster) {
      frame = frame_of(node);
    }
    before = &node;
    std::string& text = json.element();
    text.append(frame.head);
    JsonStream::append_quoted(text, node.hostname);
    text.append(frame.tail);
  }
  json.close(']');
}

// The fields in declared order, in three parts.

void write_run(Object& object, const Config& config) {
  object.add("operations", config.operations)
      .add("num_permutations", config.num_permutations)
      .add("ignore_subclusters", config.ignore_subclusters)
      .add("re_collect", config.re_collect)
      .add("env_propagation", config.env_propagation)
      .add("db_close_delay", config.db_close_delay)
      .add("node_include", config.node_include)
      .add("sort_fields", config.sort_fields)
      .add("suppressions", config.suppressions)
      .add("data_age_threshold", config.data_age_threshold)
      .add("kb_config_files", config.kb_config_files)
      .add("message_categories", config.message_categories)
      .add("common_options", config.common_options)
      .add("fwds", *config.fwds)
      .add("providers", config.providers)
      .add("command_line", config.command_line)
      .add("log_level", config.log_level)
      .add("config_file", config.config_file)
      .add("custom_provider_file", config.custom_provider_file)
      .add("config_xsd", config.config_xsd)
      .add("node_file", config.node_file)
      .add("node_group_file", config.node_group_file)
      .add("database_names", config.database_names)
      .add("db_names", config.db_names)
      .add("option_flags", config.option_flags)
      .add("datastores", config.datastores)
      .add("cluster_definition", config.cluster_definition)
      .add("node_groups", config.node_groups);
}

void write_knowledge(Object& object, const Config& config) {
  object.add("min_severity", config.min_severity)
      .add("log_file", config.log_file)
      .add("postprocessor_extensions", config.postprocessor_extensions)
      .add("postproc_config_files", config.postproc_config_files)
      .add("message_schema_files", config.message_schema_files)
      .add("postproc_tables", config.postproc_tables)
      .add("diagnosis_signs", config.diagnosis_signs)
      .add("diagnosis_rules", config.diagnosis_rules)
      .add("postproc_reports", config.postproc_reports)
      .add("solutions", config.solutions)
      .add("type_map", config.type_map)
      .add("multi_type_map", config.multi_type_map)
      .add("message_category_names", config.message_category_names)
      .add("bin_path", config.bin_path)
      .add("root", config.root);
}

std::string text_of(const char (&characters)[Config::PATH_CAPACITY]) {
  return {characters, strnlen(characters, sizeof characters)};
}

void write_collector(Object& object, const Config& config) {
  object.add("config_params", config.config_params)
      .add("async_output_dir", text_of(config.async_output_dir))
      .add("provider_config_dir", text_of(config.provider_config_dir))
      .add("provider_auxiliary_path", text_of(config.provider_auxiliary_path))
      .add("collector_timeout_scale", word_of(SCALE_TYPES, config.collector_timeout_scale))
      .add("collector_network_interface", config.collector_network_interface)
      .add("collector_timeout", config.collector_timeout)
      .add("collection_timeout", config.collection_timeout)
      .add("provider_options", config.provider_options)
      .add("collect_extension", config.collect_extension)
      .add("rules_file", config.rules_file)
      .add("rules_xsd", config.rules_xsd)
      .add("analysis_map_xsd", config.analysis_map_xsd)
      .add("message_file", config.message_file)
      .add("message_prefix", config.message_prefix)
      .add("rules_kb_path", config.rules_kb_path)
      .add("rules_directory", config.rules_directory)
      .add("rule_elements", config.rule_elements);
}

void check_groups(const Config& config) {
  const auto check = [](const std::shared_ptr<ClusterDefinition>& group) {
    if (group != nullptr) {
      for (const Tree& tree : group->fwd_nodes) {
        check_depth(tree, group->name);
      }
    }
  };
  check(config.cluster_definition);
  for (const auto& [name, group] : config.node_groups) {
    check(group);
  }
}

}  // namespace

void write_record(const Config& config, std::ostream& out) {
  check_groups(config);
  JsonStream json(out);
  Object object(json);
  object.add("record_version", RECORD_VERSION);
  write_run(object, config);
  write_knowledge(object, config);
  json.key("nodes");
  write_nodes(json, config.nodes);
  write_collector(object, config);
  object.end();
  json.finish();
}

}  // namespace qorn::frontend
