#include <algorithm>
#include <filesystem>

#include <qorn/str.h>

#include "suggestion.h"
#include "survey.h"

namespace qorn::inspect {
namespace {

bool is_file(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(path, ignored);
}

/// The names that could have been written instead.
std::vector<std::string> candidates_for(const Reference& reference, const Survey& survey) {
  std::vector<std::string> names = survey.names_of(reference.kind);
  if (reference.kind == Kind::RULE_FILE) {
    const std::string directory =
        reference.path.substr(0, reference.path.size() - reference.name.size());
    for (const auto& [path, kind] : survey.files) {
      if (kind == Kind::RULE_FILE && path.starts_with(directory)) {
        names.push_back(path.substr(directory.size()));
      }
    }
  } else if (reference.kind == Kind::FRAMEWORK && reference.name.ends_with(".xml")) {
    for (std::string& name : names) {
      name = "fwd/" + name + ".xml";
    }
  }
  return names;
}

void check_reference(const Reference& reference, Survey& survey) {
  if (is_file(reference.path)) {
    return;
  }
  survey.findings.add(FindingKind::MISSING_FILE, reference.place,
                      std::string("the ") + inspect::name_of(reference.kind) + " '" +
                          reference.name + "' is missing: " + reference.path +
                          did_you_mean(reference.name, candidates_for(reference, survey)));
}

void check_cycles(Survey& survey) {
  for (const auto& cycle : survey.graph.cycles()) {
    std::string way;
    std::vector<Finding::Related> related;
    for (const Reference* include : cycle) {
      way += short_path(include->place.file, survey.root) + " -> ";
      related.push_back({include->place, "includes " + include->path});
    }
    survey.findings
        .add(FindingKind::INCLUDE_CYCLE, cycle.back()->place,
             "includes come back to their start: " + way +
                 short_path(cycle.back()->path, survey.root))
        .related = std::move(related);
  }
}

void check_idle_definitions(Survey& survey) {
  for (const Definition* definition : survey.graph.in_order()) {
    if (definition->reason.empty() && definition->of_kind(Kind::PROVIDER).empty() &&
        definition->of_kind(Kind::RULE_FILE).empty() &&
        definition->of_kind(Kind::FRAMEWORK).empty() &&
        !survey.findings.has_error(definition->path)) {
      survey.findings.add(FindingKind::IDLE_FRAMEWORK, {definition->path, 0},
                          "the framework definition has neither provider, rule nor include");
    }
  }
}

void check_unnamed_providers(Survey& survey) {
  std::set<std::string> named;
  for (const Reference& reference : survey.references) {
    named.insert(reference.path);
  }
  for (const auto& [path, kind] : survey.files) {
    if (kind == Kind::PROVIDER && named.count(path) == 0) {
      survey.findings
          .add(FindingKind::UNNAMED_PROVIDER, {path, 0},
               "no framework definition names this provider")
          .follow_up = survey.names_are_missing;
    }
  }
}

}  // namespace

void check_references(Survey& survey) {
  for (const Reference& reference : survey.references) {
    check_reference(reference, survey);
  }
  check_cycles(survey);
  check_idle_definitions(survey);
  check_unnamed_providers(survey);
}

}  // namespace qorn::inspect
