#pragma once

#include <map>
#include <memory>
#include <string>

#include <libxml/parser.h>
#include <libxml/xmlschemas.h>

#include <qorn/xml/parser.h>

namespace qorn::xml {
#pragma GCC visibility push(hidden)

/// Frees what libxml2 made.
struct Deleter {
  void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
  void operator()(xmlSchema* schema) const { xmlSchemaFree(schema); }
  void operator()(xmlSchemaParserCtxt* parser) const { xmlSchemaFreeParserCtxt(parser); }
  void operator()(xmlSchemaValidCtxt* validator) const { xmlSchemaFreeValidCtxt(validator); }
};
using ParserPtr = std::unique_ptr<xmlParserCtxt, Deleter>;

/// A compiled schema refers to the nodes of its document; the validator refers to the schema and
/// serves one document after the other.
struct Schema {
  DocumentPtr doc;
  std::unique_ptr<xmlSchema, Deleter> compiled;
  std::unique_ptr<xmlSchemaValidCtxt, Deleter> validator;
};

/// What the outermost detail::DocumentScope keeps.
struct RunState {
  int depth = 0;
  ParserPtr parser;
  std::map<std::string, std::shared_ptr<Schema>> schemas;
};

RunState& run_state();

#pragma GCC visibility pop
}  // namespace qorn::xml
