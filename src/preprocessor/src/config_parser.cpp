#include <exception>
#include <utility>

#include <qorn/detail/notes.h>
#include <qorn/document_kind.h>
#include <qorn/log/error_log.h>
#include <qorn/preproc/config_parser.h>
#include <qorn/xml.h>

namespace qorn::preproc {
namespace {

constexpr const char* COLLECT_EXTENSIONS = "/collect/qorn64";

/// Logs that a tag of the collector section failed.
int report_collector_tag(const char* tag, const std::exception& error) {
  log::ErrorLog(log::level::ERROR).stream()
      << "Could not parse " << tag << " tag in config. Error: " << error.what();
  return 1;
}

using Effect = RunNotes::Setting::Effect;

/// The text of an element that makes a setting, or `usual` when the section lacks it.
std::string read_setting(const char* setting, const xmlNode* section, const char* name,
                         const std::string& usual) {
  const xmlNode* element = xml::get_child_node(section, name);
  if (element == nullptr) {
    return usual;
  }
  std::string text = xml::content_of(element);
  detail::note_setting({setting, {}, xml::place_of(element), text, Effect::SETS});
  return text;
}

/// Notes that each child of that name adds to a setting.
void note_each(const char* setting, const xmlNode* section, const char* name) {
  for (const xmlNode* element : xml::get_child_nodes(section, name)) {
    detail::note_setting(
        {setting, {}, xml::place_of(element), xml::content_of(element), Effect::ADDS});
  }
}

}  // namespace

int ConfigParser::parse_configuration_xml(Config& config) {
  if (config.config_file.empty()) {
    config.config_file = installed_place(DocumentKind::MAIN, config.root);
  }
  xml::DocumentPtr doc = xml::open_valid_document(config.config_file, config.config_xsd);
  if (doc == nullptr) {
    log::ErrorLog(log::level::ERROR).stream()
        << "Could not validate the xml file:" << config.config_file;
    return 1;
  }
  if (parse_sections(xml::root_of(doc), config) == 1) {
    return 1;
  }
  doc.reset();
  xml::cleanup_parser();
  config.common_options.config_parsed = true;
  return 0;
}

// In this order: each sees what the ones before it have written.
int ConfigParser::parse_sections(xmlNode* root, Config& config) {
  if (parse_tag_postproc(root, config) == 1 || parse_tag_fwd(root, config) == 1 ||
      parse_tag_log(root, config) == 1) {
    return 1;
  }
  parse_tag_nodegroup(root, config);
  if (parse_tag_config(root, config) == 1 || parse_tag_db(root, config) == 1 ||
      configure_tag_db(config) == 1 || parse_tag_collect(root, config) == 1 ||
      parse_tag_recollect(root, config) == 1 || parse_tag_env_prop(root, config) == 1) {
    return 1;
  }
  return 0;
}

int ConfigParser::parse_tag_postproc(xmlNode* root, Config& config) {
  const xmlNode* extensions =
      xml::get_child_node(xml::get_child_node(root, "postprocessor"), "postproc_extensions");
  if (extensions == nullptr) {
    return 0;
  }
  note_each("postprocessor_extensions", extensions, "entry");
  if (auto file = xml::attribute_of(extensions, "config_file")) {
    detail::note_setting(
        {"postproc_config_files", {}, xml::place_of(extensions), std::move(*file), Effect::ADDS});
  }
  return xml::parse_pproc_tag(extensions, config.postprocessor_extensions, config) ? 0 : 1;
}

int ConfigParser::parse_tag_fwd(xmlNode* root, Config& config) {
  if ((config.option_flags & option_flag::FWD_GIVEN) != 0) {
    return 0;
  }
  try {
    const xmlNode* definitions =
        xml::get_child_node(xml::get_child_node(root, "plugins"), "framework_definitions");
    const std::vector<std::string> names = xml::get_str_list(definitions, "framework_definition");
    if (names.empty()) {
      return 0;
    }
    note_each("fwds.names", definitions, "framework_definition");
    config.option_flags |= option_flag::FWD_GIVEN;
    config.fwds->names.insert(config.fwds->names.end(), names.begin(), names.end());
  } catch (...) {
    log::ErrorLog(log::level::ERROR).stream()
        << "Could not parse framework_definition tag in config";
    return 1;
  }
  return 0;
}

int ConfigParser::parse_tag_log(xmlNode* root, Config& config) {
  const xmlNode* analyzer = xml::get_child_node(root, "analyzer");
  if (analyzer == nullptr) {
    return 0;
  }
  if (config.log_level.empty()) {
    config.log_level = read_setting("log_level", analyzer, "log_level", "");
  }
  if (check_valid_log_level(config.log_level) == 1) {
    return 1;
  }
  set_log_level(config.log_level);
  return 0;
}

int ConfigParser::check_valid_log_level(const std::string& level) {
  if (level.empty() || LOG_LEVELS.count(level) != 0) {
    return 0;
  }
  // The stray apostrophe is what scripts of administrators look for.
  log::ErrorLog(log::level::ERROR).stream() << "Invalid value specified for log-level': " << level;
  return 1;
}

void ConfigParser::set_log_level(const std::string& level) {
  look_up(LOG_LEVELS, level, log::LOG_LEVEL);
}

void ConfigParser::parse_tag_nodegroup(xmlNode* root, Config& config) {
  const xmlNode* analyzer = xml::get_child_node(root, "analyzer");
  if (analyzer != nullptr && config.node_group_file.empty()) {
    config.node_group_file =
        read_setting("node_group_file", analyzer, "node_group_configuration_file", "");
  }
}

int ConfigParser::parse_tag_collect(xmlNode* root, Config& config) {
  try {
    const std::string directory = config.root + COLLECT_EXTENSIONS + "/";
    const xmlNode* collector = xml::get_child_node(root, "collector");
    config.collect_extension =
        read_setting("collect_extension", collector, "extension", directory + "pdsh.so");
    if (config.collect_extension.find('/') == std::string::npos) {
      config.collect_extension.insert(0, directory);
    }
  } catch (const std::exception& error) {
    return report_collector_tag("collect", error);
  }
  return 0;
}

int ConfigParser::parse_tag_recollect(xmlNode* root, Config& config) {
  if (config.re_collect) {
    return 0;
  }
  try {
    const std::string text =
        read_setting("re_collect", xml::get_child_node(root, "collector"), "re-collect", "");
    config.re_collect = text == "on";
  } catch (const std::exception& error) {
    return report_collector_tag("re-collect", error);
  }
  return 0;
}

int ConfigParser::parse_tag_env_prop(xmlNode* root, Config& config) {
  if (!config.env_propagation) {
    return 0;
  }
  try {
    const xmlNode* collector = xml::get_child_node(root, "collector");
    if (read_setting("env_propagation", collector, "turn-off-environment-propagation", "") ==
        "on") {
      config.env_propagation = false;
    }
  } catch (const std::exception& error) {
    return report_collector_tag("turn-off-environment-propagation", error);
  }
  return 0;
}

int ConfigParser::load_default_fwds(Config& config) {
  if ((config.option_flags & option_flag::FWD_GIVEN) != 0) {
    return 0;
  }
  const bool analyzes = (config.operations & operation::ANALYZE) != 0;
  const bool collects = (config.operations & operation::COLLECT) != 0;
  if (analyzes && !collects) {
    log::ErrorLog(log::level::ERROR).stream()
        << "Please use the -F command line option to specify a Framework Definition to analyze.";
    return 1;
  }
  config.fwds->names.push_back(installed_place(DocumentKind::FRAMEWORK, config.root) +
                               "health_base.xml");
  return 0;
}

}  // namespace qorn::preproc
