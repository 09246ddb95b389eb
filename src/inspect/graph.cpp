#include "graph.h"

#include <cstdlib>
#include <iostream>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include <qorn/node.h>
#include <qorn/str.h>

#include "framework_graph.h"
#include "installation.h"
#include "suggestion.h"
#include "trouble.h"

namespace qorn::inspect {
namespace {

constexpr std::size_t LONGEST_LABEL = 80;

struct Vertex {
  std::string label;
  bool is_provider = false;
  bool is_missing = false;
  std::set<std::string> next;
};
using Vertices = std::map<std::string, Vertex>;  // by path

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

Vertices vertices_of(const FrameworkGraph& graph, bool with_providers) {
  Vertices vertices;
  for (const Definition* definition : graph.in_order()) {
    Vertex& vertex = vertices[definition->path];
    vertex.label = definition->name;
    vertex.is_missing = !definition->reason.empty();
    for (const Reference* include : definition->of_kind(DocumentKind::FRAMEWORK)) {
      vertex.next.insert(include->path);
    }
    if (!with_providers) {
      continue;
    }
    for (const Reference* provider : definition->of_kind(DocumentKind::PROVIDER)) {
      vertex.next.insert(provider->path);
      vertices.insert({provider->path, {provider->name, true, !is_file(provider->path), {}}});
    }
  }
  return vertices;
}

Vertices reversed(const Vertices& vertices) {
  Vertices result = vertices;
  for (auto& [path, vertex] : result) {
    vertex.next.clear();
  }
  for (const auto& [path, vertex] : vertices) {
    for (const std::string& next : vertex.next) {
      result.at(next).next.insert(path);
    }
  }
  return result;
}

/// The paths that nothing leads to; in a graph of nothing but cycles, all.
std::set<std::string> starts_of(const Vertices& vertices) {
  std::set<std::string> all;
  for (const auto& [path, vertex] : vertices) {
    all.insert(path);
  }
  std::set<std::string> starts = all;
  for (const auto& [path, vertex] : vertices) {
    for (const std::string& next : vertex.next) {
      starts.erase(next);
    }
  }
  return starts.empty() ? all : starts;
}

using Edges = std::set<std::pair<std::string, std::string>>;

/// Adds what is reached from `level` within `depth` steps.
void follow(const Vertices& vertices, std::set<std::string> level, std::size_t depth,
            std::set<std::string>& reached, Edges& edges) {
  reached.insert(level.begin(), level.end());
  for (; depth > 0 && !level.empty(); --depth) {
    std::set<std::string> further;
    for (const std::string& path : level) {
      for (const std::string& next : vertices.at(path).next) {
        edges.emplace(path, next);
        if (reached.insert(next).second) {
          further.insert(next);
        }
      }
    }
    level = std::move(further);
  }
}

void print_vertex(const Vertex& vertex, std::size_t number) {
  std::cout << "  n" << number << " [label=" << quoted(vertex.label);
  if (vertex.is_provider) {
    std::cout << " shape=ellipse";
  }
  if (vertex.is_missing) {
    std::cout << " style=dashed color=red";
  }
  std::cout << "];\n";
}

void load_all(FrameworkGraph& graph, const std::string& root) {
  for (const std::string& path : installed_files(root)) {
    if (path.starts_with(installed_place(DocumentKind::FRAMEWORK, root))) {
      graph.load(path);
    }
  }
}

}  // namespace

int print_graph(const Question& question) {
  const std::string root = node::get_default_path();
  FrameworkGraph graph(root);
  load_all(graph, root);
  std::string from;
  if (!question.from.empty()) {
    from = framework_path(question.from, root);
    if (graph.find(from) == nullptr) {
      const std::vector<std::string> names = graph.names();
      graph.load(from);
      if (!graph.find(from)->reason.empty()) {
        throw Trouble(from + ": " + graph.find(from)->reason + did_you_mean(question.from, names));
      }
    }
  }
  const Vertices forward = vertices_of(graph, question.providers);
  const Vertices vertices = question.reverse ? reversed(forward) : forward;
  std::set<std::string> reached;
  Edges edges;
  follow(vertices, from.empty() ? starts_of(vertices) : std::set<std::string>{from}, question.depth,
         reached, edges);
  if (from.empty() && question.depth == ANY_DEPTH) {
    for (const auto& [path, vertex] : vertices) {  // cycles that nothing leads to
      follow(vertices, {path}, question.depth, reached, edges);
    }
  }
  std::map<std::string, std::size_t> numbers;
  std::cout << "digraph frameworks {\n  rankdir=LR;\n  node [shape=box fontname=\"sans-serif\"];\n";
  for (const std::string& path : reached) {
    numbers.emplace(path, numbers.size());
    print_vertex(vertices.at(path), numbers[path]);
  }
  for (const auto& [start, end] : edges) {
    const bool back = question.reverse;
    std::cout << "  n" << numbers[back ? end : start] << " -> n" << numbers[back ? start : end]
              << ";\n";
  }
  std::cout << "}\n";
  return EXIT_SUCCESS;
}

}  // namespace qorn::inspect
