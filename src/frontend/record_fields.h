#pragma once

#include <tuple>
#include <type_traits>

#include <qorn/config.h>

/// The fields of each record under the names by which people and programs know them. The record
/// as JSON, the settings and the differences of records are made from these lists. What they leave
/// out is an engine's or nobody's.
namespace qorn::frontend {

template <typename Record, typename Value>
struct Field {
  static constexpr bool IS_SETTING = false;

  constexpr Field(const char* field_name, Value Record::*field) : name(field_name), member(field) {}

  const char* name;
  Value Record::*member;
};

/// A field that options, environment or the main document make. Of a record in it those of its
/// own fields that are settings.
template <typename Record, typename Value>
struct Setting : Field<Record, Value> {
  static constexpr bool IS_SETTING = true;

  constexpr Setting(const char* field_name, Value Record::*field)
      : Field<Record, Value>(field_name, field) {}
};

/// The fields of a record in the order in which they are written; none for what is no record.
template <typename Record>
inline constexpr std::tuple FIELDS{};

template <typename Record>
concept HasFields = std::tuple_size_v<std::remove_cvref_t<decltype(FIELDS<Record>)>> >
0;

/// Calls `take` with each field and its value.
template <HasFields Record, typename Take>
void for_each_field(const Record& record, const Take& take) {
  std::apply([&](const auto&... field) { (take(field, record.*field.member), ...); },
             FIELDS<Record>);
}

/// Calls `take` with the name and the value of each field that is a setting.
template <HasFields Record, typename Take>
void for_each_setting(const Record& record, const Take& take) {
  for_each_field(record, [&](const auto& field, const auto& value) {
    if constexpr (std::remove_cvref_t<decltype(field)>::IS_SETTING) {
      take(field.name, value);
    }
  });
}

/// The name of a field. A member that is in no list doesn't compile.
template <typename Record, typename Value>
consteval const char* name_of(Value Record::*member) {
  const char* name = nullptr;
  const auto look_at = [&](const auto& field) {
    if constexpr (std::is_same_v<decltype(field.member), Value Record::*>) {
      name = field.member == member ? field.name : name;
    }
  };
  std::apply([&](const auto&... field) { (look_at(field), ...); }, FIELDS<Record>);
  return name == nullptr ? throw "no field of that record" : name;
}

template <>
inline constexpr std::tuple FIELDS<PostprocessorExtension>{
    Field{"name", &PostprocessorExtension::name}};

template <>
inline constexpr std::tuple FIELDS<AnalyzerExtensionType>{
    Field{"name", &AnalyzerExtensionType::name}};

template <>
inline constexpr std::tuple FIELDS<MessageCatalog>{Field{"name", &MessageCatalog::name}};

template <>
inline constexpr std::tuple FIELDS<Rule>{Field{"name", &Rule::name}, Field{"file", &Rule::file},
                                         Field{"description", &Rule::description}};

template <typename Member>
inline constexpr std::tuple FIELDS<internal::GroupAttributes<Member>>{
    Field{"attributes", &internal::GroupAttributes<Member>::attributes},
    Field{"members", &internal::GroupAttributes<Member>::members}};

template <>
inline constexpr std::tuple FIELDS<FwdNode>{
    Field{"blocking_count", &FwdNode::blocking_count}, Field{"visited", &FwdNode::visited},
    Field{"groups", &FwdNode::groups}, Field{"parents", &FwdNode::parents}};

template <>
inline constexpr std::tuple FIELDS<Fwd>{Field{"kb_mods", &Fwd::kb_mods},
                                        Field{"rules", &Fwd::rules},
                                        Field{"provider_path", &Fwd::provider_path},
                                        Field{"provider_aux_path", &Fwd::provider_aux_path},
                                        Field{"kb_path", &Fwd::kb_path},
                                        Field{"description", &Fwd::description},
                                        Field{"name", &Fwd::name},
                                        Field{"postproc_extensions", &Fwd::postproc_extensions},
                                        Field{"analyzer_extensions", &Fwd::analyzer_extensions},
                                        Field{"message_catalogs", &Fwd::message_catalogs},
                                        Field{"custom_result", &Fwd::custom_result},
                                        Field{"path", &Fwd::path},
                                        Field{"provider_groups", &Fwd::provider_groups},
                                        Field{"state", &Fwd::state},
                                        Field{"node", &Fwd::node}};

template <>
inline constexpr std::tuple FIELDS<FwdRegistry>{
    Setting{"names", &FwdRegistry::names}, Field{"by_path", &FwdRegistry::by_path},
    Field{"roots", &FwdRegistry::roots}, Field{"ready_nodes", &FwdRegistry::ready_nodes}};

template <>
inline constexpr std::tuple FIELDS<provider_config>{
    Field{"name", &provider_config::name},
    Field{"config_file", &provider_config::config_file},
    Field{"config_dir", &provider_config::config_dir},
    Field{"aux_path", &provider_config::aux_path},
    Field{"command", &provider_config::command},
    Field{"max_nodes", &provider_config::max_nodes},
    Field{"min_nodes", &provider_config::min_nodes},
    Field{"encoding", &provider_config::encoding},
    Field{"timeout", &provider_config::timeout},
    Field{"architecture", &provider_config::architecture},
    Field{"cluster", &provider_config::cluster},
    Field{"timeout_scale", &provider_config::timeout_scale},
    Field{"version", &provider_config::version},
    Field{"nodelist_method", &provider_config::nodelist_method},
    Field{"permutations", &provider_config::permutations},
    Field{"roles", &provider_config::roles},
    Field{"success_codes", &provider_config::success_codes},
    Field{"fwds", &provider_config::fwds}};

template <>
inline constexpr std::tuple FIELDS<ProviderOptionset>{
    Field{"scale", &ProviderOptionset::scale}, Field{"timeout", &ProviderOptionset::timeout},
    Field{"id", &ProviderOptionset::id}, Field{"variables", &ProviderOptionset::variables}};

template <>
inline constexpr std::tuple FIELDS<Node>{Field{"subcluster", &Node::subcluster},
                                         Field{"hostname", &Node::hostname},
                                         Field{"roles", &Node::roles}};

template <>
inline constexpr std::tuple FIELDS<ClusterDefinition>{
    Field{"name", &ClusterDefinition::name},
    Field{"fwd_nodes", &ClusterDefinition::fwd_nodes},
    Field{"implicit", &ClusterDefinition::implicit},
    Field{"excluded_groups", &ClusterDefinition::excluded_groups},
    Field{"removed_fwds", &ClusterDefinition::removed_fwds},
    Field{"nodes", &ClusterDefinition::nodes}};

template <>
inline constexpr std::tuple FIELDS<Sorting>{Field{"ascending", &Sorting::ascending},
                                            Field{"field", &Sorting::field}};

template <>
inline constexpr std::tuple FIELDS<Suppression>{
    Field{"confidence", &Suppression::confidence}, Field{"id", &Suppression::id},
    Field{"node_id", &Suppression::node_id}, Field{"severity", &Suppression::severity}};

template <>
inline constexpr std::tuple FIELDS<ConfigParam>{Field{"group", &ConfigParam::group},
                                                Field{"name", &ConfigParam::name},
                                                Field{"values", &ConfigParam::values}};

template <>
inline constexpr std::tuple FIELDS<datastore::DataStoreConfig>{
    Field{"type", &datastore::DataStoreConfig::type},
    Field{"name", &datastore::DataStoreConfig::name},
    Field{"extension_name", &datastore::DataStoreConfig::extension_name},
    Field{"extension_text", &datastore::DataStoreConfig::extension_text},
    Field{"parameters", &datastore::DataStoreConfig::parameters}};

template <>
inline constexpr std::tuple FIELDS<templates::Reports_t>{
    Field{"variants", &templates::Reports_t::variants}};

template <>
inline constexpr std::tuple FIELDS<templates::Reports_kb_t>{
    Field{"columns", &templates::Reports_kb_t::columns},
    Field{"message_id", &templates::Reports_kb_t::message_id},
    Field{"constraints", &templates::Reports_kb_t::constraints}};

template <>
inline constexpr std::tuple FIELDS<Solution>{Field{"name", &Solution::name},
                                             Field{"expected", &Solution::expected}};

template <>
inline constexpr std::tuple FIELDS<RuleBlock>{
    Field{"class_name", &RuleBlock::class_name},
    Field{"msg_id", &RuleBlock::msg_id},
    Field{"analysis_extension", &RuleBlock::analysis_extension},
    Field{"severity", &RuleBlock::severity},
    Field{"list", &RuleBlock::list},
    Field{"nodes", &RuleBlock::nodes}};

template <>
inline constexpr std::tuple FIELDS<Slot>{
    Field{"name", &Slot::name}, Field{"value_constraint", &Slot::value_constraint},
    Field{"multislot_constraint", &Slot::multislot_constraint}, Field{"value", &Slot::value}};

template <>
inline constexpr std::tuple FIELDS<CommonOptions>{
    Field{"debug_log", &CommonOptions::debug_log},
    Field{"config_parsed", &CommonOptions::config_parsed},
    Field{"skip_command_processing", &CommonOptions::skip_command_processing},
    Field{"parse_node_groups", &CommonOptions::parse_node_groups},
    Field{"deprecation_messages", &CommonOptions::deprecation_messages}};

template <>
inline constexpr std::tuple FIELDS<Config>{
    Setting{"operations", &Config::operations},
    Setting{"num_permutations", &Config::num_permutations},
    Setting{"ignore_subclusters", &Config::ignore_subclusters},
    Setting{"re_collect", &Config::re_collect},
    Setting{"env_propagation", &Config::env_propagation},
    Setting{"db_close_delay", &Config::db_close_delay},
    Setting{"node_include", &Config::node_include},
    Setting{"sort_fields", &Config::sort_fields},
    Setting{"suppressions", &Config::suppressions},
    Setting{"data_age_threshold", &Config::data_age_threshold},
    Field{"kb_config_files", &Config::kb_config_files},
    Field{"message_categories", &Config::message_categories},
    Field{"common_options", &Config::common_options},
    Setting{"fwds", &Config::fwds},
    Field{"providers", &Config::providers},
    Field{"command_line", &Config::command_line},
    Setting{"log_level", &Config::log_level},
    Setting{"config_file", &Config::config_file},
    Field{"custom_provider_file", &Config::custom_provider_file},
    Setting{"config_xsd", &Config::config_xsd},
    Setting{"node_file", &Config::node_file},
    Setting{"node_group_file", &Config::node_group_file},
    Field{"database_names", &Config::database_names},
    Setting{"db_names", &Config::db_names},
    Field{"option_flags", &Config::option_flags},
    Setting{"datastores", &Config::datastores},
    Field{"cluster_definition", &Config::cluster_definition},
    Field{"node_groups", &Config::node_groups},
    Setting{"min_severity", &Config::min_severity},
    Setting{"log_file", &Config::log_file},
    Setting{"postprocessor_extensions", &Config::postprocessor_extensions},
    Setting{"postproc_config_files", &Config::postproc_config_files},
    Field{"message_schema_files", &Config::message_schema_files},
    Field{"postproc_tables", &Config::postproc_tables},
    Field{"diagnosis_signs", &Config::diagnosis_signs},
    Field{"diagnosis_rules", &Config::diagnosis_rules},
    Field{"postproc_reports", &Config::postproc_reports},
    Field{"solutions", &Config::solutions},
    Field{"type_map", &Config::type_map},
    Field{"multi_type_map", &Config::multi_type_map},
    Field{"message_category_names", &Config::message_category_names},
    Setting{"bin_path", &Config::bin_path},
    Setting{"root", &Config::root},
    Field{"nodes", &Config::nodes},
    Setting{"config_params", &Config::config_params},
    Field{"async_output_dir", &Config::async_output_dir},
    Field{"provider_config_dir", &Config::provider_config_dir},
    Field{"provider_auxiliary_path", &Config::provider_auxiliary_path},
    Field{"collector_timeout_scale", &Config::collector_timeout_scale},
    Field{"collector_network_interface", &Config::collector_network_interface},
    Field{"collector_timeout", &Config::collector_timeout},
    Field{"collection_timeout", &Config::collection_timeout},
    Field{"provider_options", &Config::provider_options},
    Setting{"collect_extension", &Config::collect_extension},
    Field{"rules_file", &Config::rules_file},
    Field{"rules_xsd", &Config::rules_xsd},
    Field{"analysis_map_xsd", &Config::analysis_map_xsd},
    Field{"message_file", &Config::message_file},
    Field{"message_prefix", &Config::message_prefix},
    Field{"rules_kb_path", &Config::rules_kb_path},
    Field{"rules_directory", &Config::rules_directory},
    Field{"rule_elements", &Config::rule_elements}};

}  // namespace qorn::frontend
