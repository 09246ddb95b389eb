#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <qorn/place.h>

namespace qorn::preproc {

/// What a run noticed beyond its messages.
struct RunNotes {
  /// Something that was named and that the run does without.
  struct PassedOver {
    enum class Kind : int {
      RULE_FILES,  // the rule file `what` can't be read, so a definition's further ones aren't
                   // scanned
      REPORT       // the report document `what` isn't read beside a table document
    };
    Kind kind = Kind::RULE_FILES;
    std::string what;                   // path of a file
    std::string named_by;               // a framework definition, empty where none named it
    Place place;                        // where it is named; no file where that isn't known
    std::vector<std::string> together;  // what else is left out because of it, as it is written
  };

  /// At most MOST_NOTES of each kind of notes are kept; the rest is counted.
  static constexpr std::size_t MOST_NOTES = 1000;

  std::vector<PassedOver> passed_over;
  std::size_t more_passed_over = 0;
};

/// While one lives, a run is under way: a schema is compiled and a rule file scanned once, trees
/// and registrations are counted from its start, and what the run notices is noted. What is kept is
/// dropped with the outermost one, so that a file that changes is seen by the next run. Scopes
/// nest; each has its own notes.
class RunScope {
 public:
  RunScope();
  RunScope(const RunScope&) = delete;
  RunScope& operator=(const RunScope&) = delete;
  ~RunScope();

  /// What was noted while this was the innermost scope.
  const RunNotes& notes() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace qorn::preproc
