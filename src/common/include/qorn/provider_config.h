#pragma once

#include <array>
#include <cstdint>
#include <set>
#include <string>

#include <qorn/constants.h>

namespace qorn {

struct Fwd;

/// One provider: a small program that collects data, and how it is to be run.
struct provider_config {
  std::string name;         // from the document's file name; at most 64 characters
  std::string config_file;  // full path of the document
  std::string config_dir;
  std::string aux_path;
  std::string engine_text_a;  // engine_…: the engine's, left alone here
  std::string command;        // at most 256 characters
  std::string engine_text_b;
  std::array<std::uint64_t, 2> engine_words{};
  std::uint16_t max_nodes = 1;  // nodes of one run
  std::uint16_t min_nodes = 1;
  std::string engine_text_c;
  Encoding encoding = Encoding::NONE;
  std::int64_t timeout = 60;  // seconds; 0 or less means no limit
  Architecture architecture = Architecture::ANY;
  ClusterType cluster = ClusterType::ANY;
  ScaleType timeout_scale = ScaleType::CONSTANT;
  std::int32_t version = 1;
  nodelist_method_t nodelist_method = nodelist_method_t::NONE;
  std::uint32_t permutations = 1;  // ALL_PERMUTATIONS means all
  std::set<std::string> roles;     // of the nodes on which the provider runs
  std::set<int> success_codes{0};  // exit codes
  /// The framework definitions that name the provider; they live as long as the registry.
  std::set<const Fwd*> fwds;
};

}  // namespace qorn
