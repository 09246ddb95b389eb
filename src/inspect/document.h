#pragma once

#include <string>
#include <vector>

#include <qorn/preproc/fwd_parser.h>
#include <qorn/xml/document.h>

#include "place.h"

namespace qorn::inspect {

/// The kinds of files that an installation consists of.
enum class Kind {
  UNKNOWN,
  MAIN,
  FRAMEWORK,
  PROVIDER,
  CUSTOM_PROVIDERS,
  TYPE_MAP,
  MESSAGE_SCHEMA,
  TABLE,
  REPORT,
  KNOWLEDGE_BASE,
  GROUPS,
  RULES_DOCUMENT,
  ANALYSIS_MAP,
  CATALOG,
  RULE_FILE,
  NODE_FILE
};

/// What a kind of file is called in a sentence.
const char* name_of(Kind kind);

/// The schema of a kind of document below the root, and the name of its root element; both empty
/// for a kind without any.
struct Grammar {
  const char* schema;
  const char* root_element;
};
Grammar grammar_of(Kind kind);

/// The kind of the file `path`: by its place under `root`, then by the document's content. `doc`
/// is null for a file that is no document, or no well-formed one.
Kind kind_of(const std::string& path, const std::string& root, const xml::DocumentPtr& doc);

/// The documents and rule files of the installation under `root`, sorted.
std::vector<std::string> installed_files(const std::string& root);

/// A file that a document names.
struct Reference {
  Kind kind = Kind::UNKNOWN;
  std::string name;  // as it is written
  std::string path;  // absolute, except for what a run takes from its working directory
  Place place;
};

/// Finds the files that documents name, and where, by the paths that a run would compute.
class ReferenceReader {
 public:
  explicit ReferenceReader(const std::string& root);

  /// In the order in which a run reads them; empty names, which a run refuses, are left out.
  std::vector<Reference> read(Kind kind, const xml::DocumentPtr& doc);

  /// The path of a framework definition as an option or the main document names it.
  std::string framework_path(const std::string& name);

  /// The bare name of a framework definition document.
  std::string framework_name(const std::string& path);

  /// The directory that the rule files of a framework definition document load from.
  std::string rule_directory(const xml::DocumentPtr& doc) const;

 private:
  std::string resolve(Kind in, Kind target, const std::string& name, const xmlNode* element);

  Config config_;
  preproc::FWDParser parser_;
};

}  // namespace qorn::inspect
