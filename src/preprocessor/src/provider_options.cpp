#include <charconv>

#include <qorn/log/error_log.h>
#include <qorn/preproc/config.h>
#include <qorn/str.h>
#include <qorn/xml.h>
#include <qorn/xml/xpath.h>

namespace qorn::preproc {
namespace {

using Variables = std::map<std::string, std::string>;

/// Limits below this are refused: no provider ends sooner.
constexpr long LOWEST_TIMEOUT = 2;

/// " for provider P, with option set S" as far as both are known.
void log_unknown_scale(const std::string& word, const std::string& provider,
                       const std::string& optionset) {
  log::ErrorLog message(log::level::WARNING);
  message.stream() << "Timeout scaling option '" << word << "' did not match known options, "
                   << "using default scaling value";
  if (!provider.empty()) {
    message.stream() << ", for provider " << provider;
  }
  if (!optionset.empty()) {
    message.stream() << "with option set ," << optionset;
  }
}

void log_bad_timeout(int level, const std::string& value, const std::string& provider,
                     const std::string& optionset) {
  log::ErrorLog(level).stream() << "Timeout specification"
                                << " for provider " << provider << ", with option set " << optionset
                                << " is invalid, with the given value of, " << value
                                << " and will be ignored";
}

/// Whether `value` is a limit; logs why not.
bool check_timeout(const std::string& value, const std::string& provider,
                   const std::string& optionset) {
  std::size_t used = 0;
  long number = 0;
  try {
    number = std::stol(value, &used);
  } catch (const std::exception&) {
    log_bad_timeout(log::level::WARNING, value, provider, optionset);
    return false;
  }
  if (used != value.size() || number < LOWEST_TIMEOUT) {
    log_bad_timeout(log::level::ERROR, value, provider, optionset);
    return false;
  }
  return true;
}

void read_timeout(const xmlNode* node, Variables& variables, const std::string& provider,
                  const std::string& optionset) {
  const std::string content = xml::content_of(node);
  if (content.empty()) {
    log::ErrorLog(log::level::ERROR).stream()
        << "empty timeout tag specified in the provider configuration.";
    return;
  }
  std::string scale;
  if (xml::get_attr(node, "scale", scale) && SCALE_TYPES.count(scale) == 0) {
    log_unknown_scale(scale, provider, optionset);
    scale = "constant";
  }
  const std::string value = str::stripws(content);
  if (check_timeout(value, provider, optionset)) {
    variables["timeout"] = value;
    variables["scale"] = scale;
  }
}

/// Reads the options of one provider: its sets, and what all of them have in common.
void read_provider(const xmlNode* provider, const std::string& name,
                   std::vector<ProviderOptionset>& sets, Variables& common) {
  for (xmlNode* child : xml::Elements(provider)) {
    if (xml::name_of(child) != "optionset") {
      get_option_variables(child, common, name, "");
      continue;
    }
    ProviderOptionset set;
    if (!xml::get_attr(child, "id", set.id)) {
      log::ErrorLog(log::level::WARNING).stream()
          << "Unable to find ID for optionset. Options will be ignored for provider " << name;
      continue;
    }
    get_option_variables(child, set.variables, name, set.id);
    extract_timeout_and_scale(set.variables, set.timeout, set.scale);
    sets.push_back(set);
  }
}

}  // namespace

void update_provider_options(Config& config, xmlXPathContext*& context) {
  const std::vector<xmlNode*> containers = xml::find_nodes(context, "//collector/provider");
  if (containers.empty()) {
    return;
  }
  // The names are those of the first container; a name's first element anywhere counts.
  std::map<std::string, const xmlNode*, std::less<>> first_of_name;
  for (const xmlNode* container : containers) {
    for (const xmlNode* child : xml::Elements(container)) {
      first_of_name.emplace(xml::name_of(child), child);
    }
  }
  for (const xmlNode* child : xml::Elements(containers.front())) {
    const std::string name(xml::name_of(child));
    Variables common;
    std::vector<ProviderOptionset> sets;
    read_provider(first_of_name[name], name, sets, common);
    if (sets.empty()) {
      sets.emplace_back();
    }
    for (ProviderOptionset& set : sets) {
      set.variables.insert(common.begin(), common.end());
      if (set.timeout <= 0) {
        extract_timeout_and_scale(common, set.timeout, set.scale);
      }
    }
    config.provider_options[str::upper(name)] = sets;
  }
}

int get_option_variables(xmlNode*& parent, Variables& variables, std::string provider,
                         std::string optionset) {
  if (parent == nullptr) {
    return 0;
  }
  for (const xmlNode* child : xml::Elements(parent)) {
    if (xml::name_of(child) == "timeout") {
      read_timeout(child, variables, provider, optionset);
      continue;
    }
    std::string value = xml::content_of(child);
    if (!string_contains_double_quote(value)) {
      variables[std::string(xml::name_of(child))] = str::stripws(value);
    }
  }
  return 1;
}

bool string_contains_double_quote(std::string& value) {
  if (value.find('"') == std::string::npos) {
    return false;
  }
  log::ErrorLog(log::level::WARNING).stream()
      << "Environment variables intended to be passed to providers"
      << " should not contain double quotes. The value "
      << "<" << value << "> will be ignored.";
  return true;
}

void extract_timeout_and_scale(Variables& variables, long& timeout, ScaleType& scale) {
  const auto limit = variables.find("timeout");
  if (limit == variables.end()) {
    return;
  }
  timeout = std::stol(limit->second);
  const auto word = variables.find("scale");
  if (word != variables.end()) {
    look_up(SCALE_TYPES, word->second, scale);
  }
}

std::string configuration_conversion_helper(const Variables& variables,
                                            const std::string& provider) {
  std::string result;
  for (const auto& [key, value] : variables) {
    if (key != "timeout" && key != "scale") {
      result +=
          "QORN_PROVIDER_" + provider + "_" + str::upper(key) + "=\"" + str::stripws(value) + "\" ";
    }
  }
  return result;
}

std::vector<ProcessedProviderAttributes> populate_option_vars_map(const Config& config,
                                                                  const std::string& provider) {
  std::vector<ProcessedProviderAttributes> result;
  const auto found = config.provider_options.find(provider);
  if (provider.empty() || found == config.provider_options.end()) {
    return result;
  }
  for (const ProviderOptionset& set : found->second) {
    ProcessedProviderAttributes processed;
    static_cast<BaseProviderAttributes&>(processed) =
        static_cast<const BaseProviderAttributes&>(set);
    processed.environment = configuration_conversion_helper(set.variables, provider);
    result.push_back(processed);
  }
  return result;
}

}  // namespace qorn::preproc
