#include <qorn/document_kind.h>
#include <qorn/log/error_log.h>
#include <qorn/preproc/config_parser.h>
#include <qorn/xml.h>

#include "postprocessor_documents.h"

namespace qorn::preproc {
namespace {

using Columns = std::vector<std::pair<std::string, std::string>>;

Columns parse_columns(const xmlNode* table) {
  Columns columns;
  for (const xmlNode* column : xml::Elements(table)) {
    std::string name;
    std::string message_id;
    const bool has_name = xml::get_attr(column, "name", name);
    const bool has_message_id = xml::get_attr(column, "msg-id", message_id);
    if (has_name && has_message_id) {
      columns.emplace_back(name, message_id);
    } else {
      log::ErrorLog(log::level::WARNING).stream()
          << "Postprocessor table config parse fail for col name" << name << " col message-id"
          << message_id;
    }
  }
  return columns;
}

}  // namespace

int ConfigParser::parse_postproc_table_config(Config& config, const std::string& xsd) {
  std::vector<xml::Fault> faults;
  const int result = read_postproc_tables(config, xsd, faults);
  xml::report(faults);
  return result;
}

int read_postproc_tables(Config& config, const std::string& xsd, std::vector<xml::Fault>& faults) {
  if (config.postproc_config_files.empty()) {
    config.postproc_config_files.push_back(installed_place(DocumentKind::TABLE, config.root) +
                                           "table.xml");
  }
  int result = 1;
  for (const std::string& path : config.postproc_config_files) {
    log::ErrorLog(log::level::DEBUG).stream() << "Postprocessor config file: " << path;
    const xml::DocumentPtr doc = xml::read_valid_document(path, xsd, faults);
    if (doc == nullptr) {
      continue;
    }
    for (const xmlNode* table : xml::Elements(xml::root_of(doc))) {
      std::string id;
      if (xml::get_attr(table, "id", id)) {
        config.postproc_tables[id] = parse_columns(table);
      }
    }
    result = 0;
  }
  return result;
}

}  // namespace qorn::preproc
