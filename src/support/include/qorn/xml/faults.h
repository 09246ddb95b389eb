#pragma once

#include <string>
#include <vector>

namespace qorn::xml {

/// One fault of a document, of its schema, or of reading either.
struct Fault {
  enum class Severity : int { WARNING, ERROR };

  std::string file{};
  long line = 0;    // 0: the fault has no line
  long column = 0;  // 0: unknown
  Severity severity = Severity::ERROR;
  std::string text{};
};

/// "FILE:LINE: text", or "FILE: text" for a fault without a line; control bytes are escaped.
std::string to_string(const Fault& fault);

/// Logs each fault as one line, errors at level 3 and warnings at level 4; what stands among
/// `faults` twice is logged once.
void report(const std::vector<Fault>& faults);

}  // namespace qorn::xml
