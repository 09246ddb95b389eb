#pragma once

#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <qorn/fwd.h>
#include <qorn/str.h>

namespace qorn::testing {

/// The rows of a table: one for each line, cells separated by " => ", missing ones empty; "\n" in
/// a cell is a line end. The first line, behind the bracket of a raw literal, is none.
inline std::vector<std::vector<std::string>> rows_of(const std::string& table) {
  std::vector<std::vector<std::string>> rows;
  for (const std::string& line : str::split(table, '\n', false)) {
    std::vector<std::string>& row = rows.emplace_back();
    for (const std::string& cell : str::split(str::replace(line, " => ", "\t"), '\t', true)) {
      row.push_back(str::replace(cell, "\\n", "\n"));
    }
    row.resize(6);
  }
  return rows;
}

/// The text that often.
inline std::string repeated(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) {
    all += text;
  }
  return all;
}

/// An element for each word.
inline std::string elements(const std::string& name, const std::string& words) {
  std::string all;
  for (const std::string& word : str::split(words, ' ', false)) {
    all.append("<").append(name).append(">").append(word).append("</").append(name).append(">");
  }
  return all;
}

/// The words of the error that ends the action, or "nothing".
inline std::string what_is_thrown(const std::function<void()>& action) {
  try {
    action();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "nothing";
}

/// The items of a range, each followed by the separator but the last.
template <typename Range>
std::string joined(const Range& range, const char* separator = ",") {
  std::ostringstream text;
  const char* before = "";
  for (const auto& item : range) {
    text << before << item;
    before = separator;
  }
  return text.str();
}

/// The names of framework definitions, separated by blanks.
inline std::string names_of(const std::vector<std::shared_ptr<FwdNode>>& nodes) {
  std::string names;
  for (const auto& node : nodes) {
    names.append(names.empty() ? "" : " ").append(node->fwd->name);
  }
  return names;
}

/// The names of a node's members, groups separated by " | ".
inline std::string members_of(const FwdNode& node) {
  std::vector<std::string> groups;
  for (const auto& group : node.groups) {
    groups.push_back(names_of(group.members));
  }
  return joined(groups, " | ");
}

/// A graph of hand-made nodes, found by name; the path of NAME is "/NAME".
class HandMadeGraph {
 public:
  HandMadeGraph() = default;
  HandMadeGraph(const HandMadeGraph&) = delete;
  HandMadeGraph& operator=(const HandMadeGraph&) = delete;
  ~HandMadeGraph() { registry.release(); }

  std::shared_ptr<FwdNode> node(const std::string& name) {
    std::shared_ptr<Fwd>& fwd = registry.by_path["/" + name];
    if (fwd == nullptr) {
      fwd = std::make_shared<Fwd>();
      fwd->name = name;
      fwd->path = "/" + name;
      fwd->node = std::make_shared<FwdNode>();
      fwd->node->fwd = fwd;
    }
    return fwd->node;
  }

  /// Gives `parent` one more group with these members.
  void group(const std::string& parent, const std::vector<std::string>& members) {
    internal::GroupAttributes<FwdNode> group;
    group.attributes["dependency_type"] = "non-blocking";
    for (const std::string& member : members) {
      group.members.push_back(node(member));
      group.members.back()->parents.push_back(node(parent));
    }
    node(parent)->groups.push_back(group);
  }

  FwdRegistry registry;
};

}  // namespace qorn::testing
