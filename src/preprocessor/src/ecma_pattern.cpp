#include "ecma_pattern.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

namespace qorn::preproc::clips_parser {
namespace {

constexpr int MOST_REPETITIONS = 1000;     // RE2's own limit
constexpr int MOST_QUANTIFIERS = 1000;     // RE2's limit on nesting
constexpr std::int64_t MEMORY = 64 << 20;  // bytes, for a pattern and its automata
// Sets of bytes, as they stand between brackets.
constexpr const char* ALL = "\\x00-\\xff";
constexpr const char* WHITE_SPACE = "\\t-\\r ";  // RE2's own has no vertical tab
constexpr const char* NO_WHITE_SPACE = "\\x00-\\x08\\x0e-\\x1f\\x21-\\xff";
constexpr const char* NO_BYTE = "[^\\x00-\\xff]";
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

bool is_named_class(std::string_view name) {
  constexpr std::array<std::string_view, 12> NAMES = {"alnum", "alpha", "blank", "cntrl",
                                                      "digit", "graph", "lower", "print",
                                                      "punct", "space", "upper", "xdigit"};
  return std::find(NAMES.begin(), NAMES.end(), name) != NAMES.end();
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

  [[noreturn]] static void invalid() { throw std::invalid_argument("invalid pattern"); }

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
      return add_assertion({'\\', c}, 2);
    }
    if (c >= '1' && c <= '9') {
      return refer_to_group();
    }
    std::string set;
    const auto byte = read_escape(set);
    add_atom(byte ? literal(*byte) : "[" + set + "]", 0);
  }

  // A group ahead of an alternative has no part in it, and a reference to it never matches there.
  void refer_to_group() {
    const std::size_t end = std::min(in_.find_first_not_of(DIGITS, next_ + 1), in_.size());
    if (in_.substr(next_ + 1, end - next_ - 1) != "1" || first_group_.empty()) {
      invalid();
    }
    add_atom(has_alternatives_ ? NO_BYTE : first_group_, end - next_);
  }

  /// Reads an escape. One for a set of bytes is added to `set` and gives none.
  std::optional<char> read_escape(std::string& set) {
    ++next_;
    switch (const char c = read_byte()) {
      case 'd':
      case 'D':
      case 'w':
      case 'W':
        set.append({'\\', c});
        return std::nullopt;
      case 's':
        set += WHITE_SPACE;
        return std::nullopt;
      case 'S':
        set += NO_WHITE_SPACE;
        return std::nullopt;
      case 'c':
        return read_byte();  // as the standard library has it: no control byte is made of it
      case 'x':
        return read_hexadecimal(2);
      case 'u':
        return read_hexadecimal(4);
      default:
        return escaped_byte(c);
    }
  }

  static char escaped_byte(char c) {
    constexpr std::string_view NAMES = "0bfnrtv";
    constexpr std::string_view BYTES("\0\b\f\n\r\t\v", NAMES.size());
    const std::size_t found = NAMES.find(c);
    if (c == 'B' || (c >= '1' && c <= '9')) {
      invalid();
    }
    return found == std::string_view::npos ? c : BYTES[found];
  }

  char read_byte() {
    if (next_ >= in_.size()) {
      invalid();
    }
    return in_[next_++];
  }

  char read_hexadecimal(std::size_t digits) {
    unsigned value = 0;
    const std::string_view text = in_.substr(next_, digits);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (error != std::errc() || end != text.data() + digits) {
      invalid();
    }
    next_ += digits;
    return static_cast<char>(value);
  }

  void translate_brackets() {
    enum class Before { NOTHING, BYTE, CLASS } before = Before::NOTHING;
    ++next_;
    const bool is_negated = skip('^');
    std::string set;
    char byte = '\0';  // the one before, which a range may start from
    while (!skip(']')) {
      const bool is_dash = in_.substr(next_, 1) == "-" && in_.substr(next_, 2) != "-]";
      if (is_dash && before == Before::CLASS) {
        invalid();
      }
      if (is_dash && before == Before::BYTE) {
        add_range(byte, set);
        before = Before::NOTHING;
      } else if (const auto next = read_element(set)) {
        byte = *next;
        set += literal(byte);
        before = Before::BYTE;
      } else {
        before = Before::CLASS;
      }
    }
    if (set.empty()) {
      return add_atom(is_negated ? "[" + std::string(ALL) + "]" : NO_BYTE, 0);
    }
    add_atom((is_negated ? "[^" : "[") + set + "]", 0);
  }

  // `set` ends with the first byte already. As the standard library has it, bytes are compared as
  // char: where that is signed, a range may run from the upper half into the lower one.
  void add_range(char first, std::string& set) {
    ++next_;
    std::string other_set;
    const char last = read_element(other_set).value_or('\0');
    if (!other_set.empty() || first > last) {
      invalid();
    }
    const bool is_wrapped = static_cast<unsigned char>(first) > static_cast<unsigned char>(last);
    set.append(is_wrapped ? "-\\xff\\x00-" : "-").append(literal(last));
  }

  /// Reads one element of a bracket expression. A set of bytes is added to `set` and gives none.
  std::optional<char> read_element(std::string& set) {
    const std::string_view rest = in_.substr(next_);
    if (rest.starts_with('\\')) {
      return read_escape(set);
    }
    if (rest.starts_with("[.") || rest.starts_with("[=")) {
      invalid();
    }
    if (!rest.starts_with("[:")) {
      return read_byte();
    }
    const std::string_view name = rest.substr(2, rest.find(":]") - 2);
    if (!is_named_class(name)) {
      invalid();
    }
    set.append("[:").append(name).append(":]");
    next_ += name.size() + 4;
    return std::nullopt;
  }

  std::string_view in_;
  std::size_t next_ = 0;
  std::string out_;
  std::size_t atom_ = NO_ATOM;       // where in out_ the atom starts that a quantifier counts for
  std::vector<std::size_t> groups_;  // where in out_ the open ones start
  std::string first_group_;
  int quantifiers_ = 0;
  bool has_alternatives_ = false;
};

EcmaPattern::EcmaPattern(std::string_view pattern, std::string_view required)
    : EcmaPattern(Translator::translate(pattern), required) {
}

EcmaPattern::EcmaPattern(const Translated& translated, std::string_view required)
    : re2_(translated.pattern, options()),
      required_(translated.has_alternatives ? std::string_view() : required) {
  if (!re2_.ok()) {
    throw std::invalid_argument("invalid pattern");
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
