#include <qorn/document_kind.h>
#include <qorn/log/error_log.h>
#include <qorn/preproc/config_parser.h>
#include <qorn/str.h>
#include <qorn/xml.h>

namespace qorn::preproc {
namespace {

constexpr const char* DEFAULT_CATEGORY = "FUNCTIONALITY";

void parse_category(const xmlNode* node, Config& config) {
  std::string category;
  xml::get_attr(node, "name", category);
  category = str::upper(str::stripws(category));
  if (category.empty()) {
    category = DEFAULT_CATEGORY;
  }
  config.message_category_names.insert(category);
  for (const std::string& id : xml::get_str_list(node, "message_id")) {
    config.message_categories[id] = category;
  }
}

}  // namespace

int ConfigParser::parse_tag_message_schema(Config& config, const std::string& xsd) {
  if (config.message_schema_files.empty()) {
    config.message_schema_files.push_back(
        installed_place(DocumentKind::MESSAGE_SCHEMA, config.root) + "msg_schema.xml");
  }
  for (const std::string& path : config.message_schema_files) {
    const xml::DocumentPtr doc = xml::open_valid_document(path, xsd);
    if (doc == nullptr) {
      log::ErrorLog(log::level::ERROR).stream() << "Could not validate the xml file:" << path;
      return 1;
    }
    for (const xmlNode* node : xml::Elements(xml::root_of(doc))) {
      parse_category(node, config);
    }
  }
  return 0;
}

}  // namespace qorn::preproc
