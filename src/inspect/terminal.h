#pragma once

#include <string>
#include <string_view>

namespace qorn::inspect {

/// Colours for the standard output, or none.
class Terminal {
 public:
  enum Color { RED = 31, GREEN = 32, YELLOW = 33 };

  /// `mode` is "always", "never" or "auto": on a terminal, unless NO_COLOR is set and not empty.
  explicit Terminal(std::string_view mode);

  /// `text` in that colour, or as it stands.
  std::string paint(Color color, std::string_view text) const;

 private:
  bool colors_;
};

}  // namespace qorn::inspect
