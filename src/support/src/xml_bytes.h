#pragma once

#include <string_view>

namespace qorn::xml {
#pragma GCC visibility push(hidden)

/// What libxml2 must not meet, looked for in the bytes of a document. Each gives the line of the
/// first one, counted from 1, or 0 for none.

/// An element with more than 256 attributes: libxml2 compares each one with all others before it
/// calls any handler, so thousands take minutes.
long crowded_element(std::string_view content);

/// A NUL byte, which libxml2 would take for the document's end. UTF-16 and its kind, which hold
/// such bytes, have one among the first four and give 0.
long line_of_nul(std::string_view content);

#pragma GCC visibility pop
}  // namespace qorn::xml
