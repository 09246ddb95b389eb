#include "graph.h"

#include <filesystem>
#include <iostream>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include <qorn/node.h>
#include <qorn/str.h>

#include "framework_graph.h"
#include "run_loader.h"
#include "suggestion.h"

namespace qorn::inspect {
namespace {

constexpr std::size_t LONGEST_LABEL = 80;

struct Node {
  std::string label;
  bool is_provider = false;
  bool is_missing = false;
  std::set<std::string> next;
};
using Nodes = std::map<std::string, Node>;  // by path

/// A quoted string of DOT that shows `text`: backslashes and ampersands start its escapes, and
/// bytes beyond ASCII may be no UTF-8.
std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char c : str::printable(text.substr(0, LONGEST_LABEL))) {
    if (c == '"' || c == '\\') {
      result += std::string("\\") + c;
    } else if (c == '&') {
      result += "&amp;";
    } else {
      result += c < 0 ? '?' : c;
    }
  }
  return result + (text.size() > LONGEST_LABEL ? "...\"" : "\"");
}

Nodes nodes_of(const FrameworkGraph& graph, bool with_providers) {
  Nodes nodes;
  for (const Definition* definition : graph.in_order()) {
    Node& node = nodes[definition->path];
    node.label = definition->name;
    node.is_missing = !definition->reason.empty();
    for (const Reference* include : definition->of_kind(Kind::FRAMEWORK)) {
      node.next.insert(include->path);
    }
    if (!with_providers) {
      continue;
    }
    for (const Reference* provider : definition->of_kind(Kind::PROVIDER)) {
      node.next.insert(provider->path);
      std::error_code ignored;
      nodes.insert(
          {provider->path,
           {provider->name, true, !std::filesystem::is_regular_file(provider->path, ignored), {}}});
    }
  }
  return nodes;
}

Nodes reversed(const Nodes& nodes) {
  Nodes result = nodes;
  for (auto& [path, node] : result) {
    node.next.clear();
  }
  for (const auto& [path, node] : nodes) {
    for (const std::string& next : node.next) {
      result.at(next).next.insert(path);
    }
  }
  return result;
}

/// The paths that nothing leads to; in a graph of nothing but cycles, all.
std::set<std::string> sources_of(const Nodes& nodes) {
  std::set<std::string> sources;
  for (const auto& [path, node] : nodes) {
    sources.insert(path);
  }
  for (const auto& [path, node] : nodes) {
    for (const std::string& next : node.next) {
      sources.erase(next);
    }
  }
  if (!sources.empty()) {
    return sources;
  }
  for (const auto& [path, node] : nodes) {
    sources.insert(path);
  }
  return sources;
}

using Edges = std::set<std::pair<std::string, std::string>>;

/// Adds what is reached from `level` within `depth` steps.
void follow(const Nodes& nodes, std::set<std::string> level, std::size_t depth,
            std::set<std::string>& reached, Edges& edges) {
  reached.insert(level.begin(), level.end());
  for (; depth > 0 && !level.empty(); --depth) {
    std::set<std::string> further;
    for (const std::string& path : level) {
      for (const std::string& next : nodes.at(path).next) {
        edges.emplace(path, next);
        if (reached.insert(next).second) {
          further.insert(next);
        }
      }
    }
    level = std::move(further);
  }
}

void print_node(const Node& node, std::size_t number) {
  std::cout << "  n" << number << " [label=" << quoted(node.label);
  if (node.is_provider) {
    std::cout << " shape=ellipse";
  }
  if (node.is_missing) {
    std::cout << " style=dashed color=red";
  }
  std::cout << "];\n";
}

void load_all(FrameworkGraph& graph, const std::string& root) {
  for (const std::string& path : installed_files(root)) {
    if (path.starts_with(root + "/etc/fwd/")) {
      graph.load(path);
    }
  }
}

}  // namespace

void print_graph(const GraphOptions& options) {
  const std::string root = node::get_default_path();
  FrameworkGraph graph(root);
  load_all(graph, root);
  std::string from;
  if (!options.from.empty()) {
    from = graph.reader().framework_path(options.from);
    if (graph.find(from) == nullptr) {
      const std::vector<std::string> names = graph.names();
      graph.load(from);
      if (!graph.find(from)->reason.empty()) {
        throw Trouble(from + ": " + graph.find(from)->reason + did_you_mean(options.from, names));
      }
    }
  }
  const Nodes forward = nodes_of(graph, options.providers);
  const Nodes nodes = options.reverse ? reversed(forward) : forward;
  std::set<std::string> reached;
  Edges edges;
  follow(nodes, from.empty() ? sources_of(nodes) : std::set<std::string>{from}, options.depth,
         reached, edges);
  if (from.empty() && options.depth == GraphOptions().depth) {
    for (const auto& [path, node] : nodes) {  // cycles that nothing leads to
      follow(nodes, {path}, options.depth, reached, edges);
    }
  }
  std::map<std::string, std::size_t> numbers;
  std::cout << "digraph frameworks {\n  rankdir=LR;\n  node [shape=box fontname=\"sans-serif\"];\n";
  for (const std::string& path : reached) {
    numbers.emplace(path, numbers.size());
    print_node(nodes.at(path), numbers[path]);
  }
  for (const auto& [start, end] : edges) {
    const bool back = options.reverse;
    std::cout << "  n" << numbers[back ? end : start] << " -> n" << numbers[back ? start : end]
              << ";\n";
  }
  std::cout << "}\n";
}

}  // namespace qorn::inspect
