#pragma once

#include <string>
#include <vector>

#include "question.h"

namespace qorn::inspect {

/// What can be listed.
std::vector<std::string> list_names();

/// Prints the names in force, one a line; "files" prints everything that a run with these
/// arguments would read, in order, each with a tab and the reason. Gives 0. Throws Trouble when
/// the arguments or a document that is needed for it can't be used.
int print_list(const Question& question);

}  // namespace qorn::inspect
