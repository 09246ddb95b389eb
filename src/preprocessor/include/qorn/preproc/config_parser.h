#pragma once

#include <string>
#include <vector>

#include <libxml/tree.h>

#include <qorn/config.h>

namespace qorn {

namespace preproc {

/// Reads the main document and the documents that fill the record's tables. Holds no state.
/// Operations return 0 for success and 1 for failure, having logged the reason at level 3, unless
/// they say otherwise; `root` is a document's root element.
class ConfigParser {
 public:
  /// Reads the main document, config.config_file, against config.config_xsd; what the command
  /// line has set stays. On success config.common_options.config_parsed becomes true. Lets
  /// through what parse_tag_config throws.
  int parse_configuration_xml(Config& config);

  /// Reads the sections of a main document in the order of a run, up to the first that fails;
  /// `root` may be null, which stands for an empty document.
  int parse_sections(xmlNode* root, Config& config);

  // The sections of the main document, each in its own operation.
  int parse_tag_postproc(xmlNode* root, Config& config);
  int parse_tag_fwd(xmlNode* root, Config& config);
  int parse_tag_log(xmlNode* root, Config& config);
  void parse_tag_nodegroup(xmlNode* root, Config& config);
  int parse_tag_collect(xmlNode* root, Config& config);
  int parse_tag_recollect(xmlNode* root, Config& config);
  int parse_tag_env_prop(xmlNode* root, Config& config);

  /// Reads parameters and suppressions. Throws std::invalid_argument or std::out_of_range when
  /// the parameter data-age-threshold is no number, and what parse_xml_config throws.
  int parse_tag_config(xmlNode* root, Config& config);

  /// Settles config.datastores from the command line's sources, else from the document.
  int parse_tag_db(xmlNode* root, Config& config);

  /// Completes config.datastores and makes sure that there is one to use.
  int configure_tag_db(Config& config);

  /// Whether `level` is a log level word or empty: 0, else 1 and a line at level 3.
  int check_valid_log_level(const std::string& level);

  /// Puts a log level word in force; any other text changes nothing.
  void set_log_level(const std::string& level);

  /// Appends the parameters that the children of `node` describe. A null node does nothing. Throws
  /// std::runtime_error with file, line and group when grouped parameters, which hold the values of
  /// those ahead of them, come to more than 10,000,000 values.
  void parse_xml_config(xmlNode* node, std::vector<ConfigParam>& params);

  /// Appends one record for each suppress child. A null node does nothing.
  void parse_xml_suppressions(xmlNode* node, std::vector<Suppression>& suppressions);

  /// Names the default framework definition when nothing else was named; 1, with a line, when the
  /// run analyzes alone.
  int load_default_fwds(Config& config);

  /// Reads the CLIPS type map into config.type_map and config.multi_type_map.
  int parse_type_map(Config& config, const std::string& file, const std::string& xsd);

  /// Reads the message category documents, config.message_schema_files or else the installed one.
  int parse_tag_message_schema(Config& config, const std::string& xsd);

  /// Reads the knowledge base documents, config.kb_config_files, into config.solutions.
  int parse_kb_config(Config& config, const std::string& xsd);

  /// Reads those of config.postproc_config_files (or else the installed one) that are table
  /// documents. 0 when at least one was, 1 when none was: no error. The faults of the others
  /// are reported.
  int parse_postproc_table_config(Config& config, const std::string& xsd);

  /// Reads config.postproc_config_files as report documents into config.postproc_reports; the
  /// last document's reports remain.
  int parse_postproc_reports_config(Config& config, const std::string& xsd);
};

}  // namespace preproc

/// Reads a constraints element into `variant`. 0 when the variant is good, 1 when it is to be
/// dropped: a null node, no child at all, or an empty message_id (with a line at level 3).
int parse_constraints(xmlNode* node, templates::Reports_kb_t& variant);

}  // namespace qorn
