#include "ecma_pattern.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <regex>
#include <system_error>
#include <utility>
#include <vector>

namespace qorn::preproc::clips_parser {
namespace {

constexpr int MOST_REPETITIONS = 1000;  // RE2's own limit
constexpr int MOST_QUANTIFIERS = 1000;  // RE2's limit on nesting
constexpr std::int64_t MEMORY = 64 << 20;  // bytes, for a pattern and its automata
constexpr const char* NO_BYTE = "[^\\x00-\\x{10FFFF}]";
constexpr const char* DIGITS = "0123456789";

RE2::Options options() {
  RE2::Options result(RE2::Latin1);
  result.set_log_errors(false);
  result.set_max_mem(MEMORY);
  return result;
}

std::string literal(char c) {
  const auto byte = static_cast<unsigned char>(c);
  if (std::isalnum(byte) != 0 && byte < 0x80) {
    return std::string(1, c);
  }
  constexpr std::string_view HEX = "0123456789abcdef";
  return std::string("\\x").append(1, HEX[byte >> 4U]).append(1, HEX[byte & 0xFU]);
}

/// The class of all bytes that `atom` matches. The standard library says which: bracket
/// expressions and rare escapes have too many rules of their own to tell them again.
std::string byte_class(const std::string& atom) {
  const std::regex regex(atom);
  const auto is_matched = [&](int byte) {
    return std::regex_match(std::string(1, static_cast<char>(byte)), regex);
  };
  std::string result = "[";
  for (int byte = 0; byte < 256; ++byte) {
    if (is_matched(byte)) {
      result += literal(static_cast<char>(byte));
    }
  }
  return result == "[" ? NO_BYTE : result + "]";
}

}  // namespace

/// Rewrites a pattern for RE2, from left to right.
class EcmaPattern::Translator {
 public:
  static Translated translate(std::string_view pattern) {
    Translator translator(pattern);
    while (translator.next_ < pattern.size()) {
      translator.translate_next();
    }
    if (!translator.groups_.empty()) {
      invalid();
    }
    return {std::move(translator.out_), translator.has_alternatives_};
  }

 private:
  static constexpr std::size_t NO_ATOM = std::string::npos;

  explicit Translator(std::string_view pattern) : in_(pattern) {}

  [[noreturn]] static void invalid() {
    throw std::regex_error(std::regex_constants::error_complexity);
  }

  void translate_next() {
    switch (const char c = in_[next_]) {
      case '|':
        has_alternatives_ = has_alternatives_ || groups_.empty();
        return add_assertion("|", 1);
      case '^':
      case '$':
        return add_assertion(std::string(1, c), 1);
      case '(':
        groups_.push_back(out_.size());
        return add_assertion("(?:", 1);
      case ')':
        return close_group();
      case '*':
      case '+':
      case '?':
      case '{':
        return quantify();
      case '\\':
        return translate_escape();
      case '[':
        return translate_brackets();
      case '.':
        return add_atom("[^\\n\\r]", 1);
      default:
        return add_atom(literal(c), 1);
    }
  }

  void add_atom(const std::string& translated, std::size_t length) {
    atom_ = out_.size();
    out_ += translated;
    next_ += length;
  }

  /// Adds what no quantifier may follow.
  void add_assertion(const std::string& translated, std::size_t length) {
    add_atom(translated, length);
    atom_ = NO_ATOM;
  }

  void close_group() {
    if (groups_.empty()) {
      invalid();
    }
    const std::size_t start = groups_.back();
    groups_.pop_back();
    add_atom(")", 1);
    atom_ = start;
    if (first_group_.empty()) {
      first_group_ = out_.substr(start);
    }
  }

  /// A quantifier may stand behind another one, and then counts for what that one made.
  void quantify() {
    if (atom_ == NO_ATOM || ++quantifiers_ > MOST_QUANTIFIERS) {
      invalid();
    }
    std::string quantifier = read_quantifier();
    const bool is_lazy = skip('?');
    if (quantifier != "{1}") {
      out_.insert(atom_, "(?:");
      out_.append(quantifier).append(is_lazy ? "?)" : ")");
    }
  }

  std::string read_quantifier() {
    const char c = in_[next_++];
    if (c != '{') {
      return std::string(1, c);
    }
    std::string result = "{" + read_count();
    if (skip(',')) {
      result += ',';
      if (next_ < in_.size() && in_[next_] != '}') {
        result += read_count();
      }
    }
    if (!skip('}')) {
      invalid();
    }
    return result + '}';
  }

  // Rewritten, since RE2 takes a count with leading zeros, or one too large, for literal text.
  std::string read_count() {
    int count = 0;
    const char* const begin = in_.data() + next_;
    const auto [end, error] = std::from_chars(begin, in_.data() + in_.size(), count);
    if (error != std::errc() || *begin == '-' || count > MOST_REPETITIONS) {
      invalid();
    }
    next_ += static_cast<std::size_t>(end - begin);
    return std::to_string(count);
  }

  bool skip(char c) {
    const bool found = next_ < in_.size() && in_[next_] == c;
    next_ += found ? 1 : 0;
    return found;
  }

  void translate_escape() {
    const char c = next_ + 1 < in_.size() ? in_[next_ + 1] : '\0';
    if (c == 'b' || c == 'B') {
      add_assertion({'\\', c}, 2);
    } else if (c == 's') {
      add_atom("[\\t-\\r ]", 2);
    } else if (c == 'S') {
      add_atom("[^\\t-\\r ]", 2);
    } else if (c >= '1' && c <= '9') {
      refer_to_group();
    } else if (std::ispunct(static_cast<unsigned char>(c)) != 0) {
      add_atom(literal(c), 2);
    } else {
      const std::size_t length = escape_length(next_);
      add_atom(byte_class(std::string(in_.substr(next_, length))), length);
    }
  }

  // A group ahead of an alternative has no part in it, and a reference to it never matches there.
  void refer_to_group() {
    const std::size_t end = std::min(in_.find_first_not_of(DIGITS, next_ + 1), in_.size());
    if (in_.substr(next_ + 1, end - next_ - 1) != "1" || first_group_.empty()) {
      invalid();
    }
    add_atom(has_alternatives_ ? NO_BYTE : first_group_, end - next_);
  }

  std::size_t escape_length(std::size_t start) const {
    switch (start + 1 < in_.size() ? in_[start + 1] : '\0') {
      case 'c':
        return 3;
      case 'x':
        return 4;
      case 'u':
        return 6;
      default:
        return 2;
    }
  }

  void translate_brackets() {
    std::size_t end = next_ + 1;
    while (end < in_.size() && in_[end] != ']') {
      const std::string_view named = in_.substr(end, 2);
      if (in_[end] == '\\') {
        end += escape_length(end);
      } else if (named == "[:" || named == "[." || named == "[=") {
        const std::size_t close = in_.find(std::string{named[1], ']'}, end + 2);
        end = close == std::string_view::npos ? in_.size() : close + 2;
      } else {
        ++end;
      }
    }
    if (end >= in_.size()) {
      invalid();
    }
    const std::size_t length = end + 1 - next_;
    add_atom(byte_class(std::string(in_.substr(next_, length))), length);
  }

  std::string_view in_;
  std::size_t next_ = 0;
  std::string out_;
  std::size_t atom_ = NO_ATOM;  // where in out_ the atom starts that a quantifier counts for
  std::vector<std::size_t> groups_;  // where in out_ the open ones start
  std::string first_group_;
  int quantifiers_ = 0;
  bool has_alternatives_ = false;
};

EcmaPattern::EcmaPattern(std::string_view pattern, std::string_view required)
    : EcmaPattern(Translator::translate(pattern), required) {}

EcmaPattern::EcmaPattern(Translated translated, std::string_view required)
    : re2_(translated.pattern, options()),
      required_(translated.has_alternatives ? std::string_view() : required) {
  if (!re2_.ok()) {
    throw std::regex_error(std::regex_constants::error_complexity);
  }
}

bool EcmaPattern::matches(std::string_view subject) const {
  return holds(subject, required_) &&
         re2_.Match(subject, 0, subject.size(), RE2::UNANCHORED, nullptr, 0);
}

std::optional<std::string_view> EcmaPattern::find(std::string_view subject) const {
  re2::StringPiece match;
  if (!holds(subject, required_) ||
      !re2_.Match(subject, 0, subject.size(), RE2::UNANCHORED, &match, 1)) {
    return std::nullopt;
  }
  return std::string_view(match.data(), match.size());
}

bool holds(std::string_view text, std::string_view word) {
  return word.empty() || memmem(text.data(), text.size(), word.data(), word.size()) != nullptr;
}

}  // namespace qorn::preproc::clips_parser
