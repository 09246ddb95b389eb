#pragma once

#include <optional>
#include <string>

namespace qorn::inspect {

/// While one lives, an environment variable has another state.
class VariableState {
 public:
  /// Null unsets the variable. `name` must outlive the object.
  VariableState(const char* name, const char* value);
  VariableState(const VariableState&) = delete;
  VariableState& operator=(const VariableState&) = delete;
  ~VariableState();

 private:
  const char* name_;
  std::optional<std::string> before_;
};

}  // namespace qorn::inspect
