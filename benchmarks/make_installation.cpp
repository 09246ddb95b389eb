#include <exception>
#include <iostream>

#include <CLI/CLI.hpp>

#include "generated_installation.h"

int main(int argc, char** argv) {
  qorn::benchmarks::Size size;
  std::string root;
  CLI::App app("Writes an installation of any size, the same for the same arguments.");
  app.add_option("ROOT", root, "Absolute path of the installation root")->required();
  app.add_option("--seed", size.seed)->capture_default_str();
  app.add_option("--definitions", size.definitions, "Framework definitions")->capture_default_str();
  app.add_option("--layers", size.layers, "Layers of the include graph")->capture_default_str();
  app.add_option("--edges", size.edges, "Includes")->capture_default_str();
  app.add_option("--providers", size.providers)->capture_default_str();
  app.add_option("--provider-uses", size.provider_uses, "Definitions that name each provider")
      ->capture_default_str();
  app.add_option("--rule-files", size.rule_files)->capture_default_str();
  app.add_option("--rule-lines", size.rule_lines, "Lines of each rule file")->capture_default_str();
  app.add_option("--rule-uses", size.rule_uses, "Definitions that name each rule file")
      ->capture_default_str();
  app.add_option("--nodes", size.nodes)->capture_default_str();
  app.add_flag("--folded", size.folded, "Node names folded on a few lines");
  app.add_option("--groups", size.groups, "Groups of nodes")->capture_default_str();
  app.add_flag("--group-files", size.group_files, "A node file for each group");
  app.add_option("--tied", size.tied, "Definitions tied to groups")->capture_default_str();
  CLI11_PARSE(app, argc, argv);
  try {
    qorn::benchmarks::write_installation(size, std::filesystem::absolute(root));
  } catch (const std::exception& error) {
    std::cerr << "make_installation: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
