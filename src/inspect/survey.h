#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "finding.h"
#include "framework_graph.h"
#include "reference.h"

namespace qorn::inspect {

/// A word of a document that stands for something elsewhere: an id, a role.
struct Mention {
  std::string word;
  Place place;
};

/// What the checks know of an installation, and what they found so far.
struct Survey {
  explicit Survey(std::string installation_root)
      : root(std::move(installation_root)), graph(root) {}

  std::string root;
  FrameworkGraph graph;                       // all framework definitions
  std::map<std::string, DocumentKind> files;  // everything to read, with its kind
  /// The files that documents name, framework definitions' includes and rule files among them.
  std::vector<Reference> references;
  std::vector<Reference> main_references;  // those of the installed main document alone
  std::set<std::string> message_ids;       // that message schemas, rules and diagnoses know
  std::vector<Mention> suppressed;         // ids, where suppressions name them
  std::vector<Mention> provider_roles;     // role words, where provider documents name them
  Findings findings;

  /// Whether a framework definition can't be read, so that its names are not known.
  bool names_are_missing = false;
};

}  // namespace qorn::inspect
