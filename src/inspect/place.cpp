#include "place.h"

#include <algorithm>

#include <qorn/str.h>
#include <qorn/xml.h>

namespace qorn::inspect {

Place Place::of(const xmlNode* node) {
  return {xml::char_to_str(node->doc->URL), std::max(xmlGetLineNo(node), 0L)};
}

std::string to_string(const Place& place) {
  return str::printable(place.file) + (place.line > 0 ? ":" + std::to_string(place.line) : "");
}

std::string short_path(const std::string& path, const std::string& root) {
  return path.starts_with(root + "/") ? path.substr(root.size() + 1) : path;
}

}  // namespace qorn::inspect
