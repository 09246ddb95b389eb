#include "record_comparison.h"

#include <algorithm>
#include <map>
#include <vector>

#include <qorn/node.h>
#include <qorn/str.h>

#include "difference.h"
#include "record_fields.h"

namespace qorn::inspect {
namespace {

using Json = nlohmann::json;

constexpr const char* ROOT = "$QORN_ROOT";
/// The rules of all framework definitions, which no record has in one place.
constexpr const char* GATHERED_RULES = "rules";

/// A member of a record, or of a member of it, and what stands ahead of its entries' names.
struct Member {
  std::string path;
  const char* prefix;
};

/// The sections of the output; what no section compares is a setting.
struct Section {
  const char* title;
  std::vector<Member> members;
};
const std::vector<Section>& sections() {
  using frontend::name_of;
  static const std::string FWDS = std::string(name_of(&Config::fwds)) + "/";
  static const auto named = [](const char* name) { return Member{name, name}; };
  static const std::vector<Section> SECTIONS = {
      {"framework definitions",
       {{FWDS + name_of(&FwdRegistry::names), "asked for"},
        {FWDS + name_of(&FwdRegistry::roots), "roots"},
        {FWDS + name_of(&FwdRegistry::by_path), ""}}},
      {"rules",
       {{GATHERED_RULES, ""},
        named(name_of(&Config::diagnosis_rules)),
        named(name_of(&Config::diagnosis_signs)),
        named(name_of(&Config::rule_elements))}},
      {"providers", {{name_of(&Config::providers), ""}}},
      {"options", {{name_of(&Config::provider_options), ""}}},
      {"groups",
       {{name_of(&Config::node_groups), ""}, named(name_of(&Config::cluster_definition))}}};
  return SECTIONS;
}

/// Writes the root as $QORN_ROOT wherever a text or a name begins with it.
void hide(const std::string& root, Json& value) {
  if (value.is_string()) {
    const std::string& text = value.get_ref<const std::string&>();
    if (text.starts_with(root + "/")) {
      value = ROOT + text.substr(root.size());
    }
    return;
  }
  if (value.is_array()) {
    for (Json& each : value) {
      hide(root, each);
    }
  } else if (value.is_object()) {
    Json object = Json::object();
    for (auto& [key, each] : value.items()) {
      hide(root, each);
      object[key.starts_with(root + "/") ? ROOT + key.substr(root.size()) : key] = std::move(each);
    }
    value = std::move(object);
  }
}

/// Leaves out what follows from other members: the parents in the graph from the includes, the
/// checks from the analyzer extensions.
void drop_derived(Json& record) {
  record["fwds"].erase("ready_nodes");
  for (auto& [path, fwd] : record["fwds"]["by_path"].items()) {
    Json includes = Json::array();
    if (fwd.contains("node") && fwd["node"].is_object()) {
      for (const Json& group : fwd["node"].value("groups", Json::array())) {
        for (const Json& member : group.value("members", Json::array())) {
          includes.push_back(member);
        }
      }
    }
    fwd["includes"] = std::move(includes);
    fwd.erase("node");
  }
  Json params = Json::array();
  for (const Json& param : record.value("config_params", Json::array())) {
    if (param.value("name", "") != "qorn-checks") {
      params.push_back(param);
    }
  }
  record["config_params"] = std::move(params);
}

/// Moves the rules out of the framework definitions, so that they are compared by themselves; a
/// rule that several definitions bring is one.
void gather_rules(Json& record) {
  Json rules = Json::object();
  for (auto& [path, fwd] : record["fwds"]["by_path"].items()) {
    for (const Json& rule : fwd.value("rules", Json::array())) {
      rules[rule.value("name", "")] = rule;
    }
    fwd.erase("rules");
  }
  record[GATHERED_RULES] = std::move(rules);
}

/// Takes a member out of a record, null when it has none.
Json take(Json& record, const std::string& member) {
  const std::size_t slash = member.find('/');
  if (slash != std::string::npos) {
    return record.contains(member.substr(0, slash))
               ? take(record[member.substr(0, slash)], member.substr(slash + 1))
               : Json();
  }
  Json value;
  if (record.contains(member)) {
    value = std::move(record[member]);
    record.erase(member);
  }
  return value;
}

/// Roles and subcluster of nodes, with the names of those that have them.
using NodesByRoles = std::map<std::string, std::vector<std::string>>;

NodesByRoles by_roles(const Json& nodes) {
  NodesByRoles result;
  for (const Json& node : nodes) {
    std::string words;
    for (const Json& role : node.at("roles")) {
      words.append(words.empty() ? " role: " : " ").append(role.get<std::string>());
    }
    if (const std::string subcluster = node.at("subcluster"); !subcluster.empty()) {
      words += " subcluster: " + subcluster;
    }
    result[words].push_back(node.at("hostname"));
  }
  for (auto& [words, names] : result) {
    std::sort(names.begin(), names.end());
  }
  return result;
}

std::vector<std::string> folded_difference(const NodesByRoles& a, const NodesByRoles& b) {
  std::vector<std::string> lines;
  for (const auto& [words, names] : a) {
    const auto other = b.find(words);
    std::vector<std::string> only = names;
    if (other != b.end()) {
      only.clear();
      std::set_difference(names.begin(), names.end(), other->second.begin(), other->second.end(),
                          std::back_inserter(only));
    }
    if (!only.empty()) {
      lines.push_back(str::printable(node::fold_hosts(only) + words));
    }
  }
  return lines;
}

}  // namespace

void hide_root(Json& record) {
  hide(record.value("root", ""), record);
}

int compare_records(Json a, Json b, const Terminal& terminal) {
  DifferencePrinter printer(terminal);
  for (Json* record : {&a, &b}) {
    drop_derived(*record);
    gather_rules(*record);
  }
  std::vector<std::pair<Json, Json>> values;
  for (const Section& section : sections()) {
    for (const Member& member : section.members) {
      values.emplace_back(take(a, member.path), take(b, member.path));
    }
  }
  const NodesByRoles nodes_a = by_roles(take(a, "nodes"));
  const NodesByRoles nodes_b = by_roles(take(b, "nodes"));
  take(a, "fwds");
  take(b, "fwds");
  printer.start("settings");
  compare_json("", a, b, printer);
  auto next = values.begin();
  for (const Section& section : sections()) {
    printer.start(section.title);
    for (const Member& member : section.members) {
      compare_json(member.prefix, next->first, next->second, printer);
      ++next;
    }
  }
  printer.start("nodes");
  for (const std::string& line : folded_difference(nodes_a, nodes_b)) {
    printer.removed(line);
  }
  for (const std::string& line : folded_difference(nodes_b, nodes_a)) {
    printer.added(line);
  }
  return printer.found_any() ? 1 : 0;
}

}  // namespace qorn::inspect
