#include <utility>

#include <qorn/preproc/clips_parser.h>
#include <qorn/preproc/run_scope.h>
#include <qorn/tree_budget.h>
#include <qorn/xml/document.h>

#include "run_notes.h"

namespace qorn::preproc {

struct RunScope::State {
  xml::RunScope documents;
  clips_parser::RunScope rule_files;
  RunNotes notes;
  RunNotes* outer = nullptr;
};

namespace {
RunNotes* innermost = nullptr;
}  // namespace

RunScope::RunScope() : state_(std::make_unique<State>()) {
  internal::start_tree_budget();
  state_->outer = std::exchange(innermost, &state_->notes);
}

RunScope::~RunScope() {
  innermost = state_->outer;
}

const RunNotes& RunScope::notes() const {
  return state_->notes;
}

void note(RunNotes::PassedOver passed_over) {
  if (innermost == nullptr) {
    return;
  }
  if (innermost->passed_over.size() == RunNotes::MOST_NOTES) {
    ++innermost->more_passed_over;
  } else {
    innermost->passed_over.push_back(std::move(passed_over));
  }
}

}  // namespace qorn::preproc
