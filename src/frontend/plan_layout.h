#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

/// How the plan lays out what it shows.
namespace qorn::frontend {

using Row = std::vector<std::string>;

/// Lists in one line of the plan end with "and N more" behind this many entries.
inline constexpr std::size_t MOST_LISTED = 20;

/// The parts one behind the other.
std::string concat(std::initializer_list<std::string_view> parts);

/// The entries joined by `separator`, each once, at most MOST_LISTED of them.
std::string joined(const std::vector<std::string>& entries, std::string_view separator);

/// Rows as lines of aligned columns, indented by two blanks and printable. A cell that is much
/// longer than a column is wide moves what follows it in its line.
std::string aligned(const std::vector<Row>& rows);

/// The folded names, or, where they don't fit a few lines of a terminal, as many whole pieces of
/// them as do.
std::string shortened(std::string folded_names);

}  // namespace qorn::frontend
