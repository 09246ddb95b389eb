#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace qorn::str {

/// Goes through the lines of a text as std::getline does: without the line feed, and with a last
/// line that has none.
///
///   for (str::Lines lines(text); lines.next();) { ... lines.line() ... }
class Lines {
 public:
  /// The text must stay where it is.
  explicit Lines(std::string_view text) : rest_(text) {}

  /// Goes to the next line, at first to the first one; false at the end.
  bool next() {
    if (rest_.empty()) {
      return false;
    }
    const std::size_t end = std::min(rest_.find('\n'), rest_.size());
    line_ = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    ++number_;
    return true;
  }

  /// The present line.
  std::string_view line() const { return line_; }
  /// Its number, from 1; 0 ahead of the first.
  std::size_t number() const { return number_; }

 private:
  std::string_view rest_;
  std::string_view line_;
  std::size_t number_ = 0;
};

}  // namespace qorn::str
