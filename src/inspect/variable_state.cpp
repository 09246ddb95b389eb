#include "variable_state.h"

#include <cstdlib>

namespace qorn::inspect {

VariableState::VariableState(const char* name, const char* value) : name_(name) {
  const char* before = std::getenv(name);
  if (before != nullptr) {
    before_ = before;
  }
  value == nullptr ? unsetenv(name) : setenv(name, value, 1);
}

VariableState::~VariableState() {
  before_ ? setenv(name_, before_->c_str(), 1) : unsetenv(name_);
}

}  // namespace qorn::inspect
