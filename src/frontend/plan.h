#pragma once

#include <string>

#include <qorn/config.h>
#include <qorn/preproc/run_scope.h>

namespace qorn::frontend {

/// The plan of a run as a person reads it: what will be run, how, and on which nodes, and what
/// the preparation passed over. Control bytes of texts from documents appear as "\x1b". Reads
/// the files of rule files that gave no rule, to tell those that only load others.
std::string plan_text(const Config& config, const preproc::RunNotes& notes = {});

}  // namespace qorn::frontend
