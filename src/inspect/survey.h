#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "finding.h"
#include "framework_graph.h"
#include "node_group.h"

namespace qorn::inspect {

/// What the checks know of an installation, and what they found so far.
struct Survey {
  explicit Survey(std::string installation_root)
      : root(std::move(installation_root)), graph(root) {}

  std::string root;
  FrameworkGraph graph;               // all framework definitions
  std::map<std::string, Kind> files;  // everything to read, with its kind
  /// The files that documents name, framework definitions' includes and rule files among them.
  std::vector<Reference> references;
  std::set<std::string> message_ids;      // that message schemas, rules and diagnoses know
  std::vector<Reference> suppressed;      // ids, where suppressions name them
  std::vector<Reference> provider_roles;  // role words, where provider documents name them
  Findings findings;

  /// Whether a framework definition can't be read, so that its names are not known.
  bool names_are_missing = false;

  /// The base names without ".xml" of the documents of a kind.
  std::vector<std::string> names_of(Kind kind) const;
};

// The checks beyond single documents; each adds what it finds to the survey.

/// Files that are named and missing, cycles, definitions that do nothing, providers that nobody
/// names.
void check_references(Survey& survey);

/// Rule files that framework definitions name, what these load, and the diagnoses.
void check_rules(Survey& survey);

/// A node file: its lines, role words, hosts that come twice, and the roles that providers ask
/// for.
void check_nodes(Survey& survey, const std::string& file);

/// A node group document: groups without nodes, names that no group or definition has.
void check_groups(Survey& survey, const std::string& file);

}  // namespace qorn::inspect
