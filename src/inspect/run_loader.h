#pragma once

#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <vector>

#include <qorn/config.h>
#include <qorn/preproc/preprocessor.h>

namespace qorn::inspect {

/// Ends the program with status 2, after its text, if it has one, on the standard error stream.
struct Trouble : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// While one lives, what the library writes to std::cout and std::cerr is kept instead of
/// written. It puts the log level back that was in force.
class Capture {
 public:
  Capture();
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;
  ~Capture();

  /// The lines on std::cerr so far.
  std::vector<std::string> error_lines() const;
  /// Everything so far, for the standard error stream.
  std::string text() const { return output_.str() + errors_.str(); }

 private:
  std::ostringstream output_;
  std::ostringstream errors_;
  std::streambuf* cout_;
  std::streambuf* cerr_;
  int log_level_;
};

/// A run up to the point where it would open its datastores, which it never does.
class LoadedRun {
 public:
  LoadedRun();
  LoadedRun(const LoadedRun&) = delete;
  LoadedRun& operator=(const LoadedRun&) = delete;
  ~LoadedRun() { release_frameworks(config); }

  /// Reads a front-end's arguments, with "collect" or "analyze" as an optional first word, and
  /// the environment. Throws Trouble, after the front-end's own words, for what it would refuse
  /// and for a request such as --help.
  void read_arguments(const std::vector<std::string>& arguments);

  /// Reads the main document and settles which framework definitions are asked for. Throws
  /// Trouble, after the library's words, when the run would fail there.
  void read_main_document();

  /// Reads the node list. Throws Trouble like read_main_document.
  void read_nodes();

  /// Reads everything else that a run reads, with the groups that an engine makes at its start.
  /// A run without a readable provider goes on here. Throws Trouble
  /// like read_main_document.
  void read_frameworks();

  Config config;
  preproc::Preprocessor preprocessor;
};

/// The words of a command line as ProcessCommand takes them.
std::vector<std::string> command_line_of(const std::vector<std::string>& arguments);

}  // namespace qorn::inspect
