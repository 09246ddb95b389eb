#include "floor.h"

#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <libxml/parser.h>
#include <libxml/xmlschemas.h>

namespace qorn::benchmarks {
namespace {

namespace fs = std::filesystem;

template <typename T>
using Owned = std::unique_ptr<T, void (*)(T*)>;

/// Reads documents, and validates them when there is a schema.
class DocumentReader {
 public:
  DocumentReader() = default;
  explicit DocumentReader(const fs::path& xsd) {
    const Owned<xmlSchemaParserCtxt> parser(xmlSchemaNewParserCtxt(xsd.c_str()),
                                            xmlSchemaFreeParserCtxt);
    schema_.reset(xmlSchemaParse(parser.get()));
    validator_.reset(xmlSchemaNewValidCtxt(schema_.get()));
    if (validator_ == nullptr) {
      throw std::runtime_error("not a usable schema: " + xsd.string());
    }
  }

  void read(const fs::path& path) const {
    const Owned<xmlDoc> doc(xmlReadFile(path.c_str(), nullptr, XML_PARSE_NONET), xmlFreeDoc);
    if (doc == nullptr ||
        (validator_ != nullptr && xmlSchemaValidateDoc(validator_.get(), doc.get()) != 0)) {
      throw std::runtime_error("not a valid document: " + path.string());
    }
  }

 private:
  Owned<xmlSchema> schema_{nullptr, xmlSchemaFree};
  Owned<xmlSchemaValidCtxt> validator_{nullptr, xmlSchemaFreeValidCtxt};
};

void read_lines(const fs::path& path, std::vector<std::string>* kept) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (kept != nullptr) {
      kept->push_back(line);
    }
  }
  if (!file.eof()) {
    throw std::runtime_error("can't read " + path.string());
  }
}

/// The files of a folder, which may be missing.
fs::directory_iterator files_of(const fs::path& folder) {
  return fs::exists(folder) ? fs::directory_iterator(folder) : fs::directory_iterator();
}

}  // namespace

void read_installation(const fs::path& root, bool keep_lines) {
  std::vector<std::string> lines;
  std::vector<std::string>* kept = keep_lines ? &lines : nullptr;
  read_lines(root / "nodes", kept);
  DocumentReader(root / "etc/qorn.xsd").read(root / "etc/qorn.xml");
  DocumentReader(root / "etc/type_map.xsd").read(root / "etc/CLIPS_type_map.xml");
  const DocumentReader definitions(root / "etc/fwd.xsd");
  for (const auto& entry : files_of(root / "etc/fwd")) {
    definitions.read(entry);
  }
  for (const auto& entry : files_of(root / "kb/rules")) {
    read_lines(entry, nullptr);
  }
  DocumentReader(root / "etc/postprocessor/table.xsd").read(root / "etc/postprocessor/table.xml");
  DocumentReader(root / "etc/schema_map.xsd").read(root / "kb/data/msg_schema.xml");
  for (const auto& entry : files_of(root / "etc/providers")) {
    DocumentReader().read(entry);
  }
  if (fs::exists(root / "groups.xml")) {
    DocumentReader(root / "etc/nodegroup.xsd").read(root / "groups.xml");
  }
  for (const auto& entry : files_of(root / "groups")) {
    read_lines(entry, kept);
  }
}

}  // namespace qorn::benchmarks
