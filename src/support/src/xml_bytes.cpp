#include "xml_bytes.h"

#include <algorithm>
#include <cstddef>

namespace qorn::xml {
namespace {

constexpr std::size_t MOST_ATTRIBUTES = 256;

long line_at(std::string_view content, std::size_t place) {
  return 1 +
         std::count(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(place), '\n');
}

/// The number of attributes in what stands from a "<" up to the next one: of quotes that open
/// behind a "=". The zeros of UTF-16 are passed over.
std::size_t count_attributes(std::string_view text) {
  const std::size_t name = text.find_first_not_of('\0', 1);
  if (name == std::string_view::npos || text[name] == '!' || text[name] == '?') {
    return 0;
  }
  std::size_t count = 0;
  char quote = '\0';
  char previous = '\0';
  for (const char c : text.substr(name)) {
    if (c == '\0' || c == ' ' || c == '\t' || c == '\r' || c == '\n') {
      continue;
    }
    if (quote != '\0') {
      quote = c == quote ? '\0' : quote;
    } else if (c == '"' || c == '\'') {
      quote = c;
      count += previous == '=' ? 1 : 0;
    } else if (c == '>') {
      break;
    }
    previous = c;
  }
  return count;
}

/// Whether so many attributes could be there at all; most documents have fewer together.
bool has_many_attributes(std::string_view content) {
  std::size_t count = 0;
  for (std::size_t place = content.find('='); place != std::string_view::npos;
       place = content.find('=', place + 1)) {
    if (++count > MOST_ATTRIBUTES) {
      return true;
    }
  }
  return false;
}

}  // namespace

long crowded_element(std::string_view content) {
  if (!has_many_attributes(content)) {
    return 0;
  }
  for (std::size_t start = content.find('<'); start != std::string_view::npos;) {
    const std::size_t next = content.find('<', start + 1);
    const std::string_view text = content.substr(start, next - start);
    if (text.size() > 4 * MOST_ATTRIBUTES && count_attributes(text) > MOST_ATTRIBUTES) {
      return line_at(content, start);
    }
    start = next;
  }
  return 0;
}

long line_of_nul(std::string_view content) {
  const std::size_t place = content.find('\0');
  return place == std::string_view::npos || place < 4 ? 0 : line_at(content, place);
}

}  // namespace qorn::xml
