#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <string>

/// Words and numbers that the whole suite shares. Every table is constant and case-sensitive:
/// a word outside a table is not found, and looking it up never adds it.
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
    "boot", "compute", "enhanced", "external", "head", "job_schedule", "login", "network_address",
    "storage"};

/// How the node list of a provider that runs on several nodes is ordered.
enum class nodelist_method_t : int { NONE, ROTATE_RIGHT, ROTATE_LEFT, ROUND_ROBIN, RANDOM };

/// How a time limit grows with the number of nodes.
enum class ScaleType : int { CONSTANT, LINEAR, SQUARED, LOGARITHMIC };

/// How the output of a provider is stored.
enum class Encoding : int { NONE, BASE64, RAW };

enum class Architecture : int { X86_64 = 1, ANY = 2 };

/// Whether the nodes of one run of a provider must be of one architecture.
enum class ClusterType : int { UNIFORM = 1, ANY = 2 };

/// A severity's number in rules documents and the range of severities that it covers.
struct Severity {
  int identifier;
  int upper_bound;
  int lower_bound;
};

template <typename Value>
using WordTable = std::map<std::string, Value, std::less<>>;

inline const WordTable<nodelist_method_t> NODELIST_METHODS = {
    {"none", nodelist_method_t::NONE},
    {"rotate_right", nodelist_method_t::ROTATE_RIGHT},
    {"rotate_left", nodelist_method_t::ROTATE_LEFT},
    {"round_robin", nodelist_method_t::ROUND_ROBIN},
    {"random", nodelist_method_t::RANDOM}};

inline const WordTable<Severity> SEVERITIES = {
    {"informational", {0, 24, 0}}, {"warning", {4, 74, 25}}, {"critical", {8, 100, 75}}};

inline const WordTable<Encoding> ENCODINGS = {
    {"none", Encoding::NONE}, {"base64", Encoding::BASE64}, {"raw", Encoding::RAW}};

/// Columns of the database that the collect engine writes.
inline const WordTable<int> DATABASE_COLUMNS = {
    {"rowid", 0},      {"Provider", 1},  {"Hostname", 2},  {"num_nodes", 3},
    {"node_names", 4}, {"Exit_status", 5}, {"Timestamp", 6}, {"Duration", 7},
    {"Encoding", 8},   {"STDOUT", 9},    {"STDERR", 10},   {"OptionID", 11},
    {"version", 12},   {"Username", 13}, {"Unique_timestamp", 14}};

inline const WordTable<ScaleType> SCALE_TYPES = {{"constant", ScaleType::CONSTANT},
                                                 {"linear", ScaleType::LINEAR},
                                                 {"squared", ScaleType::SQUARED},
                                                 {"logarithmic", ScaleType::LOGARITHMIC}};

/// Log level words and their syslog priorities: the smaller the number, the more severe.
inline const WordTable<int> LOG_LEVELS = {{"debug", 7},   {"info", 6},  {"notice", 5},
                                          {"warning", 4}, {"error", 3}, {"critical", 2},
                                          {"alert", 1}};

}  // namespace qorn
