#include "xml_parser.h"

#include <algorithm>
#include <new>
#include <utility>

#include <libxml/SAX2.h>

#include <qorn/str.h>

#include "libxml2_versions.h"
#include "xml_bytes.h"
#include "xml_faults.h"
#include "xml_run_state.h"

namespace qorn::xml {
namespace {

constexpr fs::Readable DOCUMENT{fs::Readable::Kinds::REGULAR_FILES, 100'000'000,
                                "the file is larger than 100 MB"};
constexpr std::size_t MOST_TEXT = 10'000'000;
/// libxml2 searches the namespaces in force one by one: thousands take minutes.
constexpr int MOST_NAMESPACES = 256;
constexpr const char* REST = "Extra content at the end of the document";  // as libxml2 says it

Progress& progress_of(void* parser) {
  return *static_cast<Progress*>(static_cast<xmlParserCtxt*>(parser)->_private);
}

long line_in(void* parser) {
  return std::max(xmlSAX2GetLineNumber(parser), 1);
}

void refuse(void* parser, const char* reason) {
  Refusal& refusal = progress_of(parser).refusal;
  if (refusal.reason == nullptr) {
    refusal = {reason, line_in(parser)};
  }
  xmlStopParser(static_cast<xmlParserCtxt*>(parser));
}

void start_element(void* parser, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                   int namespace_count, const xmlChar** namespaces, int attribute_count,
                   int default_count, const xmlChar** attributes) {
  Progress& progress = progress_of(parser);
  if (progress.level == Progress::MOST_LEVELS) {
    return refuse(parser, "elements are nested deeper than the limit of 256 levels");
  }
  const int in_force = progress.namespaces[progress.level] + namespace_count;
  if (in_force > MOST_NAMESPACES) {
    return refuse(parser, "more than 256 namespaces are in force");
  }
  progress.namespaces[++progress.level] = in_force;
  xmlSAX2StartElementNs(parser, name, prefix, uri, namespace_count, namespaces, attribute_count,
                        default_count, attributes);
}

void end_element(void* parser, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri) {
  --progress_of(parser).level;
  xmlSAX2EndElementNs(parser, name, prefix, uri);
}

void end_document(void* parser) {
  Progress& progress = progress_of(parser);
  progress.is_complete = progress.level == 0;
  const xmlParserInput& input = *static_cast<xmlParserCtxt*>(parser)->input;
  progress.line_of_rest = input.cur < input.end && *input.cur != 0 ? line_in(parser) : 0;
  xmlSAX2EndDocument(parser);
}

bool is_dropped(const ReadOptions& options, const xmlNode& element, std::string_view text) {
  return options.drops_blanks_in != nullptr &&
         text.find_first_not_of(" \t\n\r") == std::string_view::npos &&
         options.drops_blanks_in(element);
}

void take_text(void* parser, const xmlChar* content, int length) {
  const auto* context = static_cast<xmlParserCtxt*>(parser);
  if (context->wellFormed == 0 || context->node == nullptr) {
    return;  // the rest of a name or of a comment that is too long isn't a text
  }
  Progress& progress = progress_of(parser);
  const std::string_view text(reinterpret_cast<const char*>(content),
                              static_cast<std::size_t>(length));
  if (is_dropped(progress.options, *context->node, text)) {
    return;
  }
  // libxml2 may give a text in pieces, which make one node.
  const bool continues = progress.text != nullptr && progress.text == context->node->last;
  progress.text_size = text.size() + (continues ? progress.text_size : 0);
  if (progress.text_size > MOST_TEXT) {
    return refuse(parser, "a text is longer than the limit of 10,000,000 bytes");
  }
  xmlSAX2Characters(parser, content, length);
  progress.text = context->node->last;
}

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

DocumentPtr parse(xmlParserCtxt& parser, const std::string& content, const std::string& file,
                  const ReadOptions& options, FaultCollector& collector) {
  Progress progress;
  progress.options = options;
  watch(parser, progress);
  DocumentPtr doc(xmlCtxtReadMemory(&parser, content.data(), static_cast<int>(content.size()),
                                    file.c_str(), nullptr,
                                    XML_PARSE_NONET | XML_PARSE_BIG_LINES | XML_PARSE_COMPACT));
  if (const Refusal& refusal = progress.refusal; refusal.reason != nullptr) {
    collector.replace_by({.line = refusal.line, .text = refusal.reason});
    return nullptr;
  }
  // A parser that gave up over a limit of its own may call what it has well-formed.
  bool is_whole = progress.is_complete && doc != nullptr && xmlDocGetRootElement(doc.get());
  // 2.12, and 2.14 and later, let it through in silence behind an error that isn't fatal.
  if (is_whole && progress.line_of_rest > 0) {
    is_whole = false;
    collector.add({.line = progress.line_of_rest, .text = REST});
  }
  if (!is_whole) {
    collector.fail("not a well-formed document");
  }
  collector.check_memory();
  if (!is_whole) {
    return nullptr;
  }
  set_url(*doc, xmlStrdup(reinterpret_cast<const xmlChar*>(file.c_str())));
  return doc;
}

DocumentPtr parse_content(xmlParserCtxt& parser, std::string& content, const std::string& file,
                          const ReadOptions& options, std::vector<Fault>& faults) {
  const std::size_t size = content.size();
  const std::size_t known = faults.size();
  content.append(look_ahead(), '\0');
  while (true) {
    FaultCollector collector(file, faults);
    DocumentPtr doc = parse(parser, content, file, options, collector);
    if (content.size() == size || (doc != nullptr && faults.size() == known)) {
      return doc;
    }
    content.resize(size);  // once more as it stands, so that faults have their true words, places
    faults.resize(known);
  }
}

}  // namespace

fs::FileText read_bytes(const std::string& path) {
  return fs::read_file(path, DOCUMENT);
}

void set_url(xmlDoc& doc, xmlChar* url) {
  if (url == nullptr) {
    throw std::bad_alloc();
  }
  xmlFree(const_cast<xmlChar*>(doc.URL));
  doc.URL = url;
}

Refusal refusal_of(std::string_view content) {
  if (const long line = crowded_element(content); line > 0) {
    return {"an element has more than 256 attributes", line};
  }
  if (const long line = line_of_nul(content); line > 0) {
    return {"a NUL byte is no character", line};
  }
  return {};
}

void watch(xmlParserCtxt& parser, Progress& progress) {
  const auto refuse_entity = [](void* context, auto... /*declaration*/) {
    refuse(context, "the document declares an entity, which no document may do");
  };
  parser._private = &progress;
  parser.sax->entityDecl = refuse_entity;
  parser.sax->unparsedEntityDecl = refuse_entity;
  parser.sax->startElementNs = start_element;
  parser.sax->endElementNs = end_element;
  parser.sax->endDocument = end_document;
  parser.sax->characters = take_text;
  parser.sax->ignorableWhitespace = take_text;
}

DocumentPtr read_document(const std::string& path, std::vector<Fault>& faults,
                          const ReadOptions& options) {
  const std::string file = str::unescape_blanks(path);
  fs::FileText read = read_bytes(file);
  std::string& content = read.text;
  Fault fault{.file = file, .text = std::move(read.reason)};
  if (read.was_read()) {
    const Refusal refusal =
        content.empty() ? Refusal{"the document is empty"} : refusal_of(content);
    fault.line = refusal.line;
    fault.text = refusal.reason == nullptr ? "" : refusal.reason;
  }
  if (!fault.text.empty()) {
    faults.push_back(std::move(fault));
    return nullptr;
  }
  RunState& state = run_state();
  if (state.depth == 0) {
    return parse_content(*new_parser(), content, file, options, faults);
  }
  if (state.parser == nullptr) {
    state.parser = new_parser();
  }
  return parse_content(*state.parser, content, file, options, faults);
}

}  // namespace qorn::xml
