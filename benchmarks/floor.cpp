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

template <typename T, void (*Free)(T*)>
struct Deleter {
  void operator()(T* object) const { Free(object); }
};
using DocumentPtr = std::unique_ptr<xmlDoc, Deleter<xmlDoc, xmlFreeDoc>>;

class Schema {
 public:
  explicit Schema(const fs::path& path) {
    const std::unique_ptr<xmlSchemaParserCtxt,
                          Deleter<xmlSchemaParserCtxt, xmlSchemaFreeParserCtxt>>
        parser(xmlSchemaNewParserCtxt(path.c_str()));
    schema_.reset(xmlSchemaParse(parser.get()));
    validator_.reset(xmlSchemaNewValidCtxt(schema_.get()));
    if (schema_ == nullptr || validator_ == nullptr) {
      throw std::runtime_error("not a usable schema: " + path.string());
    }
  }

  bool accepts(xmlDoc& doc) const { return xmlSchemaValidateDoc(validator_.get(), &doc) == 0; }

 private:
  std::unique_ptr<xmlSchema, Deleter<xmlSchema, xmlSchemaFree>> schema_;
  std::unique_ptr<xmlSchemaValidCtxt, Deleter<xmlSchemaValidCtxt, xmlSchemaFreeValidCtxt>>
      validator_;
};

void read_document(const fs::path& path, const Schema* schema) {
  const DocumentPtr doc(xmlReadFile(path.c_str(), nullptr, XML_PARSE_NONET));
  if (doc == nullptr || (schema != nullptr && !schema->accepts(*doc))) {
    throw std::runtime_error("not a valid document: " + path.string());
  }
}

void read_documents(const fs::path& folder, const Schema* schema) {
  for (const auto& entry : fs::directory_iterator(folder)) {
    read_document(entry, schema);
  }
}

void read_lines(const fs::path& path, std::vector<std::string>* kept) {
  std::ifstream file(path);
  std::string line;
  while (std::getline(file, line)) {
    if (kept != nullptr) {
      kept->push_back(line);
    }
  }
  if (!file.eof()) {
    throw std::runtime_error("can't read " + path.string());
  }
}

void read_all_lines(const fs::path& folder, std::vector<std::string>* kept) {
  if (fs::is_directory(folder)) {
    for (const auto& entry : fs::directory_iterator(folder)) {
      read_lines(entry, kept);
    }
  }
}

}  // namespace

void read_installation(const fs::path& root, bool keep_lines) {
  const auto read_one = [&](const char* document, const char* xsd) {
    const Schema schema(root / xsd);
    read_document(root / document, &schema);
  };
  std::vector<std::string> lines;
  std::vector<std::string>* kept = keep_lines ? &lines : nullptr;
  read_lines(root / "nodes", kept);
  read_one("etc/qorn.xml", "etc/qorn.xsd");
  read_one("etc/CLIPS_type_map.xml", "etc/type_map.xsd");
  const Schema fwd_schema(root / "etc/fwd.xsd");
  read_documents(root / "etc/fwd", &fwd_schema);
  read_all_lines(root / "kb/rules", nullptr);
  read_one("etc/postprocessor/table.xml", "etc/postprocessor/table.xsd");
  read_one("kb/data/msg_schema.xml", "etc/schema_map.xsd");
  if (fs::is_directory(root / "etc/providers")) {
    read_documents(root / "etc/providers", nullptr);
  }
  if (fs::exists(root / "groups.xml")) {
    read_one("groups.xml", "etc/nodegroup.xsd");
    read_all_lines(root / "groups", kept);
  }
}

}  // namespace qorn::benchmarks
