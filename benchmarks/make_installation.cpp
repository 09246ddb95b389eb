#include <exception>
#include <iostream>

#include <CLI/CLI.hpp>

#include "generated_installation.h"

int main(int argc, char** argv) {
  qorn::benchmarks::Size size;
  std::string root;
  CLI::App app("Writes an installation of any size, the same for the same arguments.");
  app.add_option("ROOT", root, "Where it is written")->required();
  const auto add = [&](const char* name, auto& value, const char* meaning) {
    app.add_option(name, value, meaning)->capture_default_str();
  };
  add("--seed", size.seed, "Another seed gives other edges and rules");
  add("--definitions", size.definitions, "Framework definitions");
  add("--layers", size.layers, "Layers of the include graph");
  add("--edges", size.edges, "Includes");
  add("--providers", size.providers, "Provider documents");
  add("--provider-uses", size.provider_uses, "Definitions that name each provider");
  add("--rule-files", size.rule_files, "Rule files");
  add("--rule-lines", size.rule_lines, "Lines of each rule file");
  add("--rule-uses", size.rule_uses, "Definitions that name each rule file");
  add("--nodes", size.nodes, "Nodes");
  add("--groups", size.groups, "Groups of nodes");
  add("--tied", size.tied, "Definitions tied to groups");
  app.add_flag("--folded", size.folded, "Node names folded on a few lines");
  app.add_flag("--group-files", size.group_files, "A node file for each group");
  CLI11_PARSE(app, argc, argv);
  try {
    qorn::benchmarks::write_installation(size, std::filesystem::absolute(root));
  } catch (const std::exception& error) {
    std::cerr << "make_installation: " << error.what() << '\n';
    return 1;
  }
}
