#pragma once

#include <array>
#include <cstdint>

#include <qorn/word_table.h>

/// Words and numbers that the whole suite shares.
namespace qorn {

inline constexpr const char* DEFAULT_SUBCLUSTER = "default-subcluster";
inline constexpr const char* PROVIDER_ERROR_CODE = "provider-error-code";

/// The value that stands for "all permutations of the node list".
inline constexpr std::uint32_t ALL_PERMUTATIONS = 0xFFFFFFFFU;

/// Bits of qorn::Config::operations.
namespace operation {
inline constexpr std::uint64_t COLLECT = 1;
inline constexpr std::uint64_t ANALYZE = 2;
/// Always set together with ANALYZE.
inline constexpr std::uint64_t ANALYZE_ENGINE = 4;
}  // namespace operation

/// Bits of qorn::Config::option_flags.
namespace option_flag {
/// A framework definition was named, on the command line or in the main document.
inline constexpr std::uint64_t FWD_GIVEN = 1;
inline constexpr std::uint64_t VERSION = 2;
inline constexpr std::uint64_t COPYRIGHT = 4;
inline constexpr std::uint64_t USAGE = 8;
inline constexpr std::uint64_t FWD_DESCRIPTION = 16;
/// A providers element named a custom provider document; a run may have one.
inline constexpr std::uint64_t CUSTOM_PROVIDERS = 32;
}  // namespace option_flag

inline constexpr std::array<const char*, 9> NODE_ROLES = {
    "boot",         "compute", "enhanced",        "external", "head",
    "job_schedule", "login",   "network_address", "storage"};

/// How the node list of a provider that runs on several nodes is ordered.
enum class nodelist_method_t : int { NONE, ROTATE_RIGHT, ROTATE_LEFT, ROUND_ROBIN, RANDOM };

/// How a time limit grows with the number of nodes.
enum class ScaleType : int { CONSTANT, LINEAR, SQUARED, LOGARITHMIC };

/// How the output of a provider is stored.
enum class Encoding : int { NONE, BASE64, RAW };

enum class Architecture : int { X86_64 = 1, ANY = 2 };

inline constexpr Word<Architecture> ARCHITECTURES[] = {{"x86_64", Architecture::X86_64},
                                                       {"X86_64", Architecture::X86_64},
                                                       {"qorn64", Architecture::X86_64},
                                                       {"any", Architecture::ANY},
                                                       {"ANY", Architecture::ANY}};

/// Whether the nodes of one run of a provider must be of one architecture.
enum class ClusterType : int { UNIFORM = 1, ANY = 2 };

inline constexpr Word<ClusterType> CLUSTER_TYPES[] = {{"uniform", ClusterType::UNIFORM},
                                                      {"UNIFORM", ClusterType::UNIFORM},
                                                      {"any", ClusterType::ANY},
                                                      {"ANY", ClusterType::ANY}};

/// A severity's number in rules documents and the range of severities that it covers.
struct Severity {
  int identifier;
  int upper_bound;
  int lower_bound;
};

extern const WordTable<nodelist_method_t> NODELIST_METHODS;
extern const WordTable<Severity> SEVERITIES;
extern const WordTable<Encoding> ENCODINGS;
/// Columns of the database that the collect engine writes.
extern const WordTable<int> DATABASE_COLUMNS;
extern const WordTable<ScaleType> SCALE_TYPES;
/// Log level words and their syslog priorities: the smaller the number, the more severe.
extern const WordTable<int> LOG_LEVELS;

}  // namespace qorn
