#pragma once

#include <string>
#include <vector>

#include <qorn/run_notes.h>
#include <qorn/xml/document.h>

namespace qorn::inspect {

/// The files that a document names under the installation root `root`, by the paths that a run
/// would compute, in the order in which a run reads them. Empty names, which a run refuses, are
/// left out.
std::vector<Reference> references_of(DocumentKind kind, const xml::DocumentPtr& doc,
                                     const std::string& root);

/// The path of a framework definition as an option or the main document names it.
std::string framework_path(const std::string& name, const std::string& root);

/// The setting by which a run asks for a framework definition under that name; null where it is the
/// default one.
const RunNotes::Setting* request_of(const std::string& framework, const RunNotes& notes);

/// The directory that the rule files of a framework definition document load from.
std::string rule_directory(const xml::DocumentPtr& doc, const std::string& root);

}  // namespace qorn::inspect
