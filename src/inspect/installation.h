#pragma once

#include <string>
#include <vector>

#include <qorn/document_kind.h>
#include <qorn/xml/document.h>

namespace qorn::inspect {

/// The kind of the file `path`: by its place under `root`, then by the document's content. `doc`
/// is null for a file that is no document, or no well-formed one.
DocumentKind kind_of(const std::string& path, const std::string& root, const xml::DocumentPtr& doc);

/// The documents and rule files of the installation under `root`, sorted.
std::vector<std::string> installed_files(const std::string& root);

/// Whether `path` is a regular file, or leads to one.
bool is_file(const std::string& path);

/// "etc/fwd/cpu.xml" for a file below the installation root, else the whole path.
std::string short_path(const std::string& path, const std::string& root);

}  // namespace qorn::inspect
