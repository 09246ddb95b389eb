#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <qorn/fs.h>

/// CLIPS files as text.
namespace qorn::preproc::clips_parser {
#pragma GCC visibility push(hidden)

/// What a line loads.
struct Load {
  std::string name;  // of the file, below the directory of loads
  /// The line has the form (batch* NAME). In any other a part of its keyword stands ahead of the
  /// name, which leads to no file.
  bool is_starred;
};

/// Reads a line that starts with "(batch" or "(load"; nothing for other lines.
std::optional<Load> find_load(std::string_view line);

#pragma GCC visibility pop
}  // namespace qorn::preproc::clips_parser
