#pragma once

#include "question.h"

namespace qorn::inspect {

/// Reads an installation and prints everything that is wrong with it, or with `documents`; the
/// files of -f and -g are checked as well. Gives 0 for nothing but warnings, 1 for errors, 3 for
/// warnings alone with `strict`.
int check_installation(const Question& question);

}  // namespace qorn::inspect
