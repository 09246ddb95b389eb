#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace qorn::inspect {

/// While one lives, an environment variable has another state.
class VariableState {
 public:
  /// Null unsets the variable. `name` must outlive the object.
  VariableState(const char* name, const char* value) : name_(name) {
    if (const char* before = std::getenv(name); before != nullptr) {
      before_ = before;
    }
    value == nullptr ? unsetenv(name) : setenv(name, value, 1);
  }
  VariableState(const VariableState&) = delete;
  VariableState& operator=(const VariableState&) = delete;
  ~VariableState() { before_ ? setenv(name_, before_->c_str(), 1) : unsetenv(name_); }

 private:
  const char* name_;
  std::optional<std::string> before_;
};

}  // namespace qorn::inspect
