#pragma once

#include "question.h"

namespace qorn::inspect {

/// Prints the settings of the run that a front-end's arguments ask for, one "NAME = VALUE" a
/// line; with `origin` each with where it comes from and what stands elsewhere but didn't count.
/// Gives 0. Throws Trouble when the run would fail.
int show_settings(const Question& question);

}  // namespace qorn::inspect
