#pragma once

namespace qorn::xml {

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
