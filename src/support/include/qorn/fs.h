#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

#include <qorn/fs/descriptor.h>

namespace qorn::fs {

/// The absolute form of `path`: the working directory in front of a relative one; ".", ".." and
/// doubled or trailing slashes removed. Links are not resolved. "." gives the working directory.
std::string abspath(const std::string& path);

/// The names of the regular files in `directory`, sorted. Throws std::filesystem_error
/// (std::system_error) when it can't be listed.
std::vector<std::string> list_files(const std::string& directory);

/// What a reader accepts.
struct Readable {
  enum class Kinds {
    REGULAR_FILES,  // nothing else is waited for
    ALL             // pipes and devices as well, which may keep the reader waiting
  };
  Kinds kinds;
  std::size_t most_bytes;
  const char* too_large;  // the reason that refuses more
};

/// Device and inode: two paths to one file have the same.
using FileId = std::pair<dev_t, ino_t>;

/// A file as text.
struct FileText {
  enum class State {
    NOT_OPENED,  // missing, no rights
    NOT_READ,    // opened, but of a kind that isn't accepted, or reading broke off
    TOO_LARGE,
    READ
  };
  State state = State::NOT_OPENED;
  FileId id;           // of what could be opened
  std::string text;    // what came ahead of a failure, too; empty when it is too large
  std::string reason;  // why it wasn't read to its end; empty when it was

  bool was_read() const { return state == State::READ; }
};

/// Reads a file to its end, and closes it again. The reason of a failure is the system's, "not a
/// regular file", or what.too_large. The text of a regular file has room for some hundred bytes
/// more, which a parser may want behind it.
FileText read_file(const std::string& path, const Readable& what);

/// The same for what is open already and stays so.
FileText read_file(const Descriptor& file, const Readable& what);

}  // namespace qorn::fs
