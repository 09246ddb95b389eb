#include <cmath>
#include <cstdio>
#include <iostream>
#include <limits>
#include <set>

#include <qorn/detail/notes.h>
#include <qorn/document_kind.h>
#include <qorn/log/error_log.h>
#include <qorn/preproc/config.h>
#include <qorn/preproc/preprocessor.h>
#include <qorn/str.h>
#include <qorn/written_path.h>
#include <qorn/xml.h>
#include <qorn/xml/xpath.h>

namespace qorn::preproc {
namespace {

template <std::size_t N>
void store_directory(const xml::XPath& xpath, const char* expression, char (&field)[N]) {
  const xmlNode* node = xpath.first(expression);
  if (node != nullptr) {
    std::snprintf(field, N, "%s", str::wordexp(xml::content_of(node)).c_str());
  }
}

/// Reads a number of seconds; what is no number is reported, and the field stays.
void store_seconds(const xmlNode* node, const std::string& file, std::int64_t& field) {
  const std::string text = xml::content_of(node);
  const double value = xmlXPathCastStringToNumber(reinterpret_cast<const xmlChar*>(text.c_str()));
  constexpr auto HIGHEST = std::numeric_limits<std::int64_t>::max();
  constexpr auto LOWEST = std::numeric_limits<std::int64_t>::min();
  if (std::isnan(value)) {
    log::ErrorLog(log::level::WARNING).stream()
        << "The element <" << xml::name_of(node) << "> in '" << file << "' holds no number: '"
        << str::printable(text) << "'.";
  } else if (value >= static_cast<double>(HIGHEST)) {
    field = HIGHEST;
  } else if (value <= static_cast<double>(LOWEST)) {
    field = LOWEST;
  } else {
    field = static_cast<std::int64_t>(value);
  }
}

void read_collector(const xml::XPath& xpath, const std::string& file, Config& config) {
  if (const xmlNode* node = xpath.first("//configuration/collector/network_interface")) {
    config.collector_network_interface = xml::content_of(node);
  }
  store_directory(xpath, "//configuration/collector/provider_auxiliary_path",
                  config.provider_auxiliary_path);
  store_directory(xpath, "//configuration/collector/provider_config_dir",
                  config.provider_config_dir);
  store_directory(xpath, "//configuration/collector/async_output_dir", config.async_output_dir);
  if (const xmlNode* node = xpath.first("//configuration/collector/timeout")) {
    store_seconds(node, file, config.collector_timeout);
    std::string scale;
    xml::get_attr(node, "scale", scale);
    look_up(SCALE_TYPES, scale, config.collector_timeout_scale);
  }
  if (const xmlNode* node = xpath.first("//configuration/collector/qorn_collection_timeout")) {
    store_seconds(node, file, config.collection_timeout);
  }
}

/// Logs the names of a provider tag on one wrapped line.
void log_providers(const std::set<std::string>& names) {
  if (log::level::DEBUG > log::LOG_LEVEL) {
    return;
  }
  std::string text;
  for (const std::string& name : names) {
    text.append(&name == &*names.begin() ? "" : ", ").append(name);
  }
  log::debug(str::word_wrap(text, 80, "provider(s): "));
}

}  // namespace

bool claim_custom_providers(Config& config) {
  if ((config.option_flags & option_flag::CUSTOM_PROVIDERS) != 0) {
    log::ErrorLog(log::level::ERROR).stream()
        << "Only one provider configuration file supported. "
        << "Merge the custom provider configuration files into "
        << "one file and re-run the analysis.";
    return false;
  }
  config.option_flags |= option_flag::CUSTOM_PROVIDERS;
  return true;
}

int read_config(Config& config, const std::string& file) {
  const xml::DocumentPtr doc = xml::open_valid_document(file, config.config_xsd);
  if (doc == nullptr) {
    log::ErrorLog(log::level::ERROR).stream() << "Could not validate the xml file: " << file;
    return 1;
  }
  const xml::XPath xpath(doc);
  read_collector(xpath, file, config);
  xmlNode* tag = xpath.first("//configuration/collector/standard_providers");
  if (tag == nullptr) {
    return 0;
  }
  std::string custom_file;
  if (xml::get_attr(tag, "config_file", custom_file) && !claim_custom_providers(config)) {
    return 1;
  }
  return parse_provider_tag(tag, config) ? 0 : 1;
}

bool get_provider_list(xmlNode* tag, std::vector<std::string>& names, Config& config) {
  names = xml::get_str_list(tag, "provider");
  const auto file = xml::attribute_of(tag, "config_file");
  if (!file) {
    return true;
  }
  const std::string path =
      written_path::custom_providers(*file, xml::attribute_of(tag, "config_path"), config.root);
  detail::note_named({DocumentKind::CUSTOM_PROVIDERS, *file, path, xml::place_of(tag)});
  const xml::DocumentPtr doc =
      xml::open_valid_document(path, schema_path(DocumentKind::CUSTOM_PROVIDERS, config.root));
  if (doc == nullptr) {
    // The colon stands behind the line break; the log level doesn't count.
    std::cerr << "Could not validate the xml file\n:" << path << '\n';
    return false;
  }
  config.custom_provider_file = path;
  const xml::XPath xpath(doc);
  log::ErrorLog(log::level::DEBUG).stream() << "Provider custom xml: " << path;
  xmlXPathContext* context = xpath.context();
  update_provider_options(config, context);
  return true;
}

bool parse_provider_tag(xmlNode* tag, Config& config) {
  std::vector<std::string> names;
  if (!get_provider_list(tag, names, config)) {
    return false;
  }
  std::set<std::string> seen;
  for (const std::string& name : names) {
    const auto known = config.providers.find(name);
    if (known != config.providers.end()) {
      seen.insert(known->second->name);
      continue;
    }
    auto provider = std::make_shared<provider_config>();
    provider->name = name;
    provider->aux_path = config.root + "/provider/share";
    provider->config_dir = config.root + "/etc/providers";
    provider->config_file = written_path::provider(name, provider->config_dir);
    const int status = Preprocessor::parse_provider_config_xml(*provider, provider->config_file,
                                                               config, provider->aux_path);
    if (status == 1) {
      return false;
    }
    // A document that can't be accessed leaves its half-filled record in the run.
    seen.insert(provider->name);
    config.providers[provider->name] = provider;
  }
  if (!seen.empty()) {
    log_providers(seen);
  }
  return true;
}

bool parse_provider_tag(xmlNode* tag, Fwd& fwd, Config& config) {
  std::vector<std::string> names;
  if (!get_provider_list(tag, names, config)) {
    return false;
  }
  internal::GroupAttributes<provider_config> group;
  group.attributes = {{"dependency_type", "non-blocking"}};
  std::set<std::string> seen;
  for (const xmlNode* element : xml::get_child_nodes(tag, "provider")) {
    const std::string name = xml::content_of(element);
    std::shared_ptr<provider_config>& provider = config.providers[name];
    if (provider == nullptr) {
      provider = std::make_shared<provider_config>();
      provider->name = name;
      provider->aux_path = fwd.provider_aux_path;
      provider->config_dir = fwd.provider_path;
      detail::note_named({DocumentKind::PROVIDER, name,
                          written_path::provider(name, provider->config_dir),
                          xml::place_of(element)});
    }
    group.members.push_back(provider);
    seen.insert(provider->name);
    provider->fwds.insert(&fwd);
  }
  fwd.provider_groups.push_back(std::move(group));
  if (!seen.empty()) {
    log_providers(seen);
  }
  return true;
}

}  // namespace qorn::preproc
