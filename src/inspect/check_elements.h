#pragma once

#include "document.h"
#include "finding.h"

namespace qorn::inspect {

/// Adds what a schema lets through and a run refuses, replaces by a default, or passes over
/// without a word: empty elements, missing attributes, wrong words.
void check_elements(Kind kind, const xml::DocumentPtr& doc, Findings& findings);

}  // namespace qorn::inspect
