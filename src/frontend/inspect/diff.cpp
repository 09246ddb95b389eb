#include "diff.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <limits>
#include <map>
#include <set>

#include <nlohmann/json.hpp>
#include <sys/wait.h>
#include <unistd.h>

#include <qorn/fs.h>
#include <qorn/node.h>
#include <qorn/str.h>

#include "descriptor_buffer.h"
#include "record_json.h"
#include "run_loader.h"

namespace qorn::inspect {
namespace {

using Json = nlohmann::json;

using Kinds = fs::Readable::Kinds;
constexpr fs::Readable RECORD_FILE{Kinds::REGULAR_FILES, 4'000'000'000,
                                   "the file is larger than 4000 MB"};
constexpr fs::Readable RECORD_OF_CHILD{Kinds::ALL, std::numeric_limits<std::size_t>::max(), ""};
/// Levels of a record; its trees have some hundred at most.
constexpr int DEEPEST = 2000;
constexpr const char* ROOT = "$QORN_ROOT";

/// A member of a record, or of a member of it, and what stands ahead of its entries' names.
struct Member {
  const char* path;
  const char* prefix;
};

/// The sections of the output; what no section compares is a setting.
struct Section {
  const char* title;
  std::vector<Member> members;
};
const std::vector<Section>& sections() {
  static const std::vector<Section> SECTIONS = {
      {"framework definitions",
       {{"fwds/names", "asked for"}, {"fwds/roots", "roots"}, {"fwds/by_path", ""}}},
      {"rules",
       {{"rules", ""},
        {"diagnosis_rules", "diagnosis_rules"},
        {"diagnosis_signs", "diagnosis_signs"},
        {"rule_elements", "rule_elements"}}},
      {"providers", {{"providers", ""}}},
      {"options", {{"provider_options", ""}}},
      {"groups", {{"node_groups", ""}, {"cluster_definition", "cluster_definition"}}}};
  return SECTIONS;
}

std::string text_of(const Json& value) {
  return str::printable(value.is_string()
                            ? value.get<std::string>()
                            : value.dump(-1, ' ', false, Json::error_handler_t::replace));
}

/// The differences of one section, printed under its title once there is one.
class Printer {
 public:
  explicit Printer(const Terminal& terminal) : terminal_(terminal) {}

  void start(const char* title) { title_ = title; }

  void removed(const std::string& text) { print(Terminal::RED, "  - " + text); }
  void added(const std::string& text) { print(Terminal::GREEN, "  + " + text); }
  void changed(const std::string& name, const std::string& a, const std::string& b) {
    print(Terminal::YELLOW, "  ~ " + name + ": " + a + " -> " + b);
  }

  bool found_any() const { return found_any_; }

 private:
  void print(Terminal::Color color, const std::string& line) {
    if (!title_.empty()) {
      std::cout << title_ << '\n';
      title_.clear();
    }
    std::cout << terminal_.paint(color, line) << '\n';
    found_any_ = true;
  }

  const Terminal& terminal_;
  std::string title_;
  bool found_any_ = false;
};

/// Lists of records that bear a name of their own are compared by it, whatever their order.
bool is_keyed(const Json& list, const char* key) {
  return list.is_array() && !list.empty() &&
         std::all_of(list.begin(), list.end(), [&](const Json& each) {
           return each.is_object() && each.contains(key) && each[key].is_string();
         });
}

Json keyed(const Json& list, const char* key) {
  Json object = Json::object();
  for (const Json& each : list) {
    std::string name = each[key];
    while (object.contains(name)) {
      name += "'";  // what comes twice is compared in order
    }
    object[name] = each;
  }
  return object;
}

class Comparison {
 public:
  explicit Comparison(Printer& printer) : printer_(printer) {}

  void compare(const std::string& name, const Json& a, const Json& b) {
    if (a == b) {
      return;
    }
    if (a.is_object() && b.is_object()) {
      return compare_objects(name, a, b);
    }
    for (const char* key : {"name", "path", "id"}) {
      if ((is_keyed(a, key) || a == Json::array()) && (is_keyed(b, key) || b == Json::array())) {
        return compare_objects(name, keyed(a, key), keyed(b, key));
      }
    }
    if (a.is_array() && b.is_array()) {
      return compare_lists(name, a, b);
    }
    printer_.changed(str::printable(name), text_of(a), text_of(b));
  }

 private:
  void compare_objects(const std::string& name, const Json& a, const Json& b) {
    const std::string prefix = name.empty() ? "" : name + ".";
    for (const auto& [key, value] : a.items()) {
      if (!b.contains(key)) {
        printer_.removed(str::printable(prefix + key) + short_text(value));
      } else {
        compare(prefix + key, value, b[key]);
      }
    }
    for (const auto& [key, value] : b.items()) {
      if (!a.contains(key)) {
        printer_.added(str::printable(prefix + key) + short_text(value));
      }
    }
  }

  /// Records stand for themselves by their name; their content would fill the screen.
  static std::string short_text(const Json& value) {
    return value.is_object() || value.is_array() ? "" : " = " + text_of(value);
  }

  void compare_lists(const std::string& name, const Json& a, const Json& b) {
    const std::multiset<Json> in_a(a.begin(), a.end());
    const std::multiset<Json> in_b(b.begin(), b.end());
    if (in_a == in_b) {
      return printer_.changed(str::printable(name), text_of(a), text_of(b) + " (order)");
    }
    std::vector<Json> only;
    std::set_difference(in_a.begin(), in_a.end(), in_b.begin(), in_b.end(),
                        std::back_inserter(only));
    for (const Json& each : only) {
      printer_.removed(str::printable(name) + ": " + text_of(each));
    }
    only.clear();
    std::set_difference(in_b.begin(), in_b.end(), in_a.begin(), in_a.end(),
                        std::back_inserter(only));
    for (const Json& each : only) {
      printer_.added(str::printable(name) + ": " + text_of(each));
    }
  }

  Printer& printer_;
};

/// Writes the root as $QORN_ROOT wherever a text begins with it.
void hide_root(Json& value, const std::string& root) {
  if (value.is_string()) {
    const std::string& text = value.get_ref<const std::string&>();
    if (text.starts_with(root + "/")) {
      value = ROOT + text.substr(root.size());
    }
    return;
  }
  if (value.is_array()) {
    for (Json& each : value) {
      hide_root(each, root);
    }
  } else if (value.is_object()) {
    Json object = Json::object();
    for (auto& [key, each] : value.items()) {
      hide_root(each, root);
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
  record["rules"] = std::move(rules);
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

int compare_records(Json a, Json b, const Terminal& terminal) {
  Printer printer(terminal);
  Comparison comparison(printer);
  for (Json* record : {&a, &b}) {
    hide_root(*record, record->value("root", ""));
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
  comparison.compare("", a, b);
  auto next = values.begin();
  for (const Section& section : sections()) {
    printer.start(section.title);
    for (const Member& member : section.members) {
      comparison.compare(member.prefix, next->first, next->second);
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

Json parse(const std::string& text, const std::string& name) {
  const auto take = [](int depth, Json::parse_event_t /*event*/, Json& /*value*/) {
    if (depth > DEEPEST) {
      throw std::length_error("too deep");
    }
    return true;
  };
  try {
    Json record = Json::parse(text, take);
    if (record.is_object() && record.contains("fwds") && record.contains("nodes")) {
      return record;
    }
  } catch (const std::exception&) {
    // as for a document of another kind
  }
  throw Trouble(name + ": not the record of a run, as QORN_RECORD writes it");
}

Json read_record(const std::string& path) {
  const fs::FileText file = fs::read_file(path, RECORD_FILE);
  if (!file.was_read()) {
    throw Trouble(path + ": " + file.reason);
  }
  return parse(file.text, path);
}

/// In a process of its own: the record of the run under `root`, to the descriptor.
int write_run(const std::string& root, const std::vector<std::string>& arguments, int descriptor) {
  try {
    setenv("QORN_ROOT", fs::abspath(root).c_str(), 1);
    LoadedRun run;
    run.read_arguments(arguments);
    run.read_nodes();
    run.read_main_document();
    run.read_frameworks();
    frontend::DescriptorBuffer buffer(descriptor);
    std::ostream out(&buffer);
    frontend::write_record(run.config, out);
    out.flush();
    return buffer.error() == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
  } catch (const std::exception& error) {
    std::cerr << error.what() << (*error.what() == '\0' ? "" : "\n");
    return EXIT_FAILURE;
  }
}

/// A run leaves settings in its process, so each has its own.
Json load_root(const std::string& root, const std::vector<std::string>& arguments) {
  int ends[2];
  if (pipe(ends) != 0) {
    throw Trouble("no pipe for the run under " + root);
  }
  fs::Descriptor from_child(ends[0]);
  fs::Descriptor to_parent(ends[1]);
  std::cout.flush();
  const pid_t child = fork();
  if (child == 0) {
    from_child.close();
    const int status = write_run(root, arguments, to_parent.get());
    std::cerr.flush();
    _exit(status);
  }
  to_parent.close();
  const std::string text = fs::read_file(from_child, RECORD_OF_CHILD).text;
  from_child.close();
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
    throw Trouble("the run under " + root + " can't be loaded");
  }
  return parse(text, root);
}

}  // namespace

int diff_records(const std::string& a, const std::string& b, const Terminal& terminal) {
  return compare_records(read_record(a), read_record(b), terminal);
}

int diff_roots(const std::string& a, const std::string& b,
               const std::vector<std::string>& arguments, const Terminal& terminal) {
  Json first = load_root(a, arguments);
  Json second = load_root(b, arguments);
  for (Json* record : {&first, &second}) {
    hide_root(*record, record->value("root", ""));
    (*record)["root"] = "";
  }
  return compare_records(std::move(first), std::move(second), terminal);
}

}  // namespace qorn::inspect
