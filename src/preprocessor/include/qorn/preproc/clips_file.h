#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <qorn/fs.h>

/// CLIPS files as text.
namespace qorn::preproc::clips_parser {

/// Reads a CLIPS file: a regular file of at most 100 MB. The text of one that can't be read to its
/// end is the whole lines ahead of the failure.
fs::FileText read_clips_file(const std::string& path);

/// What a line loads.
struct Load {
  std::string name;  // of the file, below the directory of loads
  /// The line has the form (batch* NAME). In any other a part of its keyword stands ahead of the
  /// name, which leads to no file.
  bool followed;
};

/// Reads a line that starts with "(batch" or "(load"; nothing for other lines.
std::optional<Load> find_load(std::string_view line);

}  // namespace qorn::preproc::clips_parser
