#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <qorn/cluster_definition.h>
#include <qorn/config_param.h>
#include <qorn/constants.h>
#include <qorn/datastore/datastore_config.h>
#include <qorn/extensions.h>
#include <qorn/fwd.h>
#include <qorn/provider_config.h>
#include <qorn/provider_optionset.h>
#include <qorn/rule_element.h>
#include <qorn/solution.h>
#include <qorn/sorting.h>
#include <qorn/templates/data_pt_types.h>
#include <qorn/templates/reports.h>

namespace qorn {

/// Settings common to all front-ends.
struct CommonOptions {
  bool debug_log = false;                         // "-l debug" was given
  bool config_parsed = false;                     // the main document was read to its end
  bool skip_command_processing = false;           // the caller's: Run leaves argc and argv alone
  bool parse_node_groups = false;                 // the caller's: Run reads the node group document
  std::vector<std::string> deprecation_messages;  // the caller's: printed as they stand
};

/// What is to be run, how, and on which nodes. The caller constructs it, Preprocessor::Run fills
/// it, and the collect or analyze engine reads it afterwards. Texts are empty, numbers zero and
/// lists empty where nothing says otherwise.
struct Config {
  /// Capacity of the fields that are plain character arrays, with the final NUL.
  static constexpr std::size_t PATH_CAPACITY = 4096;

  std::uint64_t operations = 0;        // bits of qorn::operation: the stages of the run
  std::uint32_t num_permutations = 0;  // of node lists; 0 none given, ALL_PERMUTATIONS all
  bool ignore_subclusters = false;
  bool re_collect = false;
  bool env_propagation = true;            // for collector extensions
  std::int32_t db_close_delay = 0;        // in the collect engine's unit
  std::vector<std::string> node_include;  // nodes to keep in the analyzer's output
  std::vector<Sorting> sort_fields;       // first key first
  std::vector<Suppression> suppressions;
  std::uint32_t data_age_threshold = 0;  // seconds; 0 no limit
  std::vector<std::string> kb_config_files;
  std::unordered_map<std::string, std::string> message_categories;  // message id to category
  CommonOptions common_options;
  std::shared_ptr<FwdRegistry> fwds = std::make_shared<FwdRegistry>();          // never null
  std::unordered_map<std::string, std::shared_ptr<provider_config>> providers;  // by name
  std::string command_line;  // readable, joined by blanks, without quoting
  std::string log_level;     // a word of LOG_LEVELS
  std::string config_file;   // main document; blanks escaped when from the command line
  std::string custom_provider_file;
  std::string config_xsd;
  std::string node_file;                    // blanks escaped
  std::string node_group_file;              // blanks escaped when from the command line
  std::vector<std::string> database_names;  // sources of the stores in use
  std::vector<std::string> db_names;        // sources of the command line
  std::uint64_t option_flags = 0;           // bits of qorn::option_flag
  std::vector<datastore::DataStoreConfig> datastores;
  std::shared_ptr<ClusterDefinition> cluster_definition;  // the engine's: the whole node set
  std::map<std::string, std::shared_ptr<ClusterDefinition>> node_groups;
  std::int32_t min_severity = 0;
  std::string log_file;
  std::vector<PostprocessorExtension> postprocessor_extensions;
  std::vector<std::string> postproc_config_files;
  std::vector<std::string> message_schema_files;
  /// Table id to (column name, message id).
  std::map<std::string, std::vector<std::pair<std::string, std::string>>> postproc_tables;
  std::map<std::string, std::vector<std::string>> diagnosis_signs;  // diagnosis id to sign ids
  std::map<std::string, std::vector<std::string>> diagnosis_rules;  // id to rules that mention it
  std::map<std::string, templates::Reports_t> postproc_reports;
  std::map<std::string, Solution> solutions;
  std::map<std::string, templates::DataPt_TYPES> type_map;        // CLIPS name to its type
  std::map<std::string, templates::DataPt_TYPES> multi_type_map;  // to the type of its values
  std::set<std::string> message_category_names;
  std::string bin_path;
  std::string root;         // installation root
  std::vector<Node> nodes;  // in file order, duplicates kept
  std::vector<ConfigParam> config_params;
  char async_output_dir[PATH_CAPACITY] = {};
  char provider_config_dir[PATH_CAPACITY] = {};
  char provider_auxiliary_path[PATH_CAPACITY] = {};
  ScaleType collector_timeout_scale = ScaleType::CONSTANT;
  std::string collector_network_interface;
  std::int64_t collector_timeout = 0;   // seconds, for providers that state none
  std::int64_t collection_timeout = 0;  // seconds, for the whole collection
  std::map<std::string, std::vector<ProviderOptionset>> provider_options;  // by upper-case name
  std::string collect_extension;
  std::string rules_file;
  std::string rules_xsd;
  std::string analysis_map_xsd;
  std::string message_file;
  std::string message_prefix;
  std::string rules_kb_path;
  std::string rules_directory;
  std::vector<Element> rule_elements;
};

/// Takes the framework graph and the trees of all node groups apart; see FwdRegistry::release.
void release_frameworks(Config& config);

}  // namespace qorn
