#include "list.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <set>

#include <qorn/datastore/datastore_parse_utility.h>
#include <qorn/document_kind.h>
#include <qorn/fs.h>
#include <qorn/node.h>
#include <qorn/preproc/clips_parser.h>
#include <qorn/str.h>
#include <qorn/written_path.h>

#include "installation.h"
#include "loaded_run.h"
#include "node_group_document.h"
#include "reference.h"
#include "trouble.h"

namespace qorn::inspect {
namespace {

using Arguments = std::vector<std::string>;

/// The documents right below `directory`, which ends in a slash and may be missing.
std::vector<std::string> documents_in(const std::string& directory) {
  std::vector<std::string> paths;
  try {
    for (const std::string& name : fs::list_files(directory)) {
      if (name.ends_with(".xml")) {
        paths.push_back(directory + name);
      }
    }
  } catch (const std::exception&) {
    paths.clear();
  }
  return paths;
}

void list_frameworks(const Arguments& /*arguments*/) {
  const std::string root = node::get_default_path();
  for (const std::string& path : documents_in(installed_place(DocumentKind::FRAMEWORK, root))) {
    std::cout << str::printable(written_path::framework_name(path)) << '\n';
  }
}

void list_providers(const Arguments& /*arguments*/) {
  const std::string root = node::get_default_path();
  for (const std::string& path : documents_in(installed_place(DocumentKind::PROVIDER, root))) {
    std::vector<xml::Fault> faults;
    if (kind_of(path, root, xml::read_document(path, faults)) == DocumentKind::PROVIDER) {
      std::cout << str::printable(std::filesystem::path(path).stem().string()) << '\n';
    }
  }
}

void list_groups(const Arguments& arguments) {
  LoadedRun run;
  run.take_command_line(arguments);
  run.read_main_document();
  if (run.config.node_group_file.empty()) {
    return;
  }
  std::set<std::string> printed;
  for (const std::string& name :
       read_node_group_document(run.config.node_group_file, run.config.root).names()) {
    if (printed.insert(name).second) {
      std::cout << str::printable(name) << '\n';
    }
  }
}

void list_nodes(const Arguments& arguments) {
  LoadedRun run;
  run.take_command_line(arguments);
  run.read_nodes();
  std::set<std::string> printed;
  for (const Node& node : run.config.nodes) {
    if (printed.insert(node.hostname).second) {
      std::cout << node.hostname << '\n';
    }
  }
}

/// What a run has opened, in the order of opening; each file stands with its first reason.
class FilesOfRun {
 public:
  explicit FilesOfRun(const LoadedRun& run)
      : config_(run.config),
        notes_(run.notes()),
        group_file_(written_path::plain_file(config_.node_group_file)) {
    note_asked_files();
    for (const Reference& reference : notes_.named) {
      note(written_path::plain_file(reference.path),
           std::string(row_of(reference.kind).name) + ", named at " + to_string(reference.place));
    }
    note_schemas();
  }

  void print_opened() {
    for (const std::string& path : notes_.opened) {
      if (path == group_file_) {
        print_stores();  // a run opens them ahead of the groups
      }
      print(path, reason_of(path));
    }
  }

  void print_stores() {
    for (const datastore::DataStoreConfig& store : config_.datastores) {
      std::string source;
      bool read_only = false;
      datastore::parse_sqlite_params(store.parameters, source, read_only);
      print(fs::abspath(str::wordexp(source)), "datastore " + store.name);
    }
  }

 private:
  void note(const std::string& path, const std::string& reason) { reasons_.emplace(path, reason); }

  void note_asked_files() {
    for (const char* file : preproc::clips_parser::DIAGNOSIS_FILES) {
      note(config_.root + file, "diagnosis rules");
    }
    note(written_path::plain_file(config_.node_file), "node file, command line -f");
    note(written_path::plain_file(config_.config_file), "main document");
    note(config_.config_xsd, "schema of the main document");
    note(installed_place(DocumentKind::TYPE_MAP, config_.root), "type map");
    note(schema_path(DocumentKind::TYPE_MAP, config_.root), "schema");
    note(group_file_, "node group document");
    for (const std::string& name : config_.fwds->names) {
      note(framework_path(name, config_.root), "framework definition, " + source_of(name));
    }
  }

  /// Where a framework definition is asked for.
  std::string source_of(const std::string& name) const {
    const RunNotes::Setting* request = request_of(name, notes_);
    return request == nullptr        ? "the default"
           : request->source.empty() ? "named at " + to_string(request->place)
                                     : request->source;
  }

  void note_schemas() {
    if (std::any_of(notes_.named.begin(), notes_.named.end(), [](const Reference& each) {
          return each.kind == DocumentKind::KNOWLEDGE_BASE;
        })) {
      note_schema(DocumentKind::KNOWLEDGE_BASE);  // which is that of reports as well
    }
    for (const DocumentKindRow& row : DOCUMENT_KINDS) {
      note_schema(row.kind);
    }
  }

  void note_schema(DocumentKind kind) {
    note(schema_path(kind, config_.root), std::string("schema of each ") + row_of(kind).name);
  }

  /// What nothing names is the one of its kind that is read when none is named, or what a schema
  /// includes.
  std::string reason_of(const std::string& path) const {
    if (const auto found = reasons_.find(path); found != reasons_.end()) {
      return found->second;
    }
    const DocumentKind kind = kind_of(path, config_.root, nullptr);
    return kind == DocumentKind::UNKNOWN ? "part of a schema"
                                         : std::string(row_of(kind).name) + ", the default";
  }

  void print(const std::string& path, const std::string& reason) {
    if (printed_.insert(path).second) {
      std::cout << str::printable(path) << '\t' << str::printable(reason) << '\n';
    }
  }

  const Config& config_;
  const RunNotes& notes_;
  const std::string group_file_;
  std::map<std::string, std::string> reasons_;
  std::set<std::string> printed_;
};

void list_files(const Arguments& arguments) {
  LoadedRun run;
  run.take_command_line(arguments);
  if (run.config.node_file.empty()) {
    run.config.nodes.resize(1);  // nothing is discovered: which nodes there are changes no file
  }
  try {
    run.read_nodes();
    run.read_documents();
  } catch (const Trouble&) {
    FilesOfRun(run).print_opened();
    throw;
  }
  FilesOfRun files(run);
  files.print_opened();
  files.print_stores();
}

struct ListRow {
  const char* name;
  void (*print)(const Arguments&);
};
constexpr ListRow LISTS[] = {{"frameworks", list_frameworks},
                             {"providers", list_providers},
                             {"groups", list_groups},
                             {"nodes", list_nodes},
                             {"files", list_files}};

}  // namespace

std::vector<std::string> list_names() {
  std::vector<std::string> names;
  for (const ListRow& row : LISTS) {
    names.emplace_back(row.name);
  }
  return names;
}

int print_list(const Question& question) {
  std::find_if(std::begin(LISTS), std::end(LISTS), [&](const ListRow& row) {
    return row.name == question.list;
  })->print(question.run_arguments);
  return EXIT_SUCCESS;
}

}  // namespace qorn::inspect
