#include <algorithm>
#include <cctype>
#include <charconv>
#include <limits>

#include <qorn/constants.h>
#include <qorn/log/error_log.h>
#include <qorn/str.h>

namespace qorn::str {
namespace {

constexpr std::string_view WHITE_SPACE = " \t\n\v\f\r";

std::string map_ascii(std::string_view text, int (*convert)(int)) {
  std::string result(text);
  for (char& c : result) {
    if (static_cast<unsigned char>(c) < 0x80) {
      c = static_cast<char>(convert(c));
    }
  }
  return result;
}

}  // namespace

std::string strip(std::string_view text, std::string_view chars) {
  const std::string_view unwanted = chars.empty() ? WHITE_SPACE : chars;
  const std::size_t first = text.find_first_not_of(unwanted);
  if (first == std::string_view::npos) {
    return {};
  }
  return std::string(text.substr(first, text.find_last_not_of(unwanted) - first + 1));
}

std::string stripws(std::string_view text) {
  return strip(text, "");
}

std::string squeeze(std::string_view text, char c) {
  std::string result;
  result.reserve(text.size());
  for (const char each : text) {
    if (each != c || result.empty() || result.back() != c) {
      result.push_back(each);
    }
  }
  return result;
}

std::string replace(std::string_view text, std::string_view from, std::string_view to) {
  if (from.empty()) {
    return std::string(text);
  }
  std::string result;
  std::size_t start = 0;
  for (std::size_t found = text.find(from); found != std::string_view::npos;
       found = text.find(from, start)) {
    result.append(text, start, found - start).append(to);
    start = found + from.size();
  }
  return result.append(text, start);
}

std::vector<std::string> split(std::string_view text, char delimiter, bool keep_empty) {
  std::vector<std::string> pieces;
  std::size_t start = 0;
  while (true) {
    const std::size_t end = std::min(text.find(delimiter, start), text.size());
    if (keep_empty || end > start) {
      pieces.emplace_back(text.substr(start, end - start));
    }
    if (end == text.size()) {
      return pieces;
    }
    start = end + 1;
  }
}

std::string upper(std::string_view text) {
  return map_ascii(text, std::toupper);
}

std::string lower(std::string_view text) {
  return map_ascii(text, std::tolower);
}

std::uint32_t get_num_permutations_from_string(const std::string& text, std::uint32_t current,
                                               const std::string& source) {
  if (lower(text) == "all") {
    return ALL_PERMUTATIONS;
  }
  std::string_view digits = text;
  digits.remove_prefix(std::min(digits.find_first_not_of(WHITE_SPACE), digits.size()));
  if (digits.substr(0, 1) == "+") {
    digits.remove_prefix(1);
  }
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error != std::errc() || end != digits.data() + digits.size()) {
    log::ErrorLog(log::level::WARNING).stream()
        << "Invalid number of node list permutations '" << printable(text) << "' in "
        << printable(source) << ", using " << current << " instead.";
    return current;
  }
  return number == 0 ? ALL_PERMUTATIONS : number;
}

namespace {

/// The length in bytes of the UTF-8 sequence of several bytes at the start of `text`; 0 for none.
std::size_t sequence_length(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t length = lead < 0xC2 || lead > 0xF4 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  const std::string_view rest = text.substr(1, std::max<std::size_t>(length, 1) - 1);
  const bool is_whole =
      rest.size() + 1 == length && std::all_of(rest.begin(), rest.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0U) == 0x80;
      });
  return is_whole ? length : 0;
}

}  // namespace

std::string printable(std::string_view text, std::string_view kept) {
  constexpr std::string_view HEX = "0123456789abcdef";
  std::string result;
  result.reserve(text.size());
  const auto escape = [&](unsigned char byte) {
    result.append("\\x").append(1, HEX[byte >> 4U]).append(1, HEX[byte & 0xFU]);
  };
  while (!text.empty()) {
    const std::size_t length = std::max<std::size_t>(sequence_length(text), 1);
    const auto byte = static_cast<unsigned char>(text.front());
    const bool is_control = length == 1
                                ? byte < 0x20 || (byte >= 0x7F && byte < 0xA0)
                                : byte == 0xC2 && static_cast<unsigned char>(text[1]) < 0xA0;
    if (is_control && kept.find(text.front()) == std::string_view::npos) {
      std::for_each_n(text.begin(), length, escape);
    } else {
      result.append(text, 0, length);
    }
    text.remove_prefix(length);
  }
  return result;
}

}  // namespace qorn::str
