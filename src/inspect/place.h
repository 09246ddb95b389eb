#pragma once

#include <string>

#include <libxml/tree.h>

namespace qorn::inspect {

/// A place in a file.
struct Place {
  std::string file;
  long line = 0;  // 0: the whole file

  /// The place of a node of a document, by the document's path as it was opened.
  static Place of(const xmlNode* node);
};

/// "FILE:LINE", or "FILE" for a place without a line; control bytes are escaped.
std::string to_string(const Place& place);

/// "etc/fwd/cpu.xml" for a file below the installation root, else the whole path.
std::string short_path(const std::string& path, const std::string& root);

}  // namespace qorn::inspect
