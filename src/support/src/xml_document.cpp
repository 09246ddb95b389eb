#include <algorithm>
#include <limits>
#include <map>
#include <new>
#include <tuple>

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/uri.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlschemas.h>

#include <qorn/fs.h>
#include <qorn/log/error_log.h>
#include <qorn/str.h>
#include <qorn/xml.h>
#include <qorn/xml/document.h>

#include "xml_bytes.h"
#include "xml_errors.h"

namespace qorn::xml {
namespace {

constexpr fs::Readable DOCUMENT{fs::Readable::Kinds::REGULAR_FILES, 100'000'000,
                                "the file is larger than 100 MB"};
/// A document can have a fault in every element; nobody reads more than these.
constexpr std::size_t MOST_FAULTS = 1000;
/// libxml2 searches the namespaces in force one by one: thousands take minutes.
constexpr int MOST_NAMESPACES = 256;
constexpr const char* CROWDED = "an element has more than 256 attributes";
constexpr const char* TEXT_TOO_LONG = "a text is longer than the limit of 10,000,000 bytes";

struct ParserDeleter {
  void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
};
struct SchemaDeleter {
  void operator()(xmlSchema* schema) const { xmlSchemaFree(schema); }
};
struct SchemaParserDeleter {
  void operator()(xmlSchemaParserCtxt* parser) const { xmlSchemaFreeParserCtxt(parser); }
};
struct ValidatorDeleter {
  void operator()(xmlSchemaValidCtxt* validator) const { xmlSchemaFreeValidCtxt(validator); }
};
using ParserPtr = std::unique_ptr<xmlParserCtxt, ParserDeleter>;

/// A compiled schema refers to the nodes of its document; the validator refers to the schema and
/// serves one document after the other.
struct Schema {
  DocumentPtr doc;
  std::unique_ptr<xmlSchema, SchemaDeleter> compiled;
  std::unique_ptr<xmlSchemaValidCtxt, ValidatorDeleter> validator;
};

/// What the outermost RunScope keeps.
struct RunState {
  int depth = 0;
  ParserPtr parser;
  std::map<std::string, std::shared_ptr<Schema>> schemas;

  void drop() {
    schemas.clear();
    parser.reset();
  }
};

RunState& run_state() {
  static RunState state;
  return state;
}

/// libxml2's words where they name its own options or functions, said for a document's author.
std::string plain_words(std::string_view words) {
  if (words.find("Excessive depth") != std::string_view::npos) {
    return "elements are nested deeper than the limit of 256 levels";
  }
  if (words.find("huge text node") != std::string_view::npos) {
    return TEXT_TOO_LONG;
  }
  if (words.find("there is at least one entity reference") != std::string_view::npos) {
    return "an entity without a declaration can't be validated";
  }
  if (words.find("XML_PARSE_HUGE") != std::string_view::npos ||
      words.find("Huge input lookup") != std::string_view::npos) {
    return "a name, a value or a comment is longer than the parser's limit";
  }
  if (words.find("Detected an entity reference loop") != std::string_view::npos) {
    return "entities expand to more than the parser's limit";
  }
  return str::stripws(words);
}

/// Makes the errors that libxml2 has while one lives into faults.
class FaultCollector {
 public:
  /// `file` is where faults are that name no file of their own.
  FaultCollector(std::string file, std::vector<Fault>& faults)
      : file_(std::move(file)),
        faults_(faults),
        first_(faults.size()),
        handlers_(this, &FaultCollector::take, &FaultCollector::take_words) {}

  bool add(Fault fault) {
    fault.file = fault.file.empty() ? file_ : fault.file;
    const auto same = [&](const Fault& other) {
      return other.line == fault.line && other.text == fault.text && other.file == fault.file;
    };
    if (faults_.size() - first_ == MOST_FAULTS) {
      fault = {file_, 0, 0, Fault::Severity::ERROR, "further faults are not shown"};
    } else if (faults_.size() - first_ > MOST_FAULTS) {
      return false;
    }
    // libxml2 repeats a fault at once or not at all.
    const auto recent = faults_.size() > first_ + 8 ? faults_.end() - 8
                                                    : faults_.begin() + static_cast<long>(first_);
    if (std::any_of(recent, faults_.end(), same)) {
      return false;
    }
    faults_.push_back(std::move(fault));
    return true;
  }

  /// Passes on what the handler couldn't throw through libxml2, which goes on without what it had
  /// no memory for: a schema then lets more through.
  void check_memory() const {
    if (out_of_memory_) {
      throw std::bad_alloc();
    }
  }

  /// Makes sure that a failure has a reason.
  void fail(const std::string& reason) {
    check_memory();
    const auto is_error = [](const Fault& f) { return f.severity == Fault::Severity::ERROR; };
    if (std::none_of(faults_.begin() + static_cast<long>(first_), faults_.end(), is_error)) {
      add({{}, 0, 0, Fault::Severity::ERROR, reason});
    }
  }

  /// Replaces everything that was collected here by one fault.
  void replace_by(Fault fault) {
    faults_.resize(first_);
    add(std::move(fault));
  }

  void set_out_of_memory() { out_of_memory_ = true; }

  void follow_includes() { follow_includes_ = true; }

  /// For each fault from now on: the element that it is about, or null, and libxml2's code.
  using Origins = std::vector<std::pair<xmlNode*, int>>;
  void keep_origins(Origins& origins) { origins_ = &origins; }

 private:
  static void take(void* self, xmlError* error) {
    auto* collector = static_cast<FaultCollector*>(self);
    try {
      collector->take_error(*error);
    } catch (const std::bad_alloc&) {
      collector->out_of_memory_ = true;
    }
  }

  static void take_words(void* self, const char* /*format*/, ...) {
    static_cast<FaultCollector*>(self)->out_of_memory_ = true;
  }

  void take_error(const xmlError& error) {
    Fault fault;
    if (follow_includes_ && error.file != nullptr) {
      fault.file = error.file;
    }
    auto* node = static_cast<xmlNode*>(error.node);
    node = node != nullptr && node->type == XML_ATTRIBUTE_NODE ? node->parent : node;
    const bool has_node = node != nullptr && node->type == XML_ELEMENT_NODE;
    fault.line = has_node ? xmlGetLineNo(node) : error.line;
    fault.line = std::max(fault.line, 0L);
    fault.column = error.domain == XML_FROM_PARSER ? std::max(error.int2, 0) : 0;
    fault.severity =
        error.level == XML_ERR_WARNING ? Fault::Severity::WARNING : Fault::Severity::ERROR;
    fault.text = plain_words(error.message == nullptr ? "unknown fault" : error.message);
    // A text beyond the limit has the same number.
    if (error.code == XML_ERR_NO_MEMORY && fault.text != TEXT_TOO_LONG) {
      out_of_memory_ = true;
    }
    if (add(std::move(fault)) && origins_ != nullptr) {
      origins_->emplace_back(has_node ? node : nullptr, error.code);
    }
  }

  std::string file_;
  std::vector<Fault>& faults_;
  std::size_t first_;
  Origins* origins_ = nullptr;
  bool follow_includes_ = false;
  bool out_of_memory_ = false;
  ErrorHandlers handlers_;  // the last, so that the others are there before an error comes
};

/// Why and where a handler of ours stopped the parser; without a reason none did.
struct Stop {
  const char* reason = nullptr;
  long line = 0;
};

void stop_parser(void* context, const char* reason) {
  auto* parser = static_cast<xmlParserCtxt*>(context);
  auto* stop = static_cast<Stop*>(parser->_private);
  if (stop->reason == nullptr) {
    *stop = {reason, std::max(xmlSAX2GetLineNumber(context), 1)};
  }
  xmlStopParser(parser);
}

void refuse_entity(void* context, const xmlChar* /*name*/, int /*type*/,
                   const xmlChar* /*public_id*/, const xmlChar* /*system_id*/,
                   xmlChar* /*content*/) {
  stop_parser(context, "the document declares an entity, which no document may do");
}

/// Whether a text only sets the includes of a framework definition apart, which nobody asks for: a
/// node for each would cost a tenth of the time for a document with many of them.
bool is_between_includes(const xmlNode* parent, std::string_view text) {
  return parent != nullptr && name_of(parent) == "includes" && parent->parent != nullptr &&
         name_of(parent->parent) == "framework_definition" &&
         text.find_first_not_of(" \t\n\r") == std::string_view::npos;
}

/// libxml2 checks its limit only for text that comes in several pieces.
void take_text(void* context, const xmlChar* text, int length) {
  const std::string_view view(reinterpret_cast<const char*>(text),
                              static_cast<std::size_t>(length));
  if (length > XML_MAX_TEXT_LENGTH) {
    stop_parser(context, TEXT_TOO_LONG);
  } else if (!is_between_includes(static_cast<xmlParserCtxt*>(context)->node, view)) {
    xmlSAX2Characters(context, text, length);
  }
}

void start_element(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                   int namespace_count, const xmlChar** namespaces, int attribute_count,
                   int default_count, const xmlChar** attributes) {
  if (static_cast<xmlParserCtxt*>(context)->nsNr > 2 * MOST_NAMESPACES) {  // prefix and URI each
    stop_parser(context, "more than 256 namespaces are in force");
    return;
  }
  xmlSAX2StartElementNs(context, name, prefix, uri, namespace_count, namespaces, attribute_count,
                        default_count, attributes);
}

void restrict_parser(xmlParserCtxt& parser, Stop& stop) {
  parser._private = &stop;
  parser.sax->entityDecl = refuse_entity;
  parser.sax->startElementNs = start_element;
  parser.sax->characters = take_text;
  parser.sax->ignorableWhitespace = take_text;
}

DocumentPtr parse(xmlParserCtxt& parser, const std::string& content, const std::string& file,
                  FaultCollector& collector) {
  Stop stop;
  restrict_parser(parser, stop);
  DocumentPtr doc(xmlCtxtReadMemory(&parser, content.data(), static_cast<int>(content.size()),
                                    file.c_str(), nullptr,
                                    XML_PARSE_NONET | XML_PARSE_BIG_LINES | XML_PARSE_COMPACT));
  parser._private = nullptr;
  if (stop.reason != nullptr) {
    collector.replace_by({{}, stop.line, 0, Fault::Severity::ERROR, stop.reason});
    return nullptr;
  }
  // A parser that gave up over a limit still calls what it has well-formed.
  if (doc != nullptr && (parser.disableSAX != 0 || xmlDocGetRootElement(doc.get()) == nullptr)) {
    doc.reset();
  }
  if (doc == nullptr) {
    collector.fail("not a well-formed document");
  }
  collector.check_memory();
  return doc;
}

/// Near the end of its input libxml2 looks for more at every token, and grows its buffer in vain:
/// a third of the time for a small document. Bytes behind the document keep that end away, and the
/// parser takes a NUL for the end of what it has.
constexpr std::size_t LOOK_AHEAD = 256;

DocumentPtr parse_content(xmlParserCtxt& parser, std::string& content, const std::string& file,
                          std::vector<Fault>& faults) {
  const std::size_t size = content.size();
  const std::size_t known = faults.size();
  if (const long line = crowded_element(content); line > 0) {
    faults.push_back({file, line, 0, Fault::Severity::ERROR, CROWDED});
    return nullptr;
  }
  if (const long line = line_of_nul(content); line > 0) {
    faults.push_back({file, line, 0, Fault::Severity::ERROR, "a NUL byte is no character"});
    return nullptr;
  }
  {
    FaultCollector collector(file, faults);
    content.append(LOOK_AHEAD, '\0');
    DocumentPtr doc = parse(parser, content, file, collector);
    if (doc != nullptr && faults.size() == known) {
      return doc;
    }
  }
  content.resize(size);  // once more as it stands, so that faults have their true words and places
  faults.resize(known);
  FaultCollector collector(file, faults);
  return parse(parser, content, file, collector);
}

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
  bool report_stop() {
    return stop_.reason != nullptr &&
           collector_.add({part_, stop_.line, 0, Fault::Severity::ERROR, stop_.reason});
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
    constexpr std::string_view FILE_SCHEME = "file://";
    const std::string path = url.substr(url.starts_with(FILE_SCHEME) ? FILE_SCHEME.size() : 0);
    fs::FileText part = fs::read_file(path, DOCUMENT);
    if (!part.was_read()) {
      part = fs::read_file(unescape(path), DOCUMENT);
    }
    const std::string& content = part.text;
    if (!part.was_read()) {
      collector_.add({path, 0, 0, Fault::Severity::ERROR, part.reason});
      xmlLastError.domain = XML_FROM_IO;  // so that an import, other than an include, is optional
      xmlLastError.code = XML_IO_LOAD_ERROR;
      return nullptr;
    }
    if (stop_.reason == nullptr) {
      part_ = path;
      stop_.line = crowded_element(content);
      stop_.reason = stop_.line == 0 ? nullptr : CROWDED;
    }
    if (stop_.reason != nullptr) {
      return nullptr;
    }
    restrict_parser(parser, stop_);
    return new_input(content, url, parser);
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
  std::string part_;
  Stop stop_;
};

SchemaPartReader* SchemaPartReader::current = nullptr;

ParserPtr new_parser() {
  std::vector<Fault> faults;
  const FaultCollector collector({}, faults);  // the first parser fills libxml2's own tables
  ParserPtr parser(xmlNewParserCtxt());
  collector.check_memory();
  if (parser == nullptr) {
    throw std::bad_alloc();
  }
  return parser;
}

std::shared_ptr<Schema> compile_schema(const std::string& xsd, std::vector<Fault>& faults) {
  auto schema = std::make_shared<Schema>();
  schema->doc = read_document(xsd, faults);
  if (schema->doc == nullptr) {
    return nullptr;
  }
  FaultCollector collector(str::unescape_blanks(xsd), faults);
  collector.follow_includes();
  SchemaPartReader reader(collector);
  const std::unique_ptr<xmlSchemaParserCtxt, SchemaParserDeleter> parser(
      xmlSchemaNewDocParserCtxt(schema->doc.get()));
  if (parser == nullptr) {
    throw std::bad_alloc();
  }
  schema->compiled.reset(xmlSchemaParse(parser.get()));
  collector.check_memory();
  if (reader.report_stop() || schema->compiled == nullptr) {
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

std::string to_string(const Fault& fault) {
  std::string text = str::printable(fault.file);
  if (fault.line > 0) {
    text.append(":").append(std::to_string(fault.line));
  }
  return text.append(": ").append(str::printable(fault.text));
}

void report(const std::vector<Fault>& faults) {
  std::map<std::string, bool> reported;
  for (const Fault& fault : faults) {
    const std::string line = to_string(fault);
    if (reported.emplace(line, true).second) {
      const bool is_error = fault.severity == Fault::Severity::ERROR;
      log::ErrorLog(is_error ? log::level::ERROR : log::level::WARNING).stream() << line;
    }
  }
}

DocumentPtr read_document(const std::string& path, std::vector<Fault>& faults) {
  const std::string file = str::unescape_blanks(path);
  fs::FileText read = fs::read_file(file, DOCUMENT);
  std::string& content = read.text;
  if (!read.was_read()) {
    faults.push_back({file, 0, 0, Fault::Severity::ERROR, read.reason});
    return nullptr;
  }
  if (content.empty()) {
    faults.push_back({file, 0, 0, Fault::Severity::ERROR, "the document is empty"});
    return nullptr;
  }
  RunState& state = run_state();
  if (state.depth == 0) {
    return parse_content(*new_parser(), content, file, faults);
  }
  if (state.parser == nullptr) {
    state.parser = new_parser();
  }
  return parse_content(*state.parser, content, file, faults);
}

DocumentPtr read_valid_document(const std::string& path, const std::string& xsd,
                                std::vector<Fault>& faults) {
  DocumentPtr doc = read_document(path, faults);
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

DocumentPtr open_valid_document(const std::string& path, const std::string& xsd) {
  std::vector<Fault> faults;
  DocumentPtr doc = read_valid_document(path, xsd, faults);
  report(faults);
  return doc;
}

bool open_and_validate(const std::string& path, const std::string& xsd, xmlDoc*& doc) {
  doc = open_valid_document(path, xsd).release();
  return doc != nullptr;
}

RunScope::RunScope() {
  ++run_state().depth;
}

RunScope::~RunScope() {
  RunState& state = run_state();
  if (--state.depth == 0) {
    state.drop();
  }
}

void cleanup_parser() {
  run_state().drop();
  xmlCleanupParser();
}

}  // namespace qorn::xml
