#pragma once

#include <ostream>

#include <qorn/config.h>

namespace qorn::frontend {

/// Trees of framework definitions with more levels than this are not written: readers of JSON
/// refuse or crash on documents that are nested deeper.
inline constexpr std::size_t MOST_TREE_LEVELS = 500;

/// Writes the whole record as one JSON document: two blanks of indentation, UTF-8, a line end at
/// the end; see record_version in it. It is written piece by piece, so it costs little memory
/// beside the record. Throws std::runtime_error that names the definition and the group, with
/// nothing written, for a tree of more than MOST_TREE_LEVELS levels. Whether the stream took
/// everything is the caller's to look at.
void write_record(const Config& config, std::ostream& out);

}  // namespace qorn::frontend
