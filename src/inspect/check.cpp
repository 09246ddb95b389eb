#include "check.h"

#include <algorithm>
#include <iostream>

#include <qorn/fs.h>
#include <qorn/node.h>
#include <qorn/preproc/preprocessor.h>
#include <qorn/str.h>
#include <qorn/xml.h>
#include <qorn/xml/xpath.h>

#include "capture.h"
#include "check_elements.h"
#include "check_schema.h"
#include "checks.h"
#include "finding_report.h"
#include "installation.h"

namespace qorn::inspect {
namespace {

constexpr std::size_t LONGEST_COMMAND = 256;

/// What ends the reading of a provider document and is no matter of its schema.
void check_provider(const std::string& path, const xml::DocumentPtr& doc, Survey& survey) {
  const xml::XPath xpath(doc);
  for (const xmlNode* role : xpath.nodes("//configuration/role[.!='']")) {
    survey.provider_roles.push_back({xml::content_of(role), xml::place_of(role)});
  }
  const xmlNode* command = xpath.first("//configuration/command");
  if (const std::size_t size = xml::content_of(command).size(); size > LONGEST_COMMAND) {
    survey.findings.add(
        "command-cut", xml::place_of(command),
        "<command> has " + std::to_string(size) + " characters; a run cuts it at 256");
  }
  if (survey.findings.has_error(path)) {
    return;
  }
  provider_config provider;
  Config config;
  const Capture capture;
  if (preproc::Preprocessor::parse_provider_config_xml(provider, path, config, "") != 0) {
    const std::vector<std::string> lines = capture.error_lines();
    survey.findings.add("provider-unusable", {path, 0},
                        lines.empty() ? "can't be used" : lines.front());
  }
}

void note_suppressions(const xml::DocumentPtr& doc, Survey& survey) {
  for (const xmlNode* id :
       xml::XPath(doc).nodes("/*/analyzer[1]/suppressions[1]/suppress/id[1][.!='']")) {
    survey.suppressed.push_back({xml::content_of(id), xml::place_of(id)});
  }
}

void note_message_ids(const xml::DocumentPtr& doc, Survey& survey) {
  for (const xmlNode* id : xml::XPath(doc).nodes("/*/*/message_id")) {
    survey.message_ids.insert(xml::content_of(id));
  }
}

void check_content(const std::string& path, DocumentKind kind, const xml::DocumentPtr& doc,
                   Survey& survey) {
  check_elements(kind, doc, survey.findings);
  switch (kind) {
    case DocumentKind::FRAMEWORK:
      survey.graph.add(path, doc);
      break;
    case DocumentKind::PROVIDER:
      return check_provider(path, doc, survey);
    case DocumentKind::MAIN:
      note_suppressions(doc, survey);
      break;
    case DocumentKind::MESSAGE_SCHEMA:
      note_message_ids(doc, survey);
      break;
    default:
      break;
  }
  const auto references = references_of(kind, doc, survey.root);
  survey.references.insert(survey.references.end(), references.begin(), references.end());
  if (path == installed_place(DocumentKind::MAIN, survey.root)) {
    survey.main_references = references;
  }
  for (const Reference& reference : references) {
    if (is_file(reference.path)) {
      survey.files.emplace(fs::abspath(reference.path), reference.kind);
    }
  }
}

/// Gives the kind that the document turns out to be.
DocumentKind check_document(const std::string& path, DocumentKind kind, Survey& survey) {
  std::vector<xml::Fault> ignored;
  xml::DocumentPtr doc = xml::read_document(path, ignored);
  const DocumentKind by_place = kind_of(path, survey.root, doc);
  kind = kind == DocumentKind::UNKNOWN || by_place == DocumentKind::REPORT ? by_place : kind;
  doc = check_schema(path, kind, survey.root, survey.findings);
  if (doc == nullptr) {
    survey.names_are_missing |= kind == DocumentKind::FRAMEWORK;
  } else if (kind == DocumentKind::UNKNOWN) {
    survey.findings.add("unknown-kind", {path, 0},
                        "no kind of document of an installation: its root element is <" +
                            std::string(xml::name_of(xml::root_of(doc))) + ">");
  } else {
    check_content(path, kind, doc, survey);
  }
  return kind;
}

/// A named file that is neither a document nor a rule file is a node file.
DocumentKind kind_of_named(const std::string& path) {
  constexpr fs::Readable NODE_FILE{fs::Readable::Kinds::REGULAR_FILES, 512'000'000, "too large"};
  if (path.ends_with(".clp")) {
    return DocumentKind::RULE_FILE;
  }
  if (path.ends_with(".xml")) {
    return DocumentKind::UNKNOWN;
  }
  const fs::FileText file = fs::read_file(path, NODE_FILE);
  return !file.was_read() || str::stripws(file.text.substr(0, 1000)).starts_with('<')
             ? DocumentKind::UNKNOWN
             : DocumentKind::NODE_FILE;
}

/// The files to look at: all of the installation, and those of the command line.
void add_files(const Question& question, const std::vector<std::string>& named, Survey& survey) {
  for (const std::string& path : installed_files(survey.root)) {
    survey.files.emplace(path,
                         path.ends_with(".clp") ? DocumentKind::RULE_FILE : DocumentKind::UNKNOWN);
  }
  for (const std::string& path : named) {
    survey.files.emplace(path, kind_of_named(path));
  }
  if (!question.node_file.empty()) {
    survey.files[fs::abspath(question.node_file)] = DocumentKind::NODE_FILE;
  }
  if (!question.node_group_file.empty()) {
    survey.files[fs::abspath(question.node_group_file)] = DocumentKind::GROUPS;
  }
  survey.files.emplace(installed_place(DocumentKind::MAIN, survey.root), DocumentKind::MAIN);
}

/// Reads each document once; one may add others that it names.
void check_documents(const std::vector<std::string>& named, Survey& survey) {
  std::set<std::string> done;
  for (bool more = true; more;) {
    more = false;
    const std::map<std::string, DocumentKind> files = survey.files;
    for (const auto& [path, kind] : files) {
      if (!done.insert(path).second) {
        continue;
      }
      more = true;
      const bool counts =
          named.empty() || std::find(named.begin(), named.end(), path) != named.end();
      if (kind == DocumentKind::RULE_FILE || kind == DocumentKind::NODE_FILE) {
        (kind == DocumentKind::RULE_FILE ? survey.findings.read.rule_files
                                         : survey.findings.read.node_files) += counts ? 1 : 0;
        continue;
      }
      survey.findings.read.documents += counts ? 1 : 0;
      survey.files[path] = check_document(path, kind, survey);
    }
  }
}

std::vector<std::string> group_files(const Question& question, const Survey& survey) {
  std::vector<std::string> files;
  if (!question.node_group_file.empty()) {
    files.push_back(fs::abspath(question.node_group_file));
  }
  for (const Reference& reference : survey.references) {
    if (reference.kind == DocumentKind::GROUPS && is_file(reference.path)) {
      files.push_back(fs::abspath(reference.path));
    }
  }
  return files;
}

}  // namespace

int check_installation(const Question& question) {
  const preproc::RunScope scope;
  Survey survey(node::get_default_path());
  std::vector<std::string> named;
  for (const std::string& path : question.documents) {
    named.push_back(fs::abspath(path));
  }
  add_files(question, named, survey);
  check_documents(named, survey);
  check_references(survey);
  check_rules(survey);
  for (const auto& [path, kind] : survey.files) {
    if (kind == DocumentKind::NODE_FILE) {
      check_node_file(survey, path);
    }
  }
  for (const std::string& file : group_files(question, survey)) {
    check_node_groups(survey, file);
  }
  survey.findings.settle(named);
  if (question.wants_json()) {
    print_json(survey.findings, std::cout, survey.root);
  } else {
    print_text(survey.findings, std::cout, Terminal(question.color), question.verbose);
  }
  const Findings::Counts counts = survey.findings.count();
  return counts.errors > 0 ? 1 : question.strict && counts.warnings > 0 ? 3 : 0;
}

}  // namespace qorn::inspect
