#include <qorn/place.h>
#include <qorn/str.h>

namespace qorn {

std::string to_string(const Place& place) {
  return str::printable(place.file) + (place.line > 0 ? ":" + std::to_string(place.line) : "");
}

}  // namespace qorn
