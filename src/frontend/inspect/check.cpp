#include "check.h"

#include <algorithm>
#include <filesystem>
#include <iostream>

#include <qorn/fs.h>
#include <qorn/node.h>
#include <qorn/preproc/preprocessor.h>
#include <qorn/str.h>
#include <qorn/xml.h>
#include <qorn/xml/xpath.h>

#include "check_elements.h"
#include "check_schema.h"
#include "run_loader.h"
#include "survey.h"

namespace qorn::inspect {
namespace {

constexpr std::size_t LONGEST_COMMAND = 256;

bool is_file(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(path, ignored);
}

/// What ends the reading of a provider document and is no matter of its schema.
void check_provider(const std::string& path, const xml::DocumentPtr& doc, Survey& survey) {
  const xml::XPath xpath(doc);
  for (const xmlNode* role : xpath.nodes("//configuration/role[.!='']")) {
    survey.provider_roles.push_back({Kind::UNKNOWN, xml::content_of(role), "", place_of(role)});
  }
  const xmlNode* command = xpath.first("//configuration/command");
  if (const std::size_t size = xml::content_of(command).size(); size > LONGEST_COMMAND) {
    survey.faults.error(
        "command-cut", place_of(command),
        "<command> has " + std::to_string(size) + " characters; a run cuts it at 256");
  }
  if (survey.faults.has_error(path)) {
    return;
  }
  provider_config provider;
  Config config;
  const Capture capture;
  if (preproc::Preprocessor::parse_provider_config_xml(provider, path, config, "") != 0) {
    const std::vector<std::string> lines = capture.error_lines();
    survey.faults.error("provider-unusable", {path, 0},
                        lines.empty() ? "can't be used" : lines.front());
  }
}

void note_suppressions(const xml::DocumentPtr& doc, Survey& survey) {
  for (const xmlNode* id :
       xml::XPath(doc).nodes("/*/analyzer[1]/suppressions[1]/suppress/id[1][.!='']")) {
    survey.suppressed.push_back({Kind::UNKNOWN, xml::content_of(id), "", place_of(id)});
  }
}

void note_message_ids(const xml::DocumentPtr& doc, Survey& survey) {
  for (const xmlNode* id : xml::XPath(doc).nodes("/*/*/message_id")) {
    survey.message_ids.insert(xml::content_of(id));
  }
}

void check_content(const std::string& path, Kind kind, const xml::DocumentPtr& doc,
                   Survey& survey) {
  check_elements(kind, doc, survey.faults);
  switch (kind) {
    case Kind::FRAMEWORK:
      survey.graph.add(path, doc);
      break;
    case Kind::PROVIDER:
      return check_provider(path, doc, survey);
    case Kind::MAIN:
      note_suppressions(doc, survey);
      break;
    case Kind::MESSAGE_SCHEMA:
      note_message_ids(doc, survey);
      break;
    default:
      break;
  }
  const auto references = survey.graph.reader().read(kind, doc);
  survey.references.insert(survey.references.end(), references.begin(), references.end());
  for (const Reference& reference : references) {
    if (is_file(reference.path)) {
      survey.files.emplace(fs::abspath(reference.path), reference.kind);
    }
  }
}

/// Gives the kind that the document turns out to be.
Kind check_document(const std::string& path, Kind kind, Survey& survey) {
  std::vector<xml::Fault> ignored;
  xml::DocumentPtr doc = xml::read_document(path, ignored);
  const Kind by_place = kind_of(path, survey.root, doc);
  kind = kind == Kind::UNKNOWN || by_place == Kind::REPORT ? by_place : kind;
  doc = check_schema(path, kind, survey.root, survey.faults);
  if (doc == nullptr) {
    survey.names_are_missing |= kind == Kind::FRAMEWORK;
  } else if (kind == Kind::UNKNOWN) {
    survey.faults.warning("unknown-kind", {path, 0},
                          "no kind of document of an installation: its root element is <" +
                              std::string(xml::name_of(xml::root_of(doc))) + ">");
  } else {
    check_content(path, kind, doc, survey);
  }
  return kind;
}

/// A named file that is neither a document nor a rule file is a node file.
Kind kind_of_named(const std::string& path) {
  constexpr fs::Readable NODE_FILE{fs::Readable::Kinds::REGULAR_FILES, 512'000'000, "too large"};
  if (path.ends_with(".clp")) {
    return Kind::RULE_FILE;
  }
  if (path.ends_with(".xml")) {
    return Kind::UNKNOWN;
  }
  const fs::FileText file = fs::read_file(path, NODE_FILE);
  return !file.was_read() || str::stripws(file.text.substr(0, 1000)).starts_with('<')
             ? Kind::UNKNOWN
             : Kind::NODE_FILE;
}

/// The files to look at: all of the installation, and those of the command line.
void add_files(const CheckOptions& options, const std::vector<std::string>& named, Survey& survey) {
  for (const std::string& path : installed_files(survey.root)) {
    survey.files.emplace(path, path.ends_with(".clp") ? Kind::RULE_FILE : Kind::UNKNOWN);
  }
  for (const std::string& path : named) {
    survey.files.emplace(path, kind_of_named(path));
  }
  if (!options.node_file.empty()) {
    survey.files[fs::abspath(options.node_file)] = Kind::NODE_FILE;
  }
  if (!options.node_group_file.empty()) {
    survey.files[fs::abspath(options.node_group_file)] = Kind::GROUPS;
  }
  survey.files.emplace(survey.root + "/etc/qorn.xml", Kind::MAIN);
}

/// Reads each document once; one may add others that it names.
void check_documents(const std::vector<std::string>& named, Survey& survey) {
  std::set<std::string> done;
  for (bool more = true; more;) {
    more = false;
    const std::map<std::string, Kind> files = survey.files;
    for (const auto& [path, kind] : files) {
      if (!done.insert(path).second) {
        continue;
      }
      more = true;
      const bool counts =
          named.empty() || std::find(named.begin(), named.end(), path) != named.end();
      if (kind == Kind::RULE_FILE || kind == Kind::NODE_FILE) {
        (kind == Kind::RULE_FILE ? survey.faults.read.rule_files : survey.faults.read.node_files) +=
            counts ? 1 : 0;
        continue;
      }
      survey.faults.read.documents += counts ? 1 : 0;
      survey.files[path] = check_document(path, kind, survey);
    }
  }
}

std::vector<std::string> group_files(const CheckOptions& options, const Survey& survey) {
  std::vector<std::string> files;
  if (!options.node_group_file.empty()) {
    files.push_back(fs::abspath(options.node_group_file));
  }
  for (const Reference& reference : survey.references) {
    if (reference.kind == Kind::GROUPS && is_file(reference.path)) {
      files.push_back(fs::abspath(reference.path));
    }
  }
  return files;
}

}  // namespace

std::vector<std::string> Survey::names_of(Kind kind) const {
  std::vector<std::string> names;
  for (const auto& [path, each] : files) {
    if (each == kind && path.ends_with(".xml")) {
      const std::size_t start = path.rfind('/') + 1;
      names.push_back(path.substr(start, path.size() - start - 4));
    }
  }
  return names;
}

std::string short_path(const std::string& path, const std::string& root) {
  return path.starts_with(root + "/") ? path.substr(root.size() + 1) : path;
}

int check(const CheckOptions& options, bool json, const Terminal& terminal) {
  const xml::RunScope schemas;
  Survey survey(node::get_default_path());
  std::vector<std::string> named;
  for (const std::string& path : options.documents) {
    named.push_back(fs::abspath(path));
  }
  add_files(options, named, survey);
  check_documents(named, survey);
  check_references(survey);
  check_rules(survey);
  for (const auto& [path, kind] : survey.files) {
    if (kind == Kind::NODE_FILE) {
      check_nodes(survey, path);
    }
  }
  for (const std::string& file : group_files(options, survey)) {
    check_groups(survey, file);
  }
  survey.faults.settle(named);
  if (json) {
    survey.faults.print_json(std::cout, survey.root);
  } else {
    survey.faults.print(std::cout, terminal, options.verbose);
  }
  return survey.faults.exit_status(options.strict);
}

}  // namespace qorn::inspect
