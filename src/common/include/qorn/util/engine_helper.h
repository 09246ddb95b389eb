#pragma once

#include <string>

#include <qorn/document_kind.h>

namespace qorn::util {

struct EngineHelper {
  /// The banner of the suite, with the version of the build and a line end.
  static std::string format_header();

  /// Writes the legal lines to the output streams.
  static void print_copyright();
};

struct AnalyzeConstants {
  /// Directory of the knowledge base, relative to the installation root.
  static std::string DEFAULT_KB_PATH() { return "/kb"; }
};

struct CommonConstants {
  /// Directory of the framework definitions, relative to the installation root.
  static std::string DEFAULT_FWD_PATH() { return row_of(DocumentKind::FRAMEWORK).place; }
};

}  // namespace qorn::util
