#include <map>
#include <stdexcept>

#include <qorn/sorting.h>

namespace qorn::enums {

Sorting::FIELD convert_sorting_field(const std::string& name) {
  static const std::map<std::string, Sorting::FIELD> FIELDS = {
      {"id", Sorting::FIELD::ID},
      {"node", Sorting::FIELD::NODE},
      {"severity", Sorting::FIELD::SEVERITY}};
  const auto found = FIELDS.find(name);
  if (found == FIELDS.end()) {
    throw std::invalid_argument("unknown sort field: '" + name + "'");
  }
  return found->second;
}

}  // namespace qorn::enums
