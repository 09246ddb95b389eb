#pragma once

#include <filesystem>

namespace qorn::benchmarks {

/// The least that anybody must do with an installation: parses each document with libxml2 and
/// validates it against its schema, compiled once (provider documents are not validated: no run
/// does), and reads the rule files and node files by lines. Keeps nothing, or each line of the
/// node files as a string. Throws std::runtime_error for a file that can't be used.
void read_installation(const std::filesystem::path& root, bool keep_lines);

}  // namespace qorn::benchmarks
