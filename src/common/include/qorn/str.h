#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Operations on texts. None keeps state; each gives a new text.
namespace qorn::str {

/// Removes the characters of `chars` from both ends; an empty `chars` means white space.
std::string strip(std::string_view text, std::string_view chars);

/// Removes white space from both ends.
std::string stripws(std::string_view text);

/// Reduces each run of the character `c` to one.
std::string squeeze(std::string_view text, char c);

/// Replaces every occurrence of `from`, left to right; an empty `from` changes nothing.
std::string replace(std::string_view text, std::string_view from, std::string_view to);

/// The pieces between the delimiters. Empty pieces are kept when `keep_empty` is true.
std::vector<std::string> split(std::string_view text, char delimiter, bool keep_empty);

/// The upper-case form; letters of ASCII alone change.
std::string upper(std::string_view text);

/// The lower-case form; letters of ASCII alone change.
std::string lower(std::string_view text);

/// The shell's word expansion: "~", variables, quotes, file name patterns and a backslash before
/// a blank. Several resulting words are joined by single blanks. Never runs a command, changes
/// the environment or writes. A text that can't be expanded within these bounds, one of more
/// than 4,096 bytes, and one that gives more than 1,000 words come back unexpanded, without the
/// backslashes before blanks.
std::string wordexp(const std::string& text);

/// A path as it is opened where it isn't word-expanded: a backslash before a blank goes.
std::string unescape_blanks(std::string_view path);

/// Breaks `text` at blanks into lines of at most `width` columns (0: the terminal's width), with
/// `prefix` ahead of the text and further lines indented to the prefix's length. A word longer
/// than a line stands on a line of its own; line breaks of the text stay.
std::string word_wrap(std::string_view text, unsigned width, std::string_view prefix);

/// Wraps lines of the form head, `c`, description to `width` columns (0: the terminal's width).
/// Continuations are indented to the column behind `c`, then `prefix`. With `align` all
/// descriptions start in one column, behind the longest head.
std::string column_wrap(std::string_view text, unsigned width, std::string_view prefix, char c,
                        bool align);

/// Columns of the terminal on the standard output, else of the variable COLUMNS, else 80.
unsigned terminal_width();

/// The text of a tree: each line is preceded by `ended` or `open` for each level on the way to
/// it (true: the level has ended), then by `last` or `other`, and followed by a line end.
std::string format_tree(const std::vector<std::pair<std::string, std::vector<bool>>>& lines,
                        std::string_view ended, std::string_view last, std::string_view other,
                        std::string_view open);

/// Takes line breaks and runs of blanks out of a text that was laid out for another width.
std::string clean_previous_formatting(std::string_view text);

/// The number of node list permutations that `text` asks for: "all" in any case and zero give
/// ALL_PERMUTATIONS. What is no number, negative or out of range gives `current` and one line at
/// level 4 with the text and `source`, which says where the text comes from.
std::uint32_t get_num_permutations_from_string(const std::string& text, std::uint32_t current,
                                               const std::string& source);

/// The text with its control characters as "\x1b", or "\xc2\x9b" for those of UTF-8, so that it
/// can't steer a terminal. Those in `kept` stay.
std::string printable(std::string_view text, std::string_view kept = {});

}  // namespace qorn::str
