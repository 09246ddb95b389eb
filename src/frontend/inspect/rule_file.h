#pragma once

#include <string>
#include <vector>

namespace qorn::inspect {

/// What a rule file says line by line, by the patterns that a run uses.
struct RuleFile {
  struct Load {
    long line;
    std::string name;  // as a run reads it
    bool followed;     // of the form (batch* NAME)
  };
  struct Variable {
    long line;
    std::string name;  // with its question mark
  };

  std::vector<Load> loads;
  /// Variables in id slots that no line up to there binds to a text: no id is noted for them.
  std::vector<Variable> unbound;
};

RuleFile read_rule_file(const std::string& path);

}  // namespace qorn::inspect
