#pragma once

#include "question.h"

namespace qorn::inspect {

/// Compares two records that QORN_RECORD has written, or the runs with the same arguments under two
/// installation roots, each loaded in a process of its own; the roots themselves are no difference.
/// Prints the differences by section; gives 0 when there are none, else 1. Throws Trouble for a
/// file that is no record, a run that fails, and for anything but two of them.
int compare(const Question& question);

}  // namespace qorn::inspect
