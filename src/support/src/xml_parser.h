#pragma once

#include <array>
#include <string>
#include <string_view>

#include <libxml/parser.h>

#include <qorn/fs.h>
#include <qorn/xml/parser.h>

namespace qorn::xml {
#pragma GCC visibility push(hidden)

/// Why and where a document is given up; without a reason it isn't.
struct Refusal {
  const char* reason = nullptr;
  long line = 0;
};

/// What is known of one document while it is parsed. It is counted here, since libxml2's own counts
/// and limits are not the same in all versions.
struct Progress {
  static constexpr std::size_t MOST_LEVELS = 256;

  ReadOptions options;
  Refusal refusal;                                   // the first one
  std::size_t level = 0;                             // of the innermost open element
  std::array<int, MOST_LEVELS + 1> namespaces = {};  // in force at each level
  const xmlNode* text = nullptr;                     // the latest text node
  std::size_t text_size = 0;                         // its bytes
  bool is_complete = false;  // the parser came to the end, and all elements have ended
  long line_of_rest = 0;     // of what stands behind that end; 0: nothing does
};

/// Reads a document's bytes.
fs::FileText read_bytes(const std::string& path);

/// Takes over what the document is known by: its path as it was opened, where libxml2 writes %20
/// for a blank.
void set_url(xmlDoc& doc, xmlChar* url);

/// What a document is refused for before libxml2 gets it.
Refusal refusal_of(std::string_view content);

/// Has the parser note how far it is and refuse what no document may hold. `progress` must outlive
/// the parsing.
void watch(xmlParserCtxt& parser, Progress& progress);

#pragma GCC visibility pop
}  // namespace qorn::xml
