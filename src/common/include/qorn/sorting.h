#pragma once

#include <string>

namespace qorn {

/// One sort key of the analyzer's output.
struct Sorting {
  enum class FIELD : int { ID, NODE, SEVERITY };

  Sorting(bool is_ascending, FIELD sort_field) : ascending(is_ascending), field(sort_field) {}

  bool ascending;
  FIELD field;
};

namespace enums {

/// The sort field of the words "id", "node" and "severity".
/// Throws std::invalid_argument for any other word.
Sorting::FIELD convert_sorting_field(const std::string& name);

}  // namespace enums
}  // namespace qorn
