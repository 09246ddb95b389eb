#include <cstdint>
#include <exception>

#include <qorn/preproc/config_parser.h>
#include <qorn/str.h>
#include <qorn/xml.h>

namespace qorn::preproc {
namespace {

constexpr std::uint64_t SECONDS_PER_DAY = 86400;

/// The content of a node's first child; false when it has no child at all.
bool first_child_content(const xmlNode* node, std::string& content) {
  if (node->children == nullptr) {
    return false;
  }
  content = xml::content_of(node->children);
  return true;
}

/// Reads one child of a group into `param`, whose values go on from the child before it: a plain
/// parameter behind another one holds that one's values too.
void parse_grouped_param(const xmlNode* child, ConfigParam& param,
                         std::vector<ConfigParam>& params) {
  if (xml::get_num_element_children(child) != 0) {
    param.name = xml::name_of(child);
    param.values = xml::get_str_list(child, "entry");
    params.push_back(param);
    return;
  }
  std::string content;
  if (first_child_content(child, content)) {
    param.name = xml::name_of(child);
    param.values.push_back(content);
    params.push_back(param);
  }
}

void parse_param(const xmlNode* element, std::vector<ConfigParam>& params) {
  ConfigParam param;
  if (xml::get_num_element_children(element) == 0) {
    std::string content;
    if (first_child_content(element, content)) {
      param.name = xml::name_of(element);
      param.values.push_back(content);
      params.push_back(param);
    }
  } else if (xml::get_child_node(element, "entry") != nullptr) {
    param.name = xml::name_of(element);
    param.values = xml::get_str_list(element, "entry");
    params.push_back(param);
  } else {
    param.group = xml::name_of(element);
    for (const xmlNode* child : xml::Elements(element)) {
      parse_grouped_param(child, param, params);
    }
  }
}

/// Turns the days of data-age-threshold into seconds, in the record and in the parameter itself.
void convert_data_age(ConfigParam& param, Config& config) {
  const std::uint64_t days = std::stoul(str::stripws(param.values[0]));
  config.data_age_threshold = static_cast<std::uint32_t>(days * SECONDS_PER_DAY);
  param.values[0] = std::to_string(config.data_age_threshold);
}

int number_or_zero(const std::string& text) {
  try {
    return std::stoi(text);
  } catch (const std::exception&) {
    return 0;
  }
}

}  // namespace

int ConfigParser::parse_tag_config(xmlNode* root, Config& config) {
  const xmlNode* analyzer = xml::get_child_node(root, "analyzer");
  xmlNode* parameters = xml::get_child_node(analyzer, "config");
  if (parameters == nullptr) {
    return 0;  // suppressions alone aren't read
  }
  parse_xml_config(parameters, config.config_params);
  for (ConfigParam& param : config.config_params) {
    if (param.name == "data-age-threshold" && !param.values.empty()) {
      convert_data_age(param, config);
    }
  }
  parse_xml_suppressions(xml::get_child_node(analyzer, "suppressions"), config.suppressions);
  return 0;
}

void ConfigParser::parse_xml_config(xmlNode* node, std::vector<ConfigParam>& params) {
  for (const xmlNode* element : xml::Elements(node)) {
    parse_param(element, params);
  }
}

void ConfigParser::parse_xml_suppressions(xmlNode* node, std::vector<Suppression>& suppressions) {
  for (const xmlNode* child : xml::get_child_nodes(node, "suppress")) {
    Suppression suppression;
    suppression.confidence = number_or_zero(xml::get_str(child, "confidence", ""));
    suppression.id = xml::get_str(child, "id", "");
    suppression.node_id = xml::get_str(child, "node_id", "");
    suppression.severity = number_or_zero(xml::get_str(child, "severity", ""));
    suppressions.push_back(suppression);
  }
}

}  // namespace qorn::preproc
