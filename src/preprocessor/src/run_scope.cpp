#include <qorn/detail/notes.h>
#include <qorn/detail/tree_budget.h>
#include <qorn/preproc/run_scope.h>
#include <qorn/xml/document.h>

#include "rule_chain.h"

namespace qorn::preproc {

struct __attribute__((visibility("hidden"))) RunScope::State {
  explicit State(std::size_t most_notes) : notes(most_notes) {}

  xml::RunScope documents;
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

}  // namespace qorn::preproc
