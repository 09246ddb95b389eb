#include "settings.h"

#include <algorithm>
#include <concepts>

#include "record_fields.h"

namespace qorn::inspect {
namespace {

std::string text_of(bool value) {
  return value ? "true" : "false";
}

std::string text_of(std::integral auto number) {
  return std::to_string(number);
}

std::string text_of(const std::string& text) {
  return text;
}

std::string text_of(const Sorting& key) {
  return (key.ascending ? "ascending " : "descending ") + word_of(SORT_FIELDS, key.field);
}

std::string text_of(const Suppression& suppression) {
  std::string text = suppression.id.empty() ? "any message" : suppression.id;
  if (!suppression.node_id.empty()) {
    text += " on " + suppression.node_id;
  }
  if (suppression.severity != 0) {
    text += " severity " + std::to_string(suppression.severity);
  }
  if (suppression.confidence != 0) {
    text += " confidence " + std::to_string(suppression.confidence);
  }
  return text;
}

std::string text_of(const datastore::DataStoreConfig& store) {
  return store.name + " (" + store.extension_name + ") " + store.parameters;
}

std::string text_of(const PostprocessorExtension& extension) {
  return extension.name;
}

template <typename Value>
std::string text_of(const std::vector<Value>& list) {
  std::string line;
  for (const Value& each : list) {
    line.append(line.empty() ? "" : ", ").append(text_of(each));
  }
  return line;
}

std::string stages_of(std::uint64_t operations) {
  std::vector<std::string> stages;
  if ((operations & operation::COLLECT) != 0) {
    stages.emplace_back("collect");
  }
  if ((operations & operation::ANALYZE) != 0) {
    stages.emplace_back("analyze");
  }
  return text_of(stages);
}

template <typename Value>
void add(Settings& settings, const std::string& name, const Value& value) {
  settings.emplace_back(name, text_of(value));
}

void add(Settings& settings, const std::string& name, const std::vector<ConfigParam>& params) {
  for (const ConfigParam& param : params) {
    const std::string group = param.group.empty() ? "" : param.group + "/";
    settings.emplace_back(name + "." + group + param.name, text_of(param.values));
  }
}

void add(Settings& settings, const std::string& name, const std::shared_ptr<FwdRegistry>& fwds) {
  frontend::for_each_setting(*fwds, [&](const char* own_name, const auto& value) {
    add(settings, name + "." + own_name, value);
  });
}

/// What a number of the record means stands in its place.
void explain(Settings& settings, std::string_view name, const std::string& meaning) {
  for (auto& [each, value] : settings) {
    value = each == name ? meaning : value;
  }
}

}  // namespace

Settings settings_of(const Config& config) {
  Settings settings;
  frontend::for_each_setting(
      config, [&](const char* name, const auto& value) { add(settings, name, value); });
  explain(settings, frontend::name_of(&Config::operations), stages_of(config.operations));
  if (config.num_permutations == ALL_PERMUTATIONS) {
    explain(settings, frontend::name_of(&Config::num_permutations), "all");
  }
  // The installation's paths and the parameters, of which there are many, stand last.
  std::stable_partition(settings.begin(), settings.end(), [](const auto& setting) {
    const std::string& name = setting.first;
    return name != "bin_path" && name != "root" && !name.starts_with("config_params.");
  });
  return settings;
}

}  // namespace qorn::inspect
