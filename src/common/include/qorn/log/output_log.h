#pragma once

#include <fstream>
#include <ios>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace qorn::util {

template <typename T>
class NonDeepCopyable {
 public:
  NonDeepCopyable() = default;
  NonDeepCopyable(const NonDeepCopyable&) = delete;
  NonDeepCopyable& operator=(const NonDeepCopyable&) = delete;
  virtual ~NonDeepCopyable() = default;
};

}  // namespace qorn::util

namespace qorn::log {

/// A destination of output.
struct OutputStream {
  std::ostream* stream;  // not owned
  bool use_color;
};

class StreamBaseType : public util::NonDeepCopyable<StreamBaseType> {
 public:
  virtual bool is_open() const { return open; }

  bool open = false;
};

/// A log file; flushed and closed with the object.
class StreamFileType : public StreamBaseType {
 public:
  explicit StreamFileType(std::string name) : file_name(std::move(name)) {}
  ~StreamFileType() override;

  std::string file_name;
  std::unique_ptr<std::fstream> stream;
};

/// One piece of output for the user. It goes to every registered stream when the object goes,
/// whatever the log level; an empty one writes nothing.
class OutputLog : public std::stringstream {
 public:
  enum Colors : int { NO_COLOR = -1, RED = 0, YELLOW = 1, GREEN = 2 };

  /// The destinations of the process. Colours appear only where a caller fills `streams` itself.
  struct OutputLogStream {
    /// Writes the escape sequence of `color` to every stream that uses colour; NO_COLOR does
    /// nothing. A number beyond the table goes to the standard error stream and throws a plain
    /// std::exception.
    void set_color(Colors color);

    std::vector<std::string> colors{"\x1b[0;31m", "\x1b[0;33m", "\x1b[0;32m"};
    std::string reset = "\x1b[0m";
    std::vector<OutputStream> streams;
    std::vector<std::shared_ptr<StreamFileType>> files;
    int current_color = NO_COLOR;
  };

  /// Opens a scope, creating the destinations if need be; for `color` see set_color.
  explicit OutputLog(Colors color = NO_COLOR);
  OutputLog(const OutputLog&) = delete;
  OutputLog& operator=(const OutputLog&) = delete;
  ~OutputLog() override;

  std::ostream& stream() { return *this; }

  /// Creates the destinations, none at first, unless they exist.
  static void createInstance();

  /// Replaces all destinations by one file, opened with `mode`, or by the console when
  /// `file_name` is empty or the file can't be opened. The name is word-expanded; a regular file
  /// gets the mode 0660. Returns 1 when the requested destination is in force, and 0 when the
  /// file couldn't be opened, which one line on the standard error stream reports.
  static int set_out_streams(std::string file_name, std::ios_base::openmode mode);

  static OutputLogStream* singleton_obj;  // null until first needed, kept until the process ends
};

}  // namespace qorn::log
