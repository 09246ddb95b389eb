#pragma once

#include <array>
#include <string>

#include <qorn/constants.h>
#include <qorn/sorting.h>

namespace qorn::frontend {

/// The word that stands for `value` in a document; the number when no word does.
template <typename Value>
std::string word_of(const WordTable<Value>& table, Value value) {
  for (const auto& [word, each] : table) {
    if (each == value) {
      return word;
    }
  }
  return std::to_string(static_cast<int>(value));
}

/// The word at the place `value`; the number when there is none.
template <std::size_t SIZE, typename Value>
std::string word_of(const std::array<const char*, SIZE>& words, Value value) {
  const auto place = static_cast<std::size_t>(value);
  return place < SIZE ? words[place] : std::to_string(static_cast<int>(value));
}

inline constexpr std::array<const char*, 3> SORT_FIELD_WORDS = {"id", "node", "severity"};
inline constexpr std::array<const char*, 5> DATA_TYPE_WORDS = {"LONG", "DOUBLE", "STRING", "SYMBOL",
                                                               "MULTI"};
inline constexpr std::array<const char*, 3> CONTROL_WORDS = {"or", "and", "not"};
inline const WordTable<Architecture> ARCHITECTURE_WORDS = {{"x86_64", Architecture::X86_64},
                                                           {"any", Architecture::ANY}};
inline const WordTable<ClusterType> CLUSTER_WORDS = {{"uniform", ClusterType::UNIFORM},
                                                     {"any", ClusterType::ANY}};

}  // namespace qorn::frontend
