#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace qorn::inspect {

inline constexpr std::size_t ANY_DEPTH = static_cast<std::size_t>(-1);

/// What a command line asks, beside its command: what options and arguments fill, some of them for
/// each command.
struct Question {
  std::vector<std::string> roots;
  std::string color = "auto";
  std::string format = "text";
  std::vector<std::string> documents;  // to be told about; empty: the whole installation
  std::string node_file;
  std::string node_group_file;
  bool strict = false;
  bool verbose = false;
  bool origin = false;
  std::string node;
  std::optional<std::string> framework;
  std::string list;
  std::vector<std::string> records;
  std::string from;  // a framework definition, as -F takes it; empty: all that nothing includes
  std::size_t depth = ANY_DEPTH;
  bool reverse = false;
  bool providers = false;
  bool fold = false;
  bool expand = false;
  bool count = false;
  std::vector<std::string> expressions;
  std::vector<std::string> run_arguments;  // a front-end's, behind the first "--"

  bool wants_json() const { return format == "json"; }
};

}  // namespace qorn::inspect
