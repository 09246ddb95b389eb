#include <new>

#include <libxml/parserInternals.h>
#include <libxml/uri.h>

#include <qorn/str.h>
#include <qorn/xml/schema.h>

#include "xml_faults.h"
#include "xml_parser.h"
#include "xml_run_state.h"

namespace qorn::xml {
namespace {

/// While one lives, what a schema includes or imports is read as every document is.
class SchemaPartReader {
 public:
  explicit SchemaPartReader(FaultCollector& collector)
      : collector_(collector), previous_(xmlGetExternalEntityLoader()) {
    current = this;
    xmlSetExternalEntityLoader(&SchemaPartReader::load);
  }
  SchemaPartReader(const SchemaPartReader&) = delete;
  SchemaPartReader& operator=(const SchemaPartReader&) = delete;
  ~SchemaPartReader() {
    xmlSetExternalEntityLoader(previous_);
    current = nullptr;
  }

  /// Adds why a part was given up; false when none was.
  bool report_refusal() {
    const Refusal& refusal = progress_.refusal;
    return refusal.reason != nullptr &&
           collector_.add({.file = part_, .line = refusal.line, .text = refusal.reason});
  }

 private:
  static xmlParserInput* load(const char* url, const char* /*id*/, xmlParserCtxt* parser) {
    try {
      return url == nullptr ? nullptr : current->read(url, *parser);
    } catch (const std::bad_alloc&) {
      current->collector_.set_out_of_memory();
      return nullptr;
    }
  }

  xmlParserInput* read(const std::string& url, xmlParserCtxt& parser) {
    if (progress_.refusal.reason != nullptr) {
      return nullptr;
    }
    constexpr std::string_view FILE_SCHEME = "file://";
    part_ = url.substr(url.starts_with(FILE_SCHEME) ? FILE_SCHEME.size() : 0);
    fs::FileText file = read_bytes(part_);
    if (!file.was_read()) {
      file = read_bytes(unescape(part_));
    }
    const std::string& content = file.text;
    if (!file.was_read()) {
      collector_.add({.file = part_, .text = file.reason});
      set_last_error(parser);
      return nullptr;
    }
    progress_ = {};
    progress_.refusal = refusal_of(content);
    if (progress_.refusal.reason != nullptr) {
      return nullptr;
    }
    watch(parser, progress_);
    return new_input(content, url, parser);
  }

  /// An import, other than an include, is optional when libxml2's latest error is one of reading,
  /// which it has here itself: of a file that can't be there.
  void set_last_error(xmlParserCtxt& parser) {
    collector_.ignore_errors(true);
    xmlNewInputFromFile(&parser, "/dev/null/none");
    collector_.ignore_errors(false);
  }

  static std::string unescape(const std::string& path) {
    const std::unique_ptr<char, void (*)(void*)> text(
        xmlURIUnescapeString(path.c_str(), 0, nullptr), xmlFree);
    return text == nullptr ? path : text.get();
  }

  static xmlParserInput* new_input(const std::string& content, const std::string& url,
                                   xmlParserCtxt& parser) {
    xmlParserInputBuffer* buffer = xmlParserInputBufferCreateMem(
        content.data(), static_cast<int>(content.size()), XML_CHAR_ENCODING_NONE);
    if (buffer == nullptr) {
      throw std::bad_alloc();
    }
    xmlParserInput* input = xmlNewIOInputStream(&parser, buffer, XML_CHAR_ENCODING_NONE);
    if (input == nullptr) {
      xmlFreeParserInputBuffer(buffer);
      throw std::bad_alloc();
    }
    input->filename = xmlMemStrdup(url.c_str());
    if (input->filename == nullptr) {
      xmlFreeInputStream(input);
      throw std::bad_alloc();
    }
    return input;
  }

  static SchemaPartReader* current;
  FaultCollector& collector_;
  xmlExternalEntityLoader previous_;
  std::string part_;   // the latest
  Progress progress_;  // with it
};

SchemaPartReader* SchemaPartReader::current = nullptr;

std::shared_ptr<Schema> compile_schema(const std::string& xsd, std::vector<Fault>& faults) {
  auto schema = std::make_shared<Schema>();
  schema->doc = read_document(xsd, faults);
  if (schema->doc == nullptr) {
    return nullptr;
  }
  const std::string file = str::unescape_blanks(xsd);
  // Its includes are relative to it, and to a URL alone.
  set_url(*schema->doc, xmlCanonicPath(reinterpret_cast<const xmlChar*>(file.c_str())));
  FaultCollector collector(file, faults);
  collector.follow_includes();
  SchemaPartReader reader(collector);
  const std::unique_ptr<xmlSchemaParserCtxt, Deleter> parser(
      xmlSchemaNewDocParserCtxt(schema->doc.get()));
  if (parser == nullptr) {
    throw std::bad_alloc();
  }
  schema->compiled.reset(xmlSchemaParse(parser.get()));
  collector.check_memory();
  if (reader.report_refusal() || schema->compiled == nullptr) {
    collector.fail("not a usable schema");
    return nullptr;
  }
  schema->validator.reset(xmlSchemaNewValidCtxt(schema->compiled.get()));
  if (schema->validator == nullptr) {
    throw std::bad_alloc();
  }
  collector.check_memory();
  return schema;
}

std::shared_ptr<Schema> schema_of(const std::string& xsd, std::vector<Fault>& faults) {
  RunState& state = run_state();
  const auto known = state.schemas.find(xsd);
  if (known != state.schemas.end()) {
    return known->second;
  }
  std::shared_ptr<Schema> schema = compile_schema(xsd, faults);
  if (schema != nullptr && state.depth > 0) {
    state.schemas[xsd] = schema;
  }
  return schema;
}

bool validate(xmlDoc& doc, const Schema& schema, FaultCollector& collector) {
  if (xmlSchemaValidateDoc(schema.validator.get(), &doc) != 0) {
    collector.fail("the document could not be validated");
    return false;
  }
  collector.check_memory();
  return true;
}

}  // namespace

DocumentPtr read_valid_document(const std::string& path, const std::string& xsd,
                                std::vector<Fault>& faults, const ReadOptions& options) {
  DocumentPtr doc = read_document(path, faults, options);
  if (doc == nullptr) {
    return nullptr;
  }
  const std::shared_ptr<Schema> schema = schema_of(xsd, faults);
  if (schema == nullptr) {
    return nullptr;
  }
  FaultCollector collector(str::unescape_blanks(path), faults);
  return validate(*doc, *schema, collector) ? std::move(doc) : nullptr;
}

std::vector<ElementFault> validate_document(xmlDoc& doc, const std::string& file,
                                            const std::string& xsd) {
  std::vector<Fault> faults;
  FaultCollector::Origins origins;
  const std::shared_ptr<Schema> schema = schema_of(xsd, faults);
  if (schema != nullptr) {
    faults.clear();  // warnings about the schema
    FaultCollector collector(file, faults);
    collector.keep_origins(origins);
    validate(doc, *schema, collector);
  }
  origins.resize(faults.size());
  std::vector<ElementFault> found;
  for (std::size_t i = 0; i < faults.size(); ++i) {
    found.push_back({std::move(faults[i]), origins[i].first, origins[i].second});
  }
  return found;
}

DocumentPtr open_valid_document(const std::string& path, const std::string& xsd,
                                const ReadOptions& options) {
  std::vector<Fault> faults;
  DocumentPtr doc = read_valid_document(path, xsd, faults, options);
  report(faults);
  return doc;
}

bool open_and_validate(const std::string& path, const std::string& xsd, xmlDoc*& doc) {
  doc = open_valid_document(path, xsd).release();
  return doc != nullptr;
}

}  // namespace qorn::xml
