#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>

#include <sys/ioctl.h>
#include <unistd.h>

#include <qorn/str.h>
#include <qorn/str/lines.h>

namespace qorn::str {
namespace {

constexpr unsigned DEFAULT_WIDTH = 80;
/// A description narrower than this is unreadable; it then starts on a line of its own.
constexpr std::size_t NARROWEST = 20;

/// Puts words into lines, the first of which already holds `column` columns.
class Wrapper {
 public:
  Wrapper(std::size_t width, std::size_t indent, std::string& out, std::size_t column)
      : width_(width), indent_(indent), out_(out), column_(column), at_start_(true) {}

  void add_words(std::string_view text) {
    for (std::size_t start = 0; start < text.size();) {
      const std::size_t end = std::min(text.find(' ', start), text.size());
      if (end > start) {
        add_word(text.substr(start, end - start));
      }
      start = end + 1;
    }
  }

  void new_line() {
    out_.append(1, '\n').append(indent_, ' ');
    column_ = indent_;
    at_start_ = true;
  }

 private:
  void add_word(std::string_view word) {
    if (!at_start_ && column_ + 1 + word.size() > width_) {
      new_line();
    }
    if (!at_start_) {
      out_.push_back(' ');
      ++column_;
    }
    out_.append(word);
    column_ += word.size();
    at_start_ = false;
  }

  std::size_t width_;
  std::size_t indent_;
  std::string& out_;
  std::size_t column_;
  bool at_start_;
};

std::size_t width_or_terminal(unsigned width) {
  return width == 0 ? terminal_width() : width;
}

std::size_t leading_blanks(std::string_view line) {
  return std::min(line.find_first_not_of(' '), line.size());
}

/// A line without a description: wrapped at blanks, continuations under its first word.
void wrap_plain_line(std::string_view line, std::size_t width, std::size_t prefix,
                     std::string& out) {
  const std::size_t indent = leading_blanks(line);
  out.append(indent, ' ');
  Wrapper(width, indent + prefix, out, indent).add_words(line.substr(indent));
}

}  // namespace

std::string word_wrap(std::string_view text, unsigned width, std::string_view prefix) {
  std::string result(prefix);
  Wrapper wrapper(width_or_terminal(width), prefix.size(), result, prefix.size());
  for (Lines lines(text); lines.next();) {
    if (lines.number() > 1) {
      wrapper.new_line();
    }
    wrapper.add_words(lines.line());
  }
  if (!text.empty() && text.back() == '\n') {
    result.push_back('\n');
  }
  return result;
}

std::string column_wrap(std::string_view text, unsigned width, std::string_view prefix, char c,
                        bool align) {
  const std::size_t columns = width_or_terminal(width);
  std::size_t longest_head = 0;
  for (Lines heads(text); heads.next();) {
    longest_head = std::max(longest_head, heads.line().find(c) + 1);  // 0 for a line without c
  }
  std::string result;
  for (Lines lines(text); lines.next();) {
    const std::string_view line = lines.line();
    const std::size_t end = line.find(c);
    if (end == std::string_view::npos) {
      wrap_plain_line(line, columns, prefix.size(), result);
    } else {
      std::size_t indent = (align ? longest_head : end + 1) + prefix.size();
      result.append(line.substr(0, end + 1));
      std::size_t column = end + 1;
      if (indent + NARROWEST > columns) {
        indent = leading_blanks(line) + 4;
        result.push_back('\n');
        column = 0;
      }
      result.append(indent - column, ' ');
      Wrapper(columns, indent, result, indent).add_words(line.substr(end + 1));
    }
    result.push_back('\n');
  }
  return result;
}

unsigned terminal_width() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
    return size.ws_col;
  }
  const char* columns = std::getenv("COLUMNS");
  unsigned width = 0;
  if (columns != nullptr) {
    const char* end = columns + std::strlen(columns);
    const auto [rest, error] = std::from_chars(columns, end, width);
    if (error != std::errc() || rest != end) {
      width = 0;
    }
  }
  return width > 0 && width <= 10000 ? width : DEFAULT_WIDTH;
}

std::string format_tree(const std::vector<std::pair<std::string, std::vector<bool>>>& lines,
                        std::string_view ended, std::string_view last, std::string_view other,
                        std::string_view open) {
  std::string result;
  for (const auto& [text, levels] : lines) {
    for (std::size_t i = 0; i + 1 < levels.size(); ++i) {
      result.append(levels[i] ? ended : open);
    }
    if (!levels.empty()) {
      result.append(levels.back() ? last : other);
    }
    result.append(text).push_back('\n');
  }
  return result;
}

std::string clean_previous_formatting(std::string_view text) {
  std::string result;
  for (const char c : text) {
    const bool blank = c == '\n' || c == '\r' || c == '\t' || c == ' ';
    if (!blank) {
      result.push_back(c);
    } else if (!result.empty() && result.back() != ' ') {
      result.push_back(' ');
    }
  }
  if (!result.empty() && result.back() == ' ') {
    result.pop_back();
  }
  return result;
}

}  // namespace qorn::str
