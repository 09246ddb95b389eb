#include <qorn/log/error_log.h>
#include <qorn/preproc/config_parser.h>
#include <qorn/xml.h>

namespace qorn::preproc {
namespace {

using Expected = decltype(Solution::expected);

/// Adds one expected item. False when it has no text.
bool parse_item(const xmlNode* item, Expected& expected) {
  std::string text;
  if (!xml::get_txt(item, text)) {
    return false;
  }
  const std::string key = "expected-" + std::string(xml::name_of(item));
  if (item->properties == nullptr) {
    expected[key]["default"].emplace_back("default", text);
  }
  for (const xmlAttr* attribute = item->properties; attribute != nullptr;
       attribute = attribute->next) {
    std::string value;
    if (xml::get_attr_value(attribute, value)) {
      expected[key][xml::char_to_str(attribute->name)].emplace_back(value, text);
    }
  }
  return true;
}

}  // namespace

int ConfigParser::parse_kb_config(Config& config, const std::string& xsd) {
  for (const std::string& path : config.kb_config_files) {
    log::ErrorLog(log::level::DEBUG).stream() << "Kb config file: " << path;
    const xml::DocumentPtr doc = xml::open_valid_document(path, xsd);
    if (doc == nullptr) {
      log::ErrorLog(log::level::ERROR).stream() << "Failed to open and validate xml " << path;
      return 1;
    }
    for (const xmlNode* node : xml::Elements(xml::root_of(doc))) {
      Solution solution;
      solution.name = xml::name_of(node);
      for (const xmlNode* item : xml::Elements(node)) {
        if (!parse_item(item, solution.expected)) {
          log::ErrorLog(log::level::ERROR).stream()
              << "XML validation failed: <" << xml::name_of(item)
              << "> tag cannot be empty in:" << path;
          return 1;
        }
      }
      config.solutions[solution.name] = solution;  // a later element of the name counts
    }
  }
  return 0;
}

}  // namespace qorn::preproc
