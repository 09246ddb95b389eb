#include "reference.h"

#include <algorithm>

#include <libxml/tree.h>

#include <qorn/preproc/fwd_parser.h>
#include <qorn/str.h>
#include <qorn/written_path.h>
#include <qorn/xml.h>
#include <qorn/xml/xpath.h>

namespace qorn::inspect {
namespace {

using enum DocumentKind;

/// Where a kind of document names others; of a repeated element a run reads the first.
struct ReferenceRow {
  DocumentKind in;
  DocumentKind target;
  const char* elements;
  const char* attribute;  // null: the element's text
};
constexpr ReferenceRow REFERENCES[] = {
    {MAIN, TABLE, "/*/postprocessor[1]/postproc_extensions[1]", "config_file"},
    {MAIN, FRAMEWORK, "/*/plugins[1]/framework_definitions[1]/framework_definition", nullptr},
    {MAIN, GROUPS, "/*/analyzer[1]/node_group_configuration_file[1]", nullptr},
    {MAIN, CUSTOM_PROVIDERS, "/*/collector/standard_providers", "config_file"},
    {MAIN, PROVIDER, "/*/collector/standard_providers/provider", nullptr},
    {FRAMEWORK, CUSTOM_PROVIDERS, "/*/framework_definition[1]/providers[1]", "config_file"},
    {FRAMEWORK, PROVIDER, "/*/framework_definition[1]/providers[1]/provider", nullptr},
    {FRAMEWORK, KNOWLEDGE_BASE, "/*/framework_definition[1]/kb_mods[1]", "config_file"},
    {FRAMEWORK, RULE_FILE, "/*/framework_definition[1]/kb_mods[1]/mod", nullptr},
    {FRAMEWORK, TABLE, "/*/framework_definition[1]/postproc_extensions[1]", "config_file"},
    {FRAMEWORK, MESSAGE_SCHEMA, "/*/framework_definition[1]/message_schemas[1]/entry", nullptr},
    {FRAMEWORK, FRAMEWORK, "/*/framework_definition[1]/includes[1]/include", nullptr},
    {GROUPS, NODE_FILE, "/*/nodegroup/nodefiles[1]/path", nullptr}};

/// The directories of a run that writes none of its own.
preproc::FWDParser usual_directories(const std::string& root) {
  Config config;
  config.root = root;
  preproc::FWDParser usual;
  usual.update_defaults(config);
  return usual;
}

std::string provider_path(DocumentKind in, const std::string& name, const xmlNode* definition,
                          const std::string& usual) {
  const std::string directory =
      in == MAIN ? usual : str::wordexp(xml::get_str(definition, "provider_path", usual));
  return written_path::provider(name, directory.empty() ? usual : directory);
}

std::string resolve(const ReferenceRow& row, const std::string& name, const xmlNode* element,
                    const std::string& root) {
  const preproc::FWDParser usual = usual_directories(root);
  const xmlNode* definition = element->parent->parent;
  const auto directory = xml::attribute_of(element, "config_path");
  switch (row.target) {
    case FRAMEWORK:
      return row.in == MAIN ? framework_path(name, root)
                            : written_path::framework(name, usual.fwd_base);
    case PROVIDER:
      return provider_path(row.in, name, definition, usual.provider_path);
    case CUSTOM_PROVIDERS:
      return written_path::custom_providers(name, directory, root);
    case KNOWLEDGE_BASE:
      return written_path::knowledge_base(name, directory, root);
    case RULE_FILE:
      return written_path::rule_file(name, xml::get_str(definition, "kb_path", usual.kb_path));
    case TABLE:
      return written_path::postprocessor(name, directory, root);
    case MESSAGE_SCHEMA:
      return written_path::message_schema(name, root);
    default:
      return written_path::plain_file(name);
  }
}

}  // namespace

std::vector<Reference> references_of(DocumentKind kind, const xml::DocumentPtr& doc,
                                     const std::string& root) {
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
      if (is_named || row.target == RULE_FILE) {
        references.push_back(
            {row.target, name, resolve(row, name, element, root), xml::place_of(element)});
      }
    }
  }
  return references;
}

std::string framework_path(const std::string& name, const std::string& root) {
  return written_path::framework(written_path::asked_framework(name, root),
                                 usual_directories(root).fwd_base);
}

const RunNotes::Setting* request_of(const std::string& framework, const RunNotes& notes) {
  const auto found = std::find_if(
      notes.settings.begin(), notes.settings.end(),
      [&](const auto& each) { return each.name == "fwds.names" && each.value == framework; });
  return found == notes.settings.end() ? nullptr : &*found;
}

std::string rule_directory(const xml::DocumentPtr& doc, const std::string& root) {
  const xmlNode* definition = xml::get_child_node(xml::root_of(doc), "framework_definition");
  return written_path::rule_directory(
      xml::get_str(definition, "kb_path", usual_directories(root).kb_path));
}

}  // namespace qorn::inspect
