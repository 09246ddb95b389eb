#pragma once

#include <string>

#include <qorn/config.h>
#include <qorn/run_notes.h>

namespace qorn::frontend {

/// The plan of a run as a person reads it: what will be run, how, and on which nodes, and what
/// the preparation passed over. Control bytes of texts from documents appear as "\x1b".
std::string plan_text(const Config& config, const RunNotes& notes = {});

}  // namespace qorn::frontend
