#pragma once

#include <cstddef>

#include <libxml/xmlerror.h>

/// What differs between the versions of libxml2.
namespace qorn::xml {
#pragma GCC visibility push(hidden)

/// How many NUL bytes should stand behind a document. Near the end of its input libxml2 before
/// 2.11 looks for more at every token, and grows its buffer in vain: a third of the time for a
/// small document. More bytes keep that end away, and the parser takes a NUL for the end of what
/// it has. None for later versions, which would call them content.
std::size_t look_ahead();

/// Whether an error leaves the document as good as it was. A missing declaration of an entity that
/// the content refers to, of which later versions only warn, doesn't.
bool is_warning(const xmlError& error);

/// Whether an error says that something is longer than the parser takes. Before 2.13 it may have
/// the number of a lack of memory.
bool is_about_length(const xmlError& error);

#pragma GCC visibility pop
}  // namespace qorn::xml
