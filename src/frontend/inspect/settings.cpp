#include "settings.h"

#include <algorithm>

namespace qorn::inspect {
namespace {

std::string joined(const std::vector<std::string>& texts) {
  std::string line;
  for (const std::string& text : texts) {
    line.append(line.empty() ? "" : ", ").append(text);
  }
  return line;
}

template <typename List, typename ToText>
std::string joined(const List& list, ToText to_text) {
  std::vector<std::string> texts;
  std::transform(list.begin(), list.end(), std::back_inserter(texts), to_text);
  return joined(texts);
}

std::string text_of(bool value) {
  return value ? "true" : "false";
}

std::string stages_of(std::uint64_t operations) {
  std::vector<std::string> stages;
  if ((operations & operation::COLLECT) != 0) {
    stages.emplace_back("collect");
  }
  if ((operations & operation::ANALYZE) != 0) {
    stages.emplace_back("analyze");
  }
  return joined(stages);
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

std::string permutations_of(std::uint32_t number) {
  return number == ALL_PERMUTATIONS ? "all" : std::to_string(number);
}

void add_params(const Config& config, Settings& settings) {
  for (const ConfigParam& param : config.config_params) {
    const std::string group = param.group.empty() ? "" : param.group + "/";
    settings.emplace_back("config_params." + group + param.name, joined(param.values));
  }
}

}  // namespace

Settings settings_of(const Config& config) {
  const auto text = [](const auto& each) { return text_of(each); };
  Settings settings = {
      {"operations", stages_of(config.operations)},
      {"num_permutations", permutations_of(config.num_permutations)},
      {"ignore_subclusters", text_of(config.ignore_subclusters)},
      {"re_collect", text_of(config.re_collect)},
      {"env_propagation", text_of(config.env_propagation)},
      {"db_close_delay", std::to_string(config.db_close_delay)},
      {"node_include", joined(config.node_include)},
      {"sort_fields", joined(config.sort_fields, text)},
      {"suppressions", joined(config.suppressions, text)},
      {"data_age_threshold", std::to_string(config.data_age_threshold)},
      {"fwds.names", joined(config.fwds->names)},
      {"log_level", config.log_level},
      {"config_file", config.config_file},
      {"config_xsd", config.config_xsd},
      {"node_file", config.node_file},
      {"node_group_file", config.node_group_file},
      {"db_names", joined(config.db_names)},
      {"datastores", joined(config.datastores, text)},
      {"min_severity", std::to_string(config.min_severity)},
      {"log_file", config.log_file},
      {"postprocessor_extensions",
       joined(config.postprocessor_extensions, [](const auto& each) { return each.name; })},
      {"postproc_config_files", joined(config.postproc_config_files)},
      {"collect_extension", config.collect_extension},
      {"bin_path", config.bin_path},
      {"root", config.root}};
  add_params(config, settings);
  return settings;
}

}  // namespace qorn::inspect
