#include <qorn/detail/document_scope.h>
#include <qorn/detail/notes.h>
#include <qorn/detail/tree_budget.h>
#include <qorn/preproc/run_scope.h>

#include "rule_chain.h"

namespace qorn::preproc {

struct __attribute__((visibility("hidden"))) RunScope::State {
  explicit State(std::size_t most_notes) : notes(most_notes) {}

  detail::DocumentScope documents;
  clips_parser::RuleFileScope rule_files;
  detail::TreeBudget trees;
  detail::NoteScope notes;
};

RunScope::RunScope(std::size_t most_notes) : state_(std::make_unique<State>(most_notes)) {
}

RunScope::~RunScope() = default;

const RunNotes& RunScope::notes() const {
  return state_->notes.notes();
}

RunNotes RunScope::take_notes() {
  return state_->notes.take_notes();
}

}  // namespace qorn::preproc
