#pragma once

#include <string>
#include <vector>

#include <libxml/tree.h>

#include <qorn/xml/faults.h>
#include <qorn/xml/parser.h>

namespace qorn::xml {

/// Reads a document and validates it against the schema at `xsd`. Null on any failure, with at
/// least one error in `faults`; a fault of the schema names the schema.
DocumentPtr read_valid_document(const std::string& path, const std::string& xsd,
                                std::vector<Fault>& faults, const ReadOptions& options = {});

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
DocumentPtr open_valid_document(const std::string& path, const std::string& xsd,
                                const ReadOptions& options = {});

/// Parses and validates like open_valid_document, which reports the faults. True on success,
/// with `doc` a document that the caller frees; false leaves `doc` null.
bool open_and_validate(const std::string& path, const std::string& xsd, xmlDoc*& doc);

}  // namespace qorn::xml
