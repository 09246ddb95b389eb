#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "reference.h"

namespace qorn::inspect {

/// A framework definition document and what it names, right or wrong.
struct Definition {
  std::string path;
  std::string name;
  std::string reason;  // why it can't be read; empty for a well-formed document
  std::vector<Reference> references;
  std::string rule_directory;

  std::vector<const Reference*> of_kind(DocumentKind kind) const;
};

/// Framework definition documents, each read once, whatever else is wrong with them.
class FrameworkGraph {
 public:
  explicit FrameworkGraph(std::string root) : root_(std::move(root)) {}

  /// Reads the document at `path` and all that it leads to, depth first, in document order.
  void load(const std::string& path);

  /// Takes a document that somebody else has read, and not what it leads to.
  void add(const std::string& path, const xml::DocumentPtr& doc);

  /// Null for a document that wasn't loaded.
  const Definition* find(const std::string& path) const;

  /// In the order in which a run reads them.
  const std::vector<const Definition*>& in_order() const { return in_order_; }

  /// The chains of includes that come back to their start, one for each include that closes one.
  std::vector<std::vector<const Reference*>> cycles() const;

  /// The bare names of those that can be read, for suggestions.
  std::vector<std::string> names() const;

 private:
  Definition& make(const std::string& path);

  std::string root_;
  std::map<std::string, Definition> definitions_;
  std::vector<const Definition*> in_order_;
};

}  // namespace qorn::inspect
