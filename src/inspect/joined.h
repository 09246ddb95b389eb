#pragma once

#include <string>

namespace qorn::inspect {

/// The texts of a range, ", " between them.
template <typename Texts>
std::string joined(const Texts& texts) {
  std::string line;
  for (const std::string& text : texts) {
    line.append(line.empty() ? "" : ", ").append(text);
  }
  return line;
}

}  // namespace qorn::inspect
