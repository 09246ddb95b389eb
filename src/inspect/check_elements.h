#pragma once

#include "finding.h"
#include "installation.h"

namespace qorn::inspect {

/// Adds what a schema lets through and a run refuses, replaces by a default, or passes over
/// without a word: empty elements, missing attributes, wrong words.
void check_elements(DocumentKind kind, const xml::DocumentPtr& doc, Findings& findings);

}  // namespace qorn::inspect
