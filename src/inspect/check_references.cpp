#include <algorithm>
#include <filesystem>
#include <set>

#include <qorn/fs.h>

#include "checks.h"
#include "installation.h"
#include "suggestion.h"

namespace qorn::inspect {
namespace {

/// The base names without ".xml" of the documents of a kind.
std::vector<std::string> names_of(DocumentKind kind, const Survey& survey) {
  std::vector<std::string> names;
  for (const auto& [path, each] : survey.files) {
    if (each == kind && path.ends_with(".xml")) {
      names.push_back(std::filesystem::path(path).stem());
    }
  }
  return names;
}

/// The names that could have been written instead.
std::vector<std::string> candidates_for(const Reference& reference, const Survey& survey) {
  std::vector<std::string> names = names_of(reference.kind, survey);
  if (reference.kind == DocumentKind::RULE_FILE) {
    const std::string directory =
        reference.path.substr(0, reference.path.size() - reference.name.size());
    for (const auto& [path, kind] : survey.files) {
      if (kind == DocumentKind::RULE_FILE && path.starts_with(directory)) {
        names.push_back(path.substr(directory.size()));
      }
    }
  } else if (reference.kind == DocumentKind::FRAMEWORK && reference.name.ends_with(".xml")) {
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
  survey.findings.add("missing-file", reference.place,
                      std::string("the ") + row_of(reference.kind).name + " '" + reference.name +
                          "' is missing: " + reference.path +
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
        .add("include-cycle", cycle.back()->place,
             "includes come back to their start: " + way +
                 short_path(cycle.back()->path, survey.root))
        .related = std::move(related);
  }
}

void check_idle_definitions(Survey& survey) {
  for (const Definition* definition : survey.graph.in_order()) {
    if (definition->reason.empty() && definition->of_kind(DocumentKind::PROVIDER).empty() &&
        definition->of_kind(DocumentKind::RULE_FILE).empty() &&
        definition->of_kind(DocumentKind::FRAMEWORK).empty() &&
        !survey.findings.has_error(definition->path)) {
      survey.findings.add("idle-framework", {definition->path, 0},
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
    if (kind == DocumentKind::PROVIDER && named.count(path) == 0) {
      survey.findings
          .add("unnamed-provider", {path, 0}, "no framework definition names this provider")
          .follow_up = survey.names_are_missing;
    }
  }
}

/// The table and report documents that a run would have in its one list.
struct PostprocessorDocuments {
  const Reference* table = nullptr;  // one without an error, if there is one
  std::vector<const Reference*> reports;

  void add(const std::vector<Reference>& references, const Survey& survey) {
    for (const Reference& reference : references) {
      const auto file = survey.files.find(fs::abspath(reference.path));
      if (reference.kind != DocumentKind::TABLE || file == survey.files.end()) {
        continue;
      }
      if (file->second == DocumentKind::REPORT) {
        reports.push_back(&reference);
      } else if (!survey.findings.has_error(file->first)) {
        table = &reference;
      }
    }
  }
};

/// Adds what the definition at `path`, and all below it, name.
void add_from(const std::string& path, std::set<std::string>& seen, const Survey& survey,
              PostprocessorDocuments& documents) {
  std::vector<std::string> unvisited{path};
  while (!unvisited.empty()) {
    const Definition* definition = survey.graph.find(unvisited.back());
    unvisited.pop_back();
    if (definition == nullptr || !seen.insert(definition->path).second) {
      continue;
    }
    documents.add(definition->references, survey);
    for (const Reference* include : definition->of_kind(DocumentKind::FRAMEWORK)) {
      unvisited.push_back(include->path);
    }
  }
}

/// `told` are the places of reports that were told about.
void check_reports_of(const std::set<std::string>& asked, Survey& survey,
                      std::set<std::string>& told) {
  PostprocessorDocuments documents;
  documents.add(survey.main_references, survey);
  std::set<std::string> seen;
  for (const std::string& path : asked) {
    add_from(path, seen, survey, documents);
  }
  if (documents.table == nullptr) {
    return;
  }
  for (const Reference* report : documents.reports) {
    if (!told.insert(to_string(report->place)).second) {
      continue;
    }
    survey.findings.add(
        "report-not-read", report->place,
        "the report document '" + report->name +
            "' is not read in a run that has a table document as well: " + documents.table->path +
            " is named at " + to_string(documents.table->place));
  }
}

/// Reports beside a table, in the run that the main document asks for and in one of each
/// definition.
void check_reports(Survey& survey) {
  if (std::none_of(survey.files.begin(), survey.files.end(),
                   [](const auto& file) { return file.second == DocumentKind::REPORT; })) {
    return;
  }
  std::set<std::string> asked;
  for (const Reference& reference : survey.main_references) {
    if (reference.kind == DocumentKind::FRAMEWORK) {
      asked.insert(reference.path);
    }
  }
  std::set<std::string> told;
  check_reports_of(asked, survey, told);
  for (const Definition* definition : survey.graph.in_order()) {
    check_reports_of({definition->path}, survey, told);
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
  check_reports(survey);
}

}  // namespace qorn::inspect
