#include <algorithm>
#include <array>
#include <string_view>

#include <wordexp.h>

#include <qorn/str.h>

namespace qorn::str {
namespace {

/// wordexp(3) recurses over its text and its results; these bounds keep both small.
constexpr std::size_t MOST_BYTES = 4096;
constexpr std::size_t MOST_WORDS = 1000;
/// Patterns in more directories than this would walk a whole file system.
constexpr std::ptrdiff_t MOST_PATTERN_COMPONENTS = 3;

constexpr std::string_view NAME_CHARACTERS =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";

/// Whether a text with that character isn't its own expansion.
bool is_special(char c) {
  static constexpr auto SPECIAL = [] {
    std::array<bool, 256> special{};
    for (const char each : std::string_view(" \t\n\\'\"$`*?[]~|&;<>(){}")) {
      special[static_cast<unsigned char>(each)] = true;
    }
    return special;
  }();
  return SPECIAL[static_cast<unsigned char>(c)];
}

/// Whether `text` holds ${NAME=…}, ${NAME:=…}, ${NAME?…} or ${NAME:?…}, which change the
/// environment or write by themselves.
bool has_effect_on_process(std::string_view text) {
  for (std::size_t at = text.find("${"); at != std::string_view::npos; at = text.find("${", at)) {
    at += 2;
    std::size_t end = std::min(text.find_first_not_of(NAME_CHARACTERS, at), text.size());
    if (end == at && end < text.size()) {
      ++end;  // a special parameter such as ${?}
      end = std::min(text.find_first_not_of(NAME_CHARACTERS, end), text.size());
    }
    if (text.substr(end, 1) == ":") {
      ++end;
    }
    if (text.substr(end, 1) == "=" || text.substr(end, 1) == "?") {
      return true;
    }
  }
  return false;
}

std::ptrdiff_t pattern_components(std::string_view text) {
  std::ptrdiff_t count = 0;
  for (std::size_t start = 0; start <= text.size();) {
    const std::size_t end = std::min(text.find('/', start), text.size());
    if (text.substr(start, end - start).find_first_of("*?[") != std::string_view::npos) {
      ++count;
    }
    start = end + 1;
  }
  return count;
}

bool may_be_expanded(std::string_view text) {
  return text.size() <= MOST_BYTES && text.find('\0') == std::string_view::npos &&
         text.find("$((") == std::string_view::npos && text.find("$[") == std::string_view::npos &&
         !has_effect_on_process(text) && pattern_components(text) <= MOST_PATTERN_COMPONENTS;
}

/// Frees what wordexp(3) allocated, on its failures too.
struct Words {
  Words() = default;
  Words(const Words&) = delete;
  Words& operator=(const Words&) = delete;
  ~Words() {
    if (filled) {
      wordfree(&result);
    }
  }

  wordexp_t result{};
  bool filled = false;
};

}  // namespace

std::string unescape_blanks(std::string_view path) {
  return replace(path, "\\ ", " ");
}

std::string wordexp(const std::string& text) {
  if (std::none_of(text.begin(), text.end(), is_special)) {
    return text;
  }
  if (!may_be_expanded(text)) {
    return unescape_blanks(text);
  }
  Words words;
  const int status = ::wordexp(text.c_str(), &words.result, WRDE_NOCMD);
  words.filled = status == 0 || status == WRDE_NOSPACE;
  if (status != 0 || words.result.we_wordc > MOST_WORDS) {
    return unescape_blanks(text);
  }
  std::string joined;
  for (std::size_t i = 0; i < words.result.we_wordc; ++i) {
    joined.append(i == 0 ? "" : " ").append(words.result.we_wordv[i]);
  }
  return joined;
}

}  // namespace qorn::str
