#pragma once

#include <limits>
#include <string>
#include <vector>

#include <qorn/config.h>
#include <qorn/preproc/preprocessor.h>

namespace qorn::inspect {

/// A run up to the point where it would open its datastores, which it never does. Its steps are the
/// library's. They throw Trouble, after the library's words, when the run would fail there.
class LoadedRun {
 public:
  LoadedRun();
  LoadedRun(const LoadedRun&) = delete;
  LoadedRun& operator=(const LoadedRun&) = delete;
  ~LoadedRun() { release_frameworks(config); }

  /// Takes a front-end's arguments, with "collect" or "analyze" as an optional first word, and the
  /// environment. Throws Trouble for a request such as --help, too.
  void take_command_line(const std::vector<std::string>& arguments);

  /// Reads the node list.
  void read_nodes();

  /// Reads the main document and settles which framework definitions are asked for.
  void read_main_document();

  /// Reads all documents of the run, with the groups that an engine makes at its start. A run
  /// without a readable provider goes on here.
  void read_documents();

  /// What the steps noticed so far, all of it.
  const RunNotes& notes() const { return scope_.notes(); }

  Config config;
  preproc::Preprocessor preprocessor;

 private:
  preproc::RunScope scope_{std::numeric_limits<std::size_t>::max()};
};

/// The word of a front-end's arguments that tells its stage; none where both run.
std::vector<std::string> stage_word(const std::vector<std::string>& arguments);

}  // namespace qorn::inspect
