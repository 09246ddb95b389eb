#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <re2/re2.h>

namespace qorn::preproc::clips_parser {
#pragma GCC visibility push(hidden)

/// A pattern in the ECMAScript syntax, as std::regex reads it, applied as a search. It is run by
/// RE2: a search costs time linear in the subject and can't overflow the stack, and it finds the
/// very text that std::regex finds. Subjects are bytes, NUL included.
///
/// Without a translation, and so not valid, are the forms "(?…", "[.…" and "[=…", a repetition of
/// more than 1,000 times, more than 1,000 quantifiers, and a reference to any group but the first,
/// which must be a plain word.
class EcmaPattern {
 public:
  /// `required` is a text that stands in every match; a subject without it is told apart by a
  /// plain search. It counts for nothing when the pattern turns out to be a choice between
  /// alternatives. Throws std::invalid_argument when the pattern isn't valid.
  explicit EcmaPattern(std::string_view pattern, std::string_view required = {});

  /// Whether the pattern matches anywhere in `subject`.
  bool matches(std::string_view subject) const;

  /// The matched text, a view into `subject`; none without a match.
  std::optional<std::string_view> find(std::string_view subject) const;

 private:
  struct Translated {
    std::string pattern;
    bool has_alternatives;  // outside of a group
  };
  class Translator;

  EcmaPattern(const Translated& translated, std::string_view required);

  RE2 re2_;
  std::string required_;
};

/// Whether `word` stands in `text`.
bool holds(std::string_view text, std::string_view word);

#pragma GCC visibility pop
}  // namespace qorn::preproc::clips_parser
