#pragma once

#include <string>

namespace qorn {

/// The kinds of files that an installation and a run consist of.
enum class DocumentKind : int {
  UNKNOWN,
  MAIN,
  FRAMEWORK,
  PROVIDER,
  CUSTOM_PROVIDERS,
  TYPE_MAP,
  MESSAGE_SCHEMA,
  TABLE,
  REPORT,
  KNOWLEDGE_BASE,
  GROUPS,
  RULES_DOCUMENT,
  ANALYSIS_MAP,
  CATALOG,
  RULE_FILE,
  NODE_FILE
};

/// What is fixed about a kind. The paths are relative to the installation root and begin with "/".
struct DocumentKindRow {
  DocumentKind kind;
  const char* name;          // in a sentence
  const char* root_element;  // empty for what is no XML document
  const char* schema;        // empty for a kind without any
  const char* place;         // of the file, or of the directory of such files, which ends in "/"
};

inline constexpr DocumentKindRow DOCUMENT_KINDS[] = {
    {DocumentKind::UNKNOWN, "file", "", "", ""},
    {DocumentKind::MAIN, "main document", "configuration", "/etc/qorn.xsd", "/etc/qorn.xml"},
    {DocumentKind::FRAMEWORK, "framework definition", "configuration", "/etc/fwd.xsd", "/etc/fwd/"},
    {DocumentKind::PROVIDER, "provider document", "configuration", "/etc/provider.xsd",
     "/etc/providers/"},
    {DocumentKind::CUSTOM_PROVIDERS, "custom provider document", "configuration",
     "/provider/provider.xsd", "/etc/providers/"},
    {DocumentKind::TYPE_MAP, "type map", "type_map", "/etc/type_map.xsd",
     "/etc/CLIPS_type_map.xml"},
    {DocumentKind::MESSAGE_SCHEMA, "message schema", "message_schema", "/etc/schema_map.xsd",
     "/kb/data/"},
    {DocumentKind::TABLE, "postprocessor document", "postproc_tables",
     "/etc/postprocessor/table.xsd", "/etc/postprocessor/"},
    {DocumentKind::REPORT, "report document", "postproc_reports", "/etc/postprocessor/postproc.xsd",
     "/etc/postprocessor/"},
    // The knowledge base documents share the reports' schema file.
    {DocumentKind::KNOWLEDGE_BASE, "knowledge base document", "kb_config",
     "/etc/postprocessor/postproc.xsd", "/etc/kb/"},
    {DocumentKind::GROUPS, "node group document", "nodegroup_config", "/etc/nodegroup.xsd", ""},
    {DocumentKind::RULES_DOCUMENT, "rules document", "rules_document", "/etc/rules_generator.xsd",
     ""},
    {DocumentKind::ANALYSIS_MAP, "analysis map", "analysis_map", "/etc/analysis_map.xsd", ""},
    {DocumentKind::CATALOG, "catalog", "catalog", "", "/etc/catalog.xml"},
    {DocumentKind::RULE_FILE, "rule file", "", "", "/kb/"},
    {DocumentKind::NODE_FILE, "node file", "", "", ""}};

const DocumentKindRow& row_of(DocumentKind kind);

/// The schema of a kind under the installation root `root`; empty for a kind without any.
std::string schema_path(DocumentKind kind, const std::string& root);

/// Where files of that kind lie under `root`; see DocumentKindRow::place.
std::string installed_place(DocumentKind kind, const std::string& root);

}  // namespace qorn
