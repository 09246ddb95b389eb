#include <algorithm>
#include <iterator>

#include <qorn/document_kind.h>

namespace qorn {

const DocumentKindRow& row_of(DocumentKind kind) {
  return *std::find_if(std::begin(DOCUMENT_KINDS), std::end(DOCUMENT_KINDS),
                       [&](const DocumentKindRow& row) { return row.kind == kind; });
}

std::string schema_path(DocumentKind kind, const std::string& root) {
  const std::string schema = row_of(kind).schema;
  return schema.empty() ? schema : root + schema;
}

std::string installed_place(DocumentKind kind, const std::string& root) {
  return root + row_of(kind).place;
}

}  // namespace qorn
