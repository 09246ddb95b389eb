#pragma once

#include <ostream>
#include <string>

#include "finding.h"
#include "terminal.h"

namespace qorn::inspect {

/// One line for each finding, then the line with the counts; follow-ups with `verbose` alone.
void print_text(const Findings& findings, std::ostream& out, const Terminal& terminal,
                bool verbose);

/// The same as one JSON object, described by etc/inspect.schema.json; follow-ups included.
void print_json(const Findings& findings, std::ostream& out, const std::string& root);

}  // namespace qorn::inspect
