#pragma once

#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace qorn::templates {

/// One variant of a report: what it shows, and the constraints under which it is chosen.
struct Reports_kb_t {
  std::vector<std::string> columns;
  std::string message_id;
  /// Attribute name, and the attribute's value with two texts that the engines may fill.
  std::vector<std::pair<std::string, std::tuple<std::string, std::string, std::string>>>
      constraints;
};

struct Reports_t {
  std::vector<Reports_kb_t> variants;
};

}  // namespace qorn::templates
