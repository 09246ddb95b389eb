#pragma once

#include <memory>
#include <string>
#include <vector>

#include <libxml/tree.h>

#include <qorn/xml/faults.h>

namespace qorn::xml {

struct DocumentDeleter {
  void operator()(xmlDoc* doc) const { xmlFreeDoc(doc); }
};
using DocumentPtr = std::unique_ptr<xmlDoc, DocumentDeleter>;

/// How a document is read.
struct ReadOptions {
  /// Whether a text of blanks alone that stands directly in `element`, which is still being read,
  /// gets no node: nodes for the blanks between many elements cost a tenth of the time for their
  /// document. Null: every text gets one.
  bool (*drops_blanks_in)(const xmlNode& element) = nullptr;
};

/// Reads and parses a document. Null when it can't be read or isn't well-formed, with at least
/// one error in `faults`; warnings may be added on success too.
DocumentPtr read_document(const std::string& path, std::vector<Fault>& faults,
                          const ReadOptions& options = {});

/// Drops the parser and the schemas that a run keeps, then calls xmlCleanupParser, which frees
/// libxml2's built-in types under every compiled schema.
void cleanup_parser();

}  // namespace qorn::xml
