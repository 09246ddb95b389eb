#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

/// Tables of the words that documents and command lines have for values. All are constant and
/// case-sensitive: a word outside a table is not found, and looking it up never adds it.
namespace qorn {

template <typename Value>
using WordTable = std::map<std::string, Value, std::less<>>;

/// A row of a table in which a value has several words; the first of them is the one to write.
template <typename Value>
struct Word {
  const char* word;
  Value value;
};

/// Stores what `word` stands for; false, leaving `value` alone, when the table has no such word.
template <typename Table, typename Value>
bool look_up(const Table& table, std::string_view word, Value& value) {
  for (const auto& [each, meaning] : table) {
    if (each == word) {
      value = meaning;
      return true;
    }
  }
  return false;
}

/// The word that is written for an enumeration's value; the number when the table has none.
template <typename Table, typename Value>
std::string word_of(const Table& table, Value value) {
  for (const auto& [word, meaning] : table) {
    if (meaning == value) {
      return word;
    }
  }
  return std::to_string(static_cast<int>(value));
}

}  // namespace qorn
