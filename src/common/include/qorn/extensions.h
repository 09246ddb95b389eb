#pragma once

#include <string>

namespace qorn {

/// A postprocessor extension that a document names.
struct PostprocessorExtension {
  std::string name;  // the element's text, as written
};

/// An analyzer extension that a framework definition names; ordered by name.
struct AnalyzerExtensionType {
  std::string name;  // the element's text, as written

  friend bool operator<(const AnalyzerExtensionType& a, const AnalyzerExtensionType& b) {
    return a.name < b.name;
  }
};

/// A message catalog that a framework definition names.
struct MessageCatalog {
  std::string name;  // the element's text, as written
};

}  // namespace qorn
