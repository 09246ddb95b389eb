#pragma once

#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

namespace qorn::inspect {

/// While one lives, what the library writes to std::cout and std::cerr is kept instead of
/// written. It puts the log level back that was in force.
class Capture {
 public:
  Capture();
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;
  ~Capture();

  /// The lines on std::cerr so far.
  std::vector<std::string> error_lines() const;
  /// Everything so far, for the standard error stream.
  std::string text() const { return output_.str() + errors_.str(); }

 private:
  std::ostringstream output_;
  std::ostringstream errors_;
  std::streambuf* cout_;
  std::streambuf* cerr_;
  int log_level_;
};

}  // namespace qorn::inspect
