#include "document.h"

#include <algorithm>
#include <filesystem>

#include <libxml/tree.h>

#include <qorn/fs.h>
#include <qorn/preproc/preprocessor.h>
#include <qorn/str.h>
#include <qorn/xml.h>
#include <qorn/xml/xpath.h>

namespace qorn::inspect {
namespace {

namespace filesystem = std::filesystem;

struct KindRow {
  Kind kind;
  const char* name;
  Grammar grammar;
};
constexpr KindRow KINDS[] = {
    {Kind::UNKNOWN, "file", {"", ""}},
    {Kind::MAIN, "main document", {"/etc/qorn.xsd", "configuration"}},
    {Kind::FRAMEWORK, "framework definition", {"/etc/fwd.xsd", "configuration"}},
    {Kind::PROVIDER, "provider document", {"/etc/provider.xsd", "configuration"}},
    {Kind::CUSTOM_PROVIDERS,
     "custom provider document",
     {"/provider/provider.xsd", "configuration"}},
    {Kind::TYPE_MAP, "type map", {"/etc/type_map.xsd", "type_map"}},
    {Kind::MESSAGE_SCHEMA, "message schema", {"/etc/schema_map.xsd", "message_schema"}},
    {Kind::TABLE, "postprocessor document", {"/etc/postprocessor/table.xsd", "postproc_tables"}},
    {Kind::REPORT, "report document", {"/etc/postprocessor/postproc.xsd", "postproc_reports"}},
    {Kind::KNOWLEDGE_BASE,
     "knowledge base document",
     {"/etc/postprocessor/postproc.xsd", "kb_config"}},
    {Kind::GROUPS, "node group document", {"/etc/nodegroup.xsd", "nodegroup_config"}},
    {Kind::RULES_DOCUMENT, "rules document", {"/etc/rules_generator.xsd", "rules_document"}},
    {Kind::ANALYSIS_MAP, "analysis map", {"/etc/analysis_map.xsd", "analysis_map"}},
    {Kind::CATALOG, "catalog", {"", "catalog"}},
    {Kind::RULE_FILE, "rule file", {"", ""}},
    {Kind::NODE_FILE, "node file", {"", ""}}};

/// A file, or a directory and all below it. Where two kinds may stand, the content tells the
/// second one.
struct PlaceRow {
  std::string_view place;
  Kind kind;
  Kind second;
};
constexpr PlaceRow PLACES[] = {
    {"/etc/qorn.xml", Kind::MAIN, Kind::MAIN},
    {"/etc/CLIPS_type_map.xml", Kind::TYPE_MAP, Kind::TYPE_MAP},
    {"/etc/catalog.xml", Kind::CATALOG, Kind::CATALOG},
    {"/etc/fwd/", Kind::FRAMEWORK, Kind::FRAMEWORK},
    {"/etc/providers/custom/", Kind::CUSTOM_PROVIDERS, Kind::CUSTOM_PROVIDERS},
    {"/etc/providers/", Kind::PROVIDER, Kind::CUSTOM_PROVIDERS},
    {"/etc/postprocessor/", Kind::TABLE, Kind::REPORT},
    {"/etc/kb/", Kind::KNOWLEDGE_BASE, Kind::KNOWLEDGE_BASE},
    {"/kb/data/", Kind::MESSAGE_SCHEMA, Kind::MESSAGE_SCHEMA},
    {"/provider/", Kind::CUSTOM_PROVIDERS, Kind::CUSTOM_PROVIDERS}};

/// Where a kind of document names others; of a repeated element a run reads the first.
struct ReferenceRow {
  Kind in;
  Kind target;
  const char* elements;
  const char* attribute;  // null: the element's text
};
constexpr ReferenceRow REFERENCES[] = {
    {Kind::MAIN, Kind::TABLE, "/*/postprocessor[1]/postproc_extensions[1]", "config_file"},
    {Kind::MAIN, Kind::FRAMEWORK, "/*/plugins[1]/framework_definitions[1]/framework_definition",
     nullptr},
    {Kind::MAIN, Kind::GROUPS, "/*/analyzer[1]/node_group_configuration_file[1]", nullptr},
    {Kind::MAIN, Kind::CUSTOM_PROVIDERS, "/*/collector/standard_providers", "config_file"},
    {Kind::MAIN, Kind::PROVIDER, "/*/collector/standard_providers/provider", nullptr},
    {Kind::FRAMEWORK, Kind::CUSTOM_PROVIDERS, "/*/framework_definition[1]/providers[1]",
     "config_file"},
    {Kind::FRAMEWORK, Kind::PROVIDER, "/*/framework_definition[1]/providers[1]/provider", nullptr},
    {Kind::FRAMEWORK, Kind::KNOWLEDGE_BASE, "/*/framework_definition[1]/kb_mods[1]", "config_file"},
    {Kind::FRAMEWORK, Kind::RULE_FILE, "/*/framework_definition[1]/kb_mods[1]/mod", nullptr},
    {Kind::FRAMEWORK, Kind::TABLE, "/*/framework_definition[1]/postproc_extensions[1]",
     "config_file"},
    {Kind::FRAMEWORK, Kind::MESSAGE_SCHEMA, "/*/framework_definition[1]/message_schemas[1]/entry",
     nullptr},
    {Kind::FRAMEWORK, Kind::FRAMEWORK, "/*/framework_definition[1]/includes[1]/include", nullptr},
    {Kind::GROUPS, Kind::NODE_FILE, "/*/nodegroup/nodefiles[1]/path", nullptr}};

const KindRow& row_of(Kind kind) {
  return *std::find_if(std::begin(KINDS), std::end(KINDS),
                       [&](const KindRow& row) { return row.kind == kind; });
}

/// Documents of four kinds are called configuration: what stands below tells them apart.
Kind kind_of_configuration(const xmlNode* root) {
  if (xml::get_child_node(root, "framework_definition") != nullptr) {
    return Kind::FRAMEWORK;
  }
  const xmlNode* collector = xml::get_child_node(root, "collector");
  if (xml::get_child_node(collector, "provider") != nullptr) {
    return Kind::CUSTOM_PROVIDERS;
  }
  return xml::get_child_node(root, "command") != nullptr ? Kind::PROVIDER : Kind::MAIN;
}

Kind kind_of_content(const xml::DocumentPtr& doc) {
  const xmlNode* root = xml::root_of(doc);
  if (root == nullptr) {
    return Kind::UNKNOWN;
  }
  if (xml::name_of(root) == "configuration") {
    return kind_of_configuration(root);
  }
  const auto row = std::find_if(std::begin(KINDS), std::end(KINDS), [&](const KindRow& each) {
    return each.grammar.root_element == xml::name_of(root);
  });
  return row == std::end(KINDS) ? Kind::UNKNOWN : row->kind;
}

const PlaceRow* place_row(const std::string& path, const std::string& root) {
  if (!path.starts_with(root + "/")) {
    return nullptr;
  }
  const std::string_view below = std::string_view(path).substr(root.size());
  const auto row = std::find_if(std::begin(PLACES), std::end(PLACES), [&](const PlaceRow& each) {
    return each.place.back() == '/' ? below.starts_with(each.place) : below == each.place;
  });
  return row == std::end(PLACES) ? nullptr : &*row;
}

void add_files(const std::string& directory, const char* extension,
               std::vector<std::string>& files) {
  std::error_code ignored;
  for (filesystem::recursive_directory_iterator it(directory, ignored), end; it != end;
       it.increment(ignored)) {
    if (it->path().extension() == extension && it->is_regular_file(ignored)) {
      files.push_back(it->path());
    }
  }
}

}  // namespace

const char* name_of(Kind kind) {
  return row_of(kind).name;
}

Grammar grammar_of(Kind kind) {
  return row_of(kind).grammar;
}

Kind kind_of(const std::string& path, const std::string& root, const xml::DocumentPtr& doc) {
  if (path.ends_with(".clp")) {
    return Kind::RULE_FILE;
  }
  const Kind content = kind_of_content(doc);
  const PlaceRow* row = place_row(path, root);
  if (row == nullptr) {
    return content;
  }
  return content == row->second ? row->second : row->kind;
}

std::vector<std::string> installed_files(const std::string& root) {
  std::vector<std::string> files;
  for (const char* directory : {"/etc", "/kb", "/provider"}) {
    add_files(root + directory, ".xml", files);
  }
  add_files(root + "/kb", ".clp", files);
  std::sort(files.begin(), files.end());
  return files;
}

ReferenceReader::ReferenceReader(const std::string& root) {
  config_.root = root;
  parser_.update_defaults(config_);
}

std::vector<Reference> ReferenceReader::read(Kind kind, const xml::DocumentPtr& doc) {
  std::vector<Reference> references;
  const xml::XPath xpath(doc);
  for (const ReferenceRow& row : REFERENCES) {
    if (row.in != kind) {
      continue;
    }
    for (const xmlNode* element : xpath.nodes(row.elements)) {
      std::string name;
      const bool is_named = row.attribute == nullptr ? xml::get_txt(element, name)
                                                     : xml::get_attr(element, row.attribute, name);
      // An empty rule file name stands for a default one.
      if (is_named || row.target == Kind::RULE_FILE) {
        references.push_back(
            {row.target, name, resolve(kind, row.target, name, element), Place::of(element)});
      }
    }
  }
  return references;
}

std::string ReferenceReader::resolve(Kind in, Kind target, const std::string& name,
                                     const xmlNode* element) {
  const std::string& root = config_.root;
  const xmlNode* definition = element->parent->parent;
  std::string directory;
  switch (target) {
    case Kind::FRAMEWORK:
      if (in == Kind::MAIN) {
        return framework_path(name);
      } else {
        Fwd fwd;
        fwd.name = name;
        parser_.compute_name_and_path(fwd);
        return fwd.path;
      }
    case Kind::PROVIDER:
      directory =
          in == Kind::MAIN
              ? parser_.provider_path
              : str::wordexp(xml::get_str(definition, "provider_path", parser_.provider_path));
      return fs::abspath((directory.empty() ? parser_.provider_path : directory) + "/" + name +
                         ".xml");
    case Kind::CUSTOM_PROVIDERS:
      directory = root + "/etc/providers";
      xml::get_attr(element, "config_path", directory);
      return str::wordexp(directory + "/" + name);
    case Kind::KNOWLEDGE_BASE:
      if (xml::get_attr(element, "config_path", directory)) {
        return str::wordexp(directory) + name;
      }
      return str::wordexp(root + "/etc/kb/" + name);
    case Kind::RULE_FILE:
      return str::wordexp(xml::get_str(definition, "kb_path", parser_.kb_path) + "/" + name);
    case Kind::TABLE:
      directory = root + "/etc/postprocessor";
      xml::get_attr(element, "config_path", directory);
      return str::wordexp(directory + "/" + name);
    case Kind::MESSAGE_SCHEMA: {
      const std::string expanded = str::wordexp(name);
      return expanded.starts_with('/') ? expanded : str::wordexp(root + "/kb/data/" + name);
    }
    default:
      return str::unescape_blanks(name);
  }
}

std::string ReferenceReader::framework_path(const std::string& name) {
  Fwd fwd;
  parser_.process_fwd(name, fwd.name, config_, false);
  parser_.compute_name_and_path(fwd);
  return fwd.path;
}

std::string ReferenceReader::framework_name(const std::string& path) {
  Fwd fwd;
  fwd.name = path;
  parser_.compute_name_and_path(fwd);
  return fwd.name;
}

std::string ReferenceReader::rule_directory(const xml::DocumentPtr& doc) const {
  const xmlNode* definition = xml::get_child_node(xml::root_of(doc), "framework_definition");
  return str::wordexp(xml::get_str(definition, "kb_path", parser_.kb_path));
}

}  // namespace qorn::inspect
