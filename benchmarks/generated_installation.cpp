#include "generated_installation.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

namespace qorn::benchmarks {
namespace {

namespace fs = std::filesystem;

using Edge = std::pair<std::size_t, std::size_t>;  // from, to: numbers of definitions

void write(const fs::path& file, const std::string& text) {
  fs::create_directories(file.parent_path());
  if (!(std::ofstream(file, std::ios::binary) << text).flush()) {
    throw std::runtime_error("can't write " + file.string());
  }
}

/// A name with its number in so many digits that names sort as their numbers do.
std::string numbered(const char* stem, std::size_t number) {
  std::string digits = std::to_string(number);
  return stem + std::string(7 - std::min<std::size_t>(digits.size(), 7), '0') + digits;
}

std::string element(const char* name, const std::string& content) {
  return "<" + std::string(name) + ">" + content + "</" + name + ">\n";
}

// The same for every standard library, which std::uniform_int_distribution isn't.
std::size_t below(std::mt19937& random, std::size_t limit) {
  return random() % limit;
}

void shuffle(std::vector<Edge>& edges, std::mt19937& random) {
  for (std::size_t i = edges.size(); i > 1; --i) {
    std::swap(edges[i - 1], edges[below(random, i)]);
  }
}

/// First of all one edge to each definition behind the first layer, so that a run meets them all,
/// then others by chance.
std::vector<Edge> make_edges(const Size& size, std::mt19937& random) {
  const std::size_t width = size.layers == 0 ? 0 : size.definitions / size.layers;
  if (width == 0 || width * size.layers != size.definitions) {
    throw std::invalid_argument("the number of definitions must be a multiple of the layers");
  }
  std::vector<Edge> edges;
  std::vector<Edge> others;
  for (std::size_t to = width; to < size.definitions; ++to) {
    const std::size_t layer_above = (to / width - 1) * width;
    const std::size_t parent = layer_above + below(random, width);
    edges.emplace_back(parent, to);
    for (std::size_t from = layer_above; from < layer_above + width; ++from) {
      if (from != parent) {
        others.emplace_back(from, to);
      }
    }
  }
  if (size.edges < edges.size() || size.edges > edges.size() + others.size()) {
    throw std::invalid_argument("expected " + std::to_string(edges.size()) + " to " +
                                std::to_string(edges.size() + others.size()) + " edges");
  }
  shuffle(others, random);
  others.resize(size.edges - edges.size());
  edges.insert(edges.end(), others.begin(), others.end());
  std::sort(edges.begin(), edges.end());
  return edges;
}

/// Adds an element to each of `uses` definitions, spread over all of them.
void name_in(std::vector<std::string>& definitions, std::size_t number, std::size_t uses,
             const std::string& text) {
  for (std::size_t use = 0; use < uses; ++use) {
    definitions[(number + use * definitions.size() / uses) % definitions.size()] += text;
  }
}

void write_definitions(const Size& size, std::mt19937& random, const fs::path& root) {
  std::vector<std::string> includes(size.definitions);
  std::vector<std::string> providers(size.definitions);
  std::vector<std::string> mods(size.definitions);
  for (const auto& [from, to] : make_edges(size, random)) {
    includes[from] += element("include", numbered("fwd/fwd", to) + ".xml");
  }
  for (std::size_t i = 0; i < size.providers; ++i) {
    name_in(providers, i, size.provider_uses, element("provider", numbered("provider", i)));
  }
  for (std::size_t i = 0; i < size.rule_files; ++i) {
    name_in(mods, i, size.rule_uses, element("mod", numbered("rules/rule", i) + ".clp"));
  }
  for (std::size_t i = 0; i < size.definitions; ++i) {
    const std::string name = numbered("fwd", i);
    const auto list = [](const char* tag, const std::string& entries) {
      return entries.empty() ? std::string() : element(tag, "\n" + entries);
    };
    write(root / "etc/fwd" / (name + ".xml"),
          "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" +
              element("configuration",
                      element("framework_definition",
                              element("fwd_desc", "What " + name + " checks on each node.") +
                                  list("providers", providers[i]) + list("kb_mods", mods[i]) +
                                  list("includes", includes[i]))));
  }
}

void write_providers(const Size& size, const fs::path& root) {
  for (std::size_t i = 0; i < size.providers; ++i) {
    const std::string name = numbered("provider", i);
    write(root / "etc/providers" / (name + ".xml"),
          element("configuration",
                  element("version", "1") + element("command", "/usr/bin/" + name + " --all") +
                      element("max_nodes", "1") + "<timeout scale=\"constant\">15</timeout>\n" +
                      element("encoding", "base64")));
  }
}

/// The node file, whole or for the nodes from `first` to `last`, which isn't among them.
std::string node_lines(std::size_t first, std::size_t last) {
  std::string text;
  for (std::size_t i = first; i < last; ++i) {
    text += numbered("node", i) + "\n";
  }
  return text;
}

std::string folded_lines(std::size_t nodes) {
  constexpr std::size_t LINES = 4;
  std::string text;
  for (std::size_t i = 0; i < LINES; ++i) {
    const std::size_t first = nodes * i / LINES;
    const std::size_t last = nodes * (i + 1) / LINES;
    text += "node[" + numbered("", first) + "-" + numbered("", last - 1) + "]\n";
  }
  return text;
}

void write_groups(const Size& size, const fs::path& root) {
  std::string text;
  for (std::size_t i = 0; i < size.groups; ++i) {
    const std::size_t first = size.nodes * i / size.groups;
    const std::size_t last = size.nodes * (i + 1) / size.groups;
    text += "<nodegroup name=\"" + numbered("group", i) + "\">";
    if (size.group_files) {
      const fs::path file = root / "groups" / numbered("group", i);
      write(file, node_lines(first, last));
      text += element("nodefiles", element("path", file));
    } else {
      std::string nodes;
      for (std::size_t node = first; node < last; ++node) {
        nodes += element("node", numbered("node", node));
      }
      text += element("nodes", nodes);
    }
    text += "</nodegroup>\n";
  }
  for (std::size_t i = 0; i < size.tied; ++i) {
    std::string names;
    for (std::size_t group = i; group < size.groups; group += size.tied) {
      names += element("group", numbered("group", group));
    }
    text += "<fwd name=\"" + numbered("fwd", i) + "\">" + element("nodegroups", names) + "</fwd>\n";
  }
  write(root / "groups.xml", element("nodegroup_config", text));
}

void write_main_document(const Size& size, const fs::path& root) {
  std::string names;
  for (std::size_t i = 0; i < size.definitions / size.layers; ++i) {
    names += element("framework_definition", numbered("fwd", i));
  }
  std::string analyzer;
  if (size.groups != 0) {
    analyzer = element("analyzer", element("node_group_configuration_file", root / "groups.xml"));
  }
  write(root / "etc/qorn.xml",
        element("configuration",
                element("plugins", element("framework_definitions", names)) + analyzer +
                    "<datastore_extensions><datastore name=\"DATA\" type=\"sqlite\" source=\"" +
                    (root / "qorn.db").string() + "\"/></datastore_extensions>\n"));
}

/// Schemas, and the small documents that every run reads, are those of the source tree.
void copy_installed_files(const fs::path& root) {
  const fs::path installed = QORN_INSTALLATION;
  for (const auto& entry : fs::recursive_directory_iterator(installed)) {
    const fs::path name = entry.path().lexically_relative(installed);
    if (name.extension() == ".xsd" || name == "etc/CLIPS_type_map.xml" ||
        name == "etc/postprocessor/table.xml" || name == "kb/data/msg_schema.xml") {
      fs::create_directories((root / name).parent_path());
      fs::copy_file(entry, root / name, fs::copy_options::overwrite_existing);
    }
  }
}

}  // namespace

std::string rule_text(std::mt19937& random, const std::string& name, std::size_t lines) {
  std::ostringstream text;
  text << "; Generated.\n(defrule " << name << "\n  \"Nodes of one subcluster agree on what "
       << name << " looks at;\n   one that differs was changed by hand.\"\n";
  for (std::size_t line = 4; line < lines; ++line) {
    const std::size_t number = below(random, 1000);
    const std::size_t kind = below(random, 200);  // in the shares of the installed rules
    if (kind < 18) {
      text << "  (assert (sign (id \"" << name << "-" << number << "\") (node_id ?node)))\n";
    } else if (kind < 20) {
      text << "  (not (sign (id \"missing-" << number << "\") (node_id ?node)))\n";
    } else if (kind < 24) {
      text << "    then (bind ?id \"" << name << "-bound-" << number << "\")\n";
    } else if (kind < 25) {
      text << "  (assert (sign (id ?id) (node_id ?node) (subcluster ?subcluster)))\n";
    } else {
      text << "          (total_kb ?total&:(> ?total (* 0.02 (middle memory total_kb ?subcluster) "
           << number << ")))\n";
    }
  }
  return text.str();
}

void write_installation(const Size& size, const std::filesystem::path& root) {
  std::mt19937 random(size.seed);
  copy_installed_files(root);
  write_definitions(size, random, root);
  write_providers(size, root);
  for (std::size_t i = 0; i < size.rule_files; ++i) {
    const std::string name = numbered("rule", i);
    write(root / "kb/rules" / (name + ".clp"), rule_text(random, name, size.rule_lines));
  }
  write(root / "nodes", size.folded ? folded_lines(size.nodes) : node_lines(0, size.nodes));
  if (size.groups != 0) {
    write_groups(size, root);
  }
  write_main_document(size, root);
}

}  // namespace qorn::benchmarks
