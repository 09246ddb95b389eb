#pragma once

#include <string>
#include <vector>

#include <qorn/run_notes.h>

namespace qorn::frontend {

/// One line for each thing that documents name and that the run passed over.
std::vector<std::string> passed_over(const RunNotes& notes);

}  // namespace qorn::frontend
