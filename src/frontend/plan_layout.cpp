#include "plan_layout.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include <qorn/str.h>

namespace qorn::frontend {
namespace {

constexpr std::size_t WIDEST_COLUMN = 48;
constexpr std::size_t LONGEST_FOLDED = 400;

/// The last comma at or ahead of `end` that stands outside brackets.
std::size_t last_separator(std::string_view folded_names, std::size_t end) {
  std::size_t last = 0;
  bool in_bracket = false;
  for (std::size_t i = 0; i < end; ++i) {
    const char c = folded_names[i];
    in_bracket = c == '[' || (in_bracket && c != ']');
    last = c == ',' && !in_bracket ? i : last;
  }
  return last;
}

}  // namespace

std::string concat(std::initializer_list<std::string_view> parts) {
  std::string text;
  for (const std::string_view part : parts) {
    text.append(part);
  }
  return text;
}

std::string joined(const std::vector<std::string>& entries, std::string_view separator) {
  std::string text;
  std::unordered_set<std::string_view> listed;
  std::size_t more = 0;
  for (const std::string& entry : entries) {
    if (!listed.insert(entry).second) {
      continue;
    }
    if (listed.size() > MOST_LISTED) {
      ++more;
      continue;
    }
    text.append(text.empty() ? "" : separator).append(entry);
  }
  if (more > 0) {
    text.append(separator).append("and ").append(std::to_string(more)).append(" more");
  }
  return text;
}

std::string aligned(const std::vector<Row>& rows) {
  std::vector<Row> cells;
  std::vector<std::size_t> widths;
  for (const Row& row : rows) {
    Row& line = cells.emplace_back();
    for (const std::string& cell : row) {
      line.push_back(str::printable(cell));
      widths.resize(std::max(widths.size(), line.size()));
      std::size_t& width = widths[line.size() - 1];
      width = std::max(width, std::min(line.back().size(), WIDEST_COLUMN));
    }
  }
  std::string text;
  for (const Row& line : cells) {
    std::string padded;
    for (std::size_t i = 0; i < line.size(); ++i) {
      padded.append(2, ' ').append(line[i]);
      padded.append(widths[i] - std::min(widths[i], line[i].size()), ' ');
    }
    padded.erase(padded.find_last_not_of(' ') + 1);
    text.append(padded).append(1, '\n');
  }
  return text;
}

std::string shortened(std::string folded_names) {
  if (folded_names.size() > LONGEST_FOLDED) {
    const std::size_t end = last_separator(folded_names, LONGEST_FOLDED);
    folded_names.replace(end, std::string::npos, end == 0 ? "..." : ",...");
  }
  return folded_names;
}

}  // namespace qorn::frontend
