#include <cstdint>
#include <exception>
#include <stdexcept>
#include <utility>

#include <qorn/detail/notes.h>
#include <qorn/preproc/config_parser.h>
#include <qorn/str.h>
#include <qorn/xml.h>

namespace qorn::preproc {
namespace {

using Effect = RunNotes::Setting::Effect;

constexpr std::uint64_t SECONDS_PER_DAY = 86400;
constexpr std::size_t MOST_GROUPED_VALUES = 10'000'000;

/// The content of a node's first child; false when it has no child at all.
bool first_child_content(const xmlNode* node, std::string& content) {
  if (node->children == nullptr) {
    return false;
  }
  content = xml::content_of(node->children);
  return true;
}

/// Reads the parameters that elements describe, each behind those that are there.
class ParameterReader {
 public:
  explicit ParameterReader(std::vector<ConfigParam>& params) : params_(params) {}

  void read_children(const xmlNode* parent) {
    for (const xmlNode* element : xml::Elements(parent)) {
      read(element);
    }
  }

  /// Where the parameters stand that were added, in their order.
  const std::vector<Place>& places() const { return places_; }

 private:
  void read(const xmlNode* element) {
    ConfigParam param;
    if (xml::get_num_element_children(element) == 0) {
      read_plain(element, param);
    } else if (xml::get_child_node(element, "entry") != nullptr) {
      read_list(element, param);
    } else {
      param.group = xml::name_of(element);
      for (const xmlNode* child : xml::Elements(element)) {
        read_grouped(child, param);
      }
    }
  }

  void read_plain(const xmlNode* element, ConfigParam& param) {
    std::string content;
    if (!first_child_content(element, content)) {
      return;  // no child at all: no parameter
    }
    param.name = xml::name_of(element);
    param.values.push_back(std::move(content));
    add(element, param);
  }

  void read_list(const xmlNode* element, ConfigParam& param) {
    param.name = xml::name_of(element);
    param.values = xml::get_str_list(element, "entry");
    add(element, param);
  }

  // The values go on from the child before: a plain parameter behind another one holds that one's
  // values too.
  void read_grouped(const xmlNode* child, ConfigParam& param) {
    if (xml::get_num_element_children(child) != 0) {
      read_list(child, param);
    } else {
      read_plain(child, param);
    }
  }

  void add(const xmlNode* element, const ConfigParam& param) {
    if (!param.group.empty()) {
      values_ += param.values.size();
    }
    if (values_ > MOST_GROUPED_VALUES) {
      throw std::runtime_error(to_string(xml::place_of(element)) + ": the group '" +
                               str::printable(param.group) +
                               "' brings the values of grouped parameters to more than 10,000,000: "
                               "each parameter of a group holds the values of those ahead of it.");
    }
    params_.push_back(param);
    places_.push_back(xml::place_of(element));
    const std::string group = param.group.empty() ? "" : param.group + "/";
    detail::note_setting({"config_params." + group + param.name,
                          {},
                          places_.back(),
                          param.values.empty() ? "" : param.values.back(),
                          Effect::ADDS});
  }

  std::vector<ConfigParam>& params_;
  std::vector<Place> places_;  // of those that were added
  std::size_t values_ = 0;     // of grouped parameters
};

/// Turns the days of data-age-threshold into seconds, in the record and in the parameter itself; of
/// one that no element gave, an option did.
void convert_data_age(ConfigParam& param, const Place* place, Config& config) {
  detail::note_setting({"data_age_threshold", place == nullptr ? "command line -t" : "",
                        place == nullptr ? Place() : *place, param.values[0], Effect::SETS});
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
  const std::size_t typed = config.config_params.size();
  ParameterReader reader(config.config_params);
  reader.read_children(parameters);
  for (std::size_t i = 0; i < config.config_params.size(); ++i) {
    ConfigParam& param = config.config_params[i];
    if (param.name == "data-age-threshold" && !param.values.empty()) {
      convert_data_age(param, i < typed ? nullptr : &reader.places()[i - typed], config);
    }
  }
  parse_xml_suppressions(xml::get_child_node(analyzer, "suppressions"), config.suppressions);
  return 0;
}

void ConfigParser::parse_xml_config(xmlNode* node, std::vector<ConfigParam>& params) {
  ParameterReader(params).read_children(node);
}

void ConfigParser::parse_xml_suppressions(xmlNode* node, std::vector<Suppression>& suppressions) {
  for (const xmlNode* child : xml::get_child_nodes(node, "suppress")) {
    Suppression suppression;
    suppression.confidence = number_or_zero(xml::get_str(child, "confidence", ""));
    suppression.id = xml::get_str(child, "id", "");
    suppression.node_id = xml::get_str(child, "node_id", "");
    suppression.severity = number_or_zero(xml::get_str(child, "severity", ""));
    suppressions.push_back(suppression);
    detail::note_setting({"suppressions", {}, xml::place_of(child), suppression.id, Effect::ADDS});
  }
}

}  // namespace qorn::preproc
