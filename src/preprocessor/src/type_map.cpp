#include <exception>

#include <qorn/log/error_log.h>
#include <qorn/preproc/config_parser.h>
#include <qorn/xml.h>

namespace qorn::preproc {
namespace {

constexpr const char* MULTI = "MULTI";

/// Reads one entry. False, with a line at level 3, when its data_type doesn't fit. Throws
/// std::invalid_argument for an unknown type.
bool parse_entry(const xmlNode* node, Config& config) {
  std::string name;
  std::string type;
  std::string data_type;
  xml::get_txt(node, name);
  xml::get_attr(node, "type", type);
  const bool has_data_type = xml::get_attr(node, "data_type", data_type);
  const bool multi = type == MULTI;  // in lower case it is a type like any other
  if (multi && data_type == MULTI) {
    log::ErrorLog(log::level::ERROR).stream()
        << "MULTI is not allowed as a data_type. Allowed values are: "
        << "LONG/long, DOUBLE/double, STRING/string, SYMBOL/symbol.";
    return false;
  }
  if (multi && !has_data_type) {
    log::ErrorLog(log::level::ERROR).stream()
        << "MULTI type has to be associated with a data type. "
        << "Please define the data_type attribute for: " << name;
    return false;
  }
  config.type_map[name] = xml::get_mapped_type(name, type);
  if (multi) {
    config.multi_type_map[name] = xml::get_mapped_type(name, data_type);
  }
  return true;
}

}  // namespace

int ConfigParser::parse_type_map(Config& config, const std::string& file, const std::string& xsd) {
  const xml::DocumentPtr doc = xml::open_valid_document(file, xsd);
  if (doc == nullptr) {
    log::ErrorLog(log::level::ERROR).stream() << "Could not validate the xml file:" << file;
    return 1;
  }
  try {
    for (const xmlNode* node : xml::Elements(xml::root_of(doc))) {
      if (!parse_entry(node, config)) {
        return 1;
      }
    }
  } catch (const std::exception& error) {
    log::ErrorLog(log::level::DEBUG).stream() << error.what();
    return 1;
  }
  return 0;
}

}  // namespace qorn::preproc
