#pragma once

#include <cstddef>
#include <filesystem>
#include <random>
#include <string>

namespace qorn::benchmarks {

/// What a generated installation consists of.
struct Size {
  unsigned seed = 1;
  std::size_t definitions = 1000;  // framework definitions
  std::size_t layers = 20;         // of the include graph; each includes of the next one only
  std::size_t edges = 3000;        // of the include graph; at most what the layers allow
  std::size_t providers = 0;
  std::size_t provider_uses = 4;  // definitions that name each provider
  std::size_t rule_files = 0;
  std::size_t rule_lines = 100;  // of each rule file
  std::size_t rule_uses = 5;     // definitions that name each rule file
  std::size_t nodes = 1000;
  bool folded = false;       // node names folded on a few lines, else one a line
  std::size_t groups = 0;    // of nodes
  bool group_files = false;  // a node file for each group, else elements of the group document
  std::size_t tied = 0;      // definitions tied to groups, each to its share of them
};

/// Writes an installation root with the installed schemas, which the definitions of the first
/// layer are asked for in, and the node file ROOT/nodes. The same size gives the same files.
/// Throws std::invalid_argument for a size that can't be, std::runtime_error for a file that can't
/// be written.
void write_installation(const Size& size, const std::filesystem::path& root);

/// A rule file of that many lines: one rule with its description, literal and negated ids, and ids
/// by variables with their binds.
std::string rule_text(std::mt19937& random, const std::string& name, std::size_t lines);

}  // namespace qorn::benchmarks
