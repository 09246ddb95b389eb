#pragma once

namespace qorn::detail {
#pragma GCC visibility push(hidden)

/// While one lives, a schema is compiled once for a path, and one parser serves all documents.
/// Everything is dropped with it. Scopes nest; the outermost counts.
class DocumentScope {
 public:
  DocumentScope();
  DocumentScope(const DocumentScope&) = delete;
  DocumentScope& operator=(const DocumentScope&) = delete;
  ~DocumentScope();
};

#pragma GCC visibility pop
}  // namespace qorn::detail
