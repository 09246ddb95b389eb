#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace qorn::fs {

/// The absolute form of `path`: the working directory in front of a relative one; ".", ".." and
/// doubled or trailing slashes removed. Links are not resolved. "." gives the working directory.
std::string abspath(const std::string& path);

/// The names of the regular files in `directory`, sorted. Throws std::filesystem_error
/// (std::system_error) when it can't be listed.
std::vector<std::string> list_files(const std::string& directory);

/// Reads a whole regular file of at most `most` bytes. Returns false, with the reason, for
/// anything else: missing, a directory, a device, too large, not readable.
bool read_regular_file(const std::string& path, std::size_t most, std::string& content,
                       std::string& reason);

}  // namespace qorn::fs
