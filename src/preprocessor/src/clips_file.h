#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include <sys/types.h>

namespace qorn::preproc::clips_parser {

/// Device and inode: two paths to one file have the same.
using FileId = std::pair<dev_t, ino_t>;

/// A CLIPS file as text, read whole.
struct ClipsFile {
  enum class State {
    NOT_OPENED,  // missing, no rights
    READ,
    FAILED  // not a regular file, larger than 100 MB, or reading broke off
  };
  State state = State::NOT_OPENED;
  FileId id;
  std::string text;    // of a failed one, the whole lines ahead of the failure
  std::string reason;  // what the words "can't be read" wouldn't tell; mostly empty
};

/// Reads the file at `path` and closes it again. Never waits for a pipe or a device.
ClipsFile read_clips_file(const std::string& path);

/// Takes a text apart into lines as std::getline does: without the line feed, and with a last line
/// that has none.
class Lines {
 public:
  explicit Lines(std::string_view text) : text_(text) {}

  /// Sets `line` to the next line; false at the end.
  bool next(std::string_view& line);

  /// The number of bytes gone through.
  std::size_t position() const { return position_; }

 private:
  std::string_view text_;
  std::size_t position_ = 0;
};

}  // namespace qorn::preproc::clips_parser
