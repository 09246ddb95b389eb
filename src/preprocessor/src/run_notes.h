#pragma once

#include <qorn/preproc/run_scope.h>

namespace qorn::preproc {

/// Keeps a note in the innermost scope; without one nothing is kept.
void note(RunNotes::PassedOver passed_over);

}  // namespace qorn::preproc
