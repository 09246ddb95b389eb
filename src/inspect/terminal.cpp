#include "terminal.h"

#include <cstdlib>

#include <unistd.h>

namespace qorn::inspect {
namespace {

bool wants_color() {
  const char* no_color = std::getenv("NO_COLOR");
  return (no_color == nullptr || *no_color == '\0') && isatty(STDOUT_FILENO) == 1;
}

}  // namespace

Terminal::Terminal(std::string_view mode)
    : colors_(mode == "always" || (mode == "auto" && wants_color())) {
}

std::string Terminal::paint(Color color, std::string_view text) const {
  if (!colors_) {
    return std::string(text);
  }
  return "\x1b[" + std::to_string(color) + "m" + std::string(text) + "\x1b[0m";
}

}  // namespace qorn::inspect
