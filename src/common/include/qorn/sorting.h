#pragma once

#include <string>

#include <qorn/word_table.h>

namespace qorn {

/// One sort key of the analyzer's output.
struct Sorting {
  enum class FIELD : int { ID, NODE, SEVERITY };

  Sorting(bool is_ascending, FIELD sort_field) : ascending(is_ascending), field(sort_field) {}

  bool ascending;
  FIELD field;
};

inline constexpr Word<Sorting::FIELD> SORT_FIELDS[] = {{"id", Sorting::FIELD::ID},
                                                       {"node", Sorting::FIELD::NODE},
                                                       {"severity", Sorting::FIELD::SEVERITY}};

namespace enums {

/// The sort field of a word. Throws std::invalid_argument for a word that stands for none.
Sorting::FIELD convert_sorting_field(const std::string& name);

}  // namespace enums
}  // namespace qorn
