#pragma once

#include <cstddef>
#include <memory>

#include <qorn/run_notes.h>

namespace qorn::preproc {

/// While one lives, a run is under way: a schema is compiled and a rule file scanned once, trees
/// and registrations are counted from its start, and what the run notices is noted. Scopes nest,
/// each with notes, scans and counts of its own; compiled schemas are the outermost one's. What is
/// kept ends with its scope, so that a file that changes is seen by the next run.
class RunScope {
 public:
  static constexpr std::size_t MOST_NOTES = 1000;

  /// At most `most_notes` notes of each kind are kept, the rest is counted.
  explicit RunScope(std::size_t most_notes = MOST_NOTES);
  RunScope(const RunScope&) = delete;
  RunScope& operator=(const RunScope&) = delete;
  ~RunScope();

  /// What was noted while this was the innermost scope.
  const RunNotes& notes() const;

  /// Gives these notes away; what is noted from then on is noted anew.
  RunNotes take_notes();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace qorn::preproc
