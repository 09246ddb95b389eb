#pragma once

#include <memory>
#include <string>
#include <vector>

#include <libxml/tree.h>

/// Documents and schemas: reading, validation, and the words about their faults. Only regular
/// files of at most 100 MB are read; nothing is unpacked or fetched; a document that declares
/// entities is refused. Blanks in a path may be escaped by a backslash.
namespace qorn::xml {

struct DocumentDeleter {
  void operator()(xmlDoc* doc) const { xmlFreeDoc(doc); }
};
using DocumentPtr = std::unique_ptr<xmlDoc, DocumentDeleter>;

/// One fault of a document, of its schema, or of reading either.
struct Fault {
  enum class Severity : int { WARNING, ERROR };

  std::string file;
  long line = 0;    // 0: the fault has no line
  long column = 0;  // 0: unknown
  Severity severity = Severity::ERROR;
  std::string text;
};

/// "FILE:LINE: text", or "FILE: text" for a fault without a line; control bytes are escaped.
std::string to_string(const Fault& fault);

/// Logs each fault as one line, errors at level 3 and warnings at level 4; what stands among
/// `faults` twice is logged once.
void report(const std::vector<Fault>& faults);

/// Reads and parses a document. Null when it can't be read or isn't well-formed, with at least
/// one error in `faults`; warnings may be added on success too.
DocumentPtr read_document(const std::string& path, std::vector<Fault>& faults);

/// Reads a document and validates it against the schema at `xsd`. Null on any failure, with at
/// least one error in `faults`; a fault of the schema names the schema.
DocumentPtr read_valid_document(const std::string& path, const std::string& xsd,
                                std::vector<Fault>& faults);

/// A fault that validation found, with what it is about.
struct ElementFault {
  Fault fault;
  xmlNode* element = nullptr;  // of the validated document; null when the fault is about none
  int code = 0;                // of libxml2's xmlParserErrors
};

/// Validates a document in memory, which `file` stands for in the faults, against the schema at
/// `xsd`; gives what it finds, nothing for a valid document. The document stays as it is. A
/// fault of the schema names the schema and no element.
std::vector<ElementFault> validate_document(xmlDoc& doc, const std::string& file,
                                            const std::string& xsd);

/// Like read_valid_document; reports the faults itself.
DocumentPtr open_valid_document(const std::string& path, const std::string& xsd);

/// Parses and validates like open_valid_document, which reports the faults. True on success,
/// with `doc` a document that the caller frees; false leaves `doc` null.
bool open_and_validate(const std::string& path, const std::string& xsd, xmlDoc*& doc);

/// While one lives, a schema is compiled once for a path, and one parser serves all documents.
/// Everything is dropped with it: a file that changes is seen by the next run. Scopes nest; the
/// outermost counts.
class RunScope {
 public:
  RunScope();
  RunScope(const RunScope&) = delete;
  RunScope& operator=(const RunScope&) = delete;
  ~RunScope();
};

/// Drops what a RunScope keeps, then calls xmlCleanupParser, which frees libxml2's built-in types
/// under every compiled schema.
void cleanup_parser();

}  // namespace qorn::xml
