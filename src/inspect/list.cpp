#include "list.h"

#include <algorithm>
#include <functional>
#include <iostream>
#include <map>
#include <set>

#include <qorn/datastore/datastore_parse_utility.h>
#include <qorn/fs.h>
#include <qorn/node.h>
#include <qorn/str.h>

#include "framework_graph.h"
#include "node_group.h"
#include "rule_file.h"
#include "run_loader.h"

namespace qorn::inspect {
namespace {

using Arguments = std::vector<std::string>;

/// The documents right below `directory`, which may be missing.
std::vector<std::string> documents_in(const std::string& directory) {
  std::vector<std::string> paths;
  try {
    for (const std::string& name : fs::list_files(directory)) {
      if (name.ends_with(".xml")) {
        paths.push_back(directory + "/" + name);
      }
    }
  } catch (const std::exception&) {
    paths.clear();
  }
  return paths;
}

void list_frameworks(const Arguments& /*arguments*/) {
  const std::string root = node::get_default_path();
  ReferenceReader reader(root);
  for (const std::string& path : documents_in(root + "/etc/fwd")) {
    std::cout << str::printable(reader.framework_name(path)) << '\n';
  }
}

void list_providers(const Arguments& /*arguments*/) {
  const std::string root = node::get_default_path();
  for (const std::string& path : documents_in(root + "/etc/providers")) {
    std::vector<xml::Fault> faults;
    if (kind_of(path, root, xml::read_document(path, faults)) == Kind::PROVIDER) {
      const std::size_t start = path.rfind('/') + 1;
      std::cout << str::printable(path.substr(start, path.size() - start - 4)) << '\n';
    }
  }
}

void list_groups(const Arguments& arguments) {
  LoadedRun run;
  run.read_arguments(arguments);
  run.read_main_document();
  if (run.config.node_group_file.empty()) {
    return;
  }
  std::set<std::string> printed;
  for (const std::string& name :
       read_node_groups(run.config.node_group_file, run.config.root).names()) {
    if (printed.insert(name).second) {
      std::cout << str::printable(name) << '\n';
    }
  }
}

void list_nodes(const Arguments& arguments) {
  LoadedRun run;
  run.read_arguments(arguments);
  run.read_nodes();
  std::set<std::string> printed;
  for (const Node& node : run.config.nodes) {
    if (printed.insert(node.hostname).second) {
      std::cout << node.hostname << '\n';
    }
  }
}

/// What one run reads, in the order of reading; each file stands with its first reason.
class FilesOfRun {
 public:
  explicit FilesOfRun(const Config& config)
      : config_(config), root_(config.root), graph_(config.root) {}

  void print() {
    add_nodes_and_main_document();
    add(root_ + "/etc/CLIPS_type_map.xml", "type map");
    add(root_ + "/etc/type_map.xsd", "schema");
    add_frameworks();
    add_named(Kind::TABLE, "/etc/postprocessor/table.xml");
    for (const Reference& document : named_[Kind::KNOWLEDGE_BASE]) {
      add(document);
    }
    add_schema(named_[Kind::KNOWLEDGE_BASE].empty() ? Kind::UNKNOWN : Kind::KNOWLEDGE_BASE);
    add_named(Kind::MESSAGE_SCHEMA, "/kb/data/msg_schema.xml");
    for (const Reference& provider : named_[Kind::PROVIDER]) {
      add(provider);
    }
    add_stores();
    add_groups();
  }

 private:
  void add(const std::string& path, const std::string& reason) {
    if (printed_.insert(path).second) {
      std::cout << str::printable(path) << '\t' << str::printable(reason) << '\n';
    }
  }

  void add(const Reference& reference) {
    add(reference.path,
        std::string(name_of(reference.kind)) + ", named at " + to_string(reference.place));
  }

  void add_schema(Kind kind) {
    const std::string schema = grammar_of(kind).schema;
    if (!schema.empty()) {
      add(root_ + schema, std::string("schema of each ") + name_of(kind));
    }
  }

  void add_nodes_and_main_document() {
    if ((config_.operations & operation::ANALYZE) != 0) {
      add(root_ + "/kb/rules/diagnosis.clp", "diagnosis rules");
      add(root_ + "/kb/rules/shared_diagnosis.clp", "diagnosis rules");
    }
    if (!config_.node_file.empty()) {
      add(str::unescape_blanks(config_.node_file), "node file, command line -f");
    }
    const std::string main = str::unescape_blanks(config_.config_file);
    add(main, "main document");
    add(config_.config_xsd, "schema of the main document");
    std::vector<xml::Fault> faults;
    const xml::DocumentPtr doc = xml::read_document(main, faults);
    if (doc != nullptr) {
      main_references_ = graph_.reader().read(Kind::MAIN, doc);
    }
    note(main_references_, {Kind::TABLE});
  }

  void note(const std::vector<Reference>& references, const std::set<Kind>& kinds) {
    for (const Reference& reference : references) {
      if (kinds.count(reference.kind) != 0) {
        named_[reference.kind].push_back(reference);
      }
    }
  }

  void add_frameworks() {
    std::map<std::string, std::string> reasons;
    const auto note_include = [&](const Reference& reference) {
      if (reference.kind == Kind::FRAMEWORK) {
        reasons.emplace(reference.path,
                        "framework definition, named at " + to_string(reference.place));
      }
    };
    if (!names_differ()) {
      std::for_each(main_references_.begin(), main_references_.end(), note_include);
    }
    for (const std::string& name : config_.fwds->names) {
      const std::string path = graph_.reader().framework_path(name);
      const bool given = (config_.option_flags & option_flag::FWD_GIVEN) != 0;
      reasons.emplace(path, given ? "framework definition, command line -F"
                                  : "framework definition, the default");
      graph_.load(path);
    }
    for (const Definition* definition : graph_.in_order()) {
      std::for_each(definition->references.begin(), definition->references.end(), note_include);
    }
    for (const Definition* definition : graph_.in_order()) {
      add(definition->path, reasons.at(definition->path));
      add_schema(Kind::FRAMEWORK);
      add_definition(*definition);
    }
  }

  /// Whether the definitions asked for are not those of the main document.
  bool names_differ() const {
    std::vector<std::string> names;
    for (const Reference& reference : main_references_) {
      if (reference.kind == Kind::FRAMEWORK) {
        names.push_back(reference.name);
      }
    }
    return names != config_.fwds->names;
  }

  void add_definition(const Definition& definition) {
    for (const Reference* custom : definition.of_kind(Kind::CUSTOM_PROVIDERS)) {
      add(*custom);
      add_schema(Kind::CUSTOM_PROVIDERS);
    }
    for (const Reference* mod : definition.of_kind(Kind::RULE_FILE)) {
      add(*mod);
      add_loads(mod->path, definition.rule_directory);
    }
    note(definition.references,
         {Kind::TABLE, Kind::KNOWLEDGE_BASE, Kind::MESSAGE_SCHEMA, Kind::PROVIDER});
  }

  void add_loads(const std::string& path, const std::string& directory) {
    std::vector<std::string> unread{path};
    while (!unread.empty()) {
      const std::string next = unread.back();
      unread.pop_back();
      if (!scanned_.insert(next).second) {
        continue;
      }
      const std::vector<RuleFile::Load> loads = read_rule_file(next).loads;
      for (const RuleFile::Load& load : loads) {
        if (load.followed) {
          add(directory + "/" + load.name,
              "rule file, named at " + to_string(Place{next, load.line}));
        }
      }
      for (auto load = loads.rbegin(); load != loads.rend(); ++load) {
        if (load->followed) {
          unread.push_back(directory + "/" + load->name);
        }
      }
    }
  }

  /// The documents of a kind, or the one that is read when none is named.
  void add_named(Kind kind, const char* fallback) {
    for (const Reference& document : named_[kind]) {
      add(document);
    }
    if (named_[kind].empty()) {
      add(root_ + fallback, std::string(name_of(kind)) + ", the default");
    }
    add_schema(kind);
  }

  void add_stores() {
    for (const datastore::DataStoreConfig& store : config_.datastores) {
      std::string source;
      bool read_only = false;
      datastore::parse_sqlite_params(store.parameters, source, read_only);
      add(fs::abspath(str::wordexp(source)), "datastore " + store.name);
    }
  }

  void add_groups() {
    if (config_.node_group_file.empty()) {
      return;
    }
    const std::string file = str::unescape_blanks(config_.node_group_file);
    add(file, "node group document");
    add_schema(Kind::GROUPS);
    std::vector<xml::Fault> faults;
    const xml::DocumentPtr doc = xml::read_document(file, faults);
    if (doc != nullptr) {
      for (const Reference& reference : graph_.reader().read(Kind::GROUPS, doc)) {
        add(reference);
      }
    }
  }

  const Config& config_;
  const std::string& root_;
  FrameworkGraph graph_;
  std::vector<Reference> main_references_;
  std::map<Kind, std::vector<Reference>> named_;
  std::set<std::string> printed_;
  std::set<std::string> scanned_;
};

void list_files(const Arguments& arguments) {
  LoadedRun run;
  run.read_arguments(arguments);
  run.read_main_document();
  FilesOfRun(run.config).print();
}

}  // namespace

void print_list(const std::string& what, const Arguments& arguments) {
  static const std::map<std::string, std::function<void(const Arguments&)>> PRINTERS = {
      {"frameworks", list_frameworks},
      {"providers", list_providers},
      {"groups", list_groups},
      {"nodes", list_nodes},
      {"files", list_files}};
  PRINTERS.at(what)(arguments);
}

}  // namespace qorn::inspect
