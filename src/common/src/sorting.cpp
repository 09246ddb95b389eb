#include <stdexcept>

#include <qorn/sorting.h>

namespace qorn::enums {

Sorting::FIELD convert_sorting_field(const std::string& name) {
  auto field = Sorting::FIELD::ID;
  if (!look_up(SORT_FIELDS, name, field)) {
    throw std::invalid_argument("unknown sort field: '" + name + "'");
  }
  return field;
}

}  // namespace qorn::enums
