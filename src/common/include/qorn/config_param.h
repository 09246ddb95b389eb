#pragma once

#include <string>
#include <vector>

namespace qorn {

/// One free-form parameter that the analyzer and the rule files look up by name.
struct ConfigParam {
  std::string group;  // name of the enclosing element, empty for a parameter without a group
  std::string second_text;
  std::string third_text;
  std::string name;
  std::vector<std::string> values;
};

/// Messages that the analyzer leaves out. An empty text or a zero matches anything.
struct Suppression {
  int confidence = 0;
  std::string id;  // a message id
  std::string node_id;
  int severity = 0;
};

}  // namespace qorn
