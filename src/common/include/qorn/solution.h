#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace qorn {

/// What the knowledge base expects of one named item.
struct Solution {
  Solution() = default;
  Solution(const Solution&) = default;
  Solution(Solution&&) = default;
  Solution& operator=(const Solution&) = default;
  Solution& operator=(Solution&&) = default;
  virtual ~Solution() = default;

  std::string name;
  /// "expected-" + element, then attribute name or "default", then (attribute value or
  /// "default", element text) in document order.
  std::map<std::string, std::map<std::string, std::vector<std::pair<std::string, std::string>>>>
      expected;
};

}  // namespace qorn
