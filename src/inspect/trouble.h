#pragma once

#include <stdexcept>

namespace qorn::inspect {

/// Ends the program with status 2, after its text, if it has one, on the standard error stream.
struct Trouble : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace qorn::inspect
