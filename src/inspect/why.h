#pragma once

#include "question.h"

namespace qorn::inspect {

/// Prints what runs on `node` and how that comes about, or the first condition that fails; of all
/// framework definitions, or of `framework`, by name or path. Gives 0 when something runs there,
/// else 1. Throws Trouble when the run would fail.
int explain(const Question& question);

}  // namespace qorn::inspect
