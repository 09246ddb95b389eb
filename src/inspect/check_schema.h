#pragma once

#include <string>

#include "finding.h"
#include "installation.h"

namespace qorn::inspect {

/// Adds every fault of a document against the schema of its kind. The validator passes over what
/// follows an unexpected child in its parent; so in a copy in memory such a child is renamed to
/// the name that it is close to, else taken out, and the copy validated again, up to 100 times.
/// Faults that only come of others are marked as follow-ups. Gives the copy as it was mended, so
/// that what stands in a misspelt element is looked at as well; null for a document that can't be
/// read, which adds its first fault.
xml::DocumentPtr check_schema(const std::string& path, DocumentKind kind, const std::string& root,
                              Findings& findings);

}  // namespace qorn::inspect
