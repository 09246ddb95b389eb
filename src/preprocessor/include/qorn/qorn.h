#pragma once

/// Everything that a front-end or an engine needs.
///
///   qorn::Config config;
///   config.common_options.parse_node_groups = true;    // before Run, if groups are wanted
///   qorn::preproc::Preprocessor preprocessor;
///   int status = preprocessor.Run(config, argc, argv);  // 0: the record is complete
///   ...                                                 // walk config.fwds->ready_nodes
///   qorn::release_frameworks(config);                   // when the record is done with
///
/// Which operation is called when
/// - Before Run: nothing; a record is handed over as constructed, but for skip_command_processing
///   and parse_node_groups of its common_options. A front-end without a main document may call
///   qorn::init_api_config and qorn::set_suppressions instead of Run.
/// - After a Run that gave 0, by the front-end: log::OutputLog::set_out_streams(config.log_file,
/// ...)
///   opens the log file, if one was asked for.
/// - By an engine, once it knows the nodes of a run that reads from a database: it sets
///   config.cluster_definition and calls preproc::NodeGroupParser::create_node_groups.
/// - By a collect engine: preproc::populate_option_vars_map gives the option sets of a provider
///   with their environment texts. preproc::read_config reads the collector section of a
///   document; called after Run it doesn't reach the providers that are already present.
///
/// What a second Run in one process inherits: the log level (log::LOG_LEVEL) and destination, the
/// handler of SIGINT, and the pattern by which variable ids are looked up in rule files. The output
/// streams are set to the console and the list of stores is replaced. Use a fresh Config.
///
/// Memory: framework definitions, graph nodes and group trees refer to one another with strong
/// references, so that an engine may hold any of them longer than the record. They are freed only
/// after release_frameworks (or FwdRegistry::release, release_tree) has taken these apart.

#include <qorn/api.h>
#include <qorn/cluster_definition.h>
#include <qorn/config.h>
#include <qorn/config_param.h>
#include <qorn/constants.h>
#include <qorn/datastore/datastore_config.h>
#include <qorn/datastore/datastore_parse_utility.h>
#include <qorn/document_kind.h>
#include <qorn/extensions.h>
#include <qorn/fs.h>
#include <qorn/fs/descriptor.h>
#include <qorn/fwd.h>
#include <qorn/log/error_log.h>
#include <qorn/log/output_log.h>
#include <qorn/node.h>
#include <qorn/node/nodelist.h>
#include <qorn/place.h>
#include <qorn/preproc/clips_parser.h>
#include <qorn/preproc/common_helpers.h>
#include <qorn/preproc/config.h>
#include <qorn/preproc/config_parser.h>
#include <qorn/preproc/fwd_parser.h>
#include <qorn/preproc/node_group_parser.h>
#include <qorn/preproc/options.h>
#include <qorn/preproc/preprocessor.h>
#include <qorn/preproc/print_handler.h>
#include <qorn/preproc/rule_file.h>
#include <qorn/preproc/run_scope.h>
#include <qorn/provider_config.h>
#include <qorn/provider_optionset.h>
#include <qorn/rule_element.h>
#include <qorn/rule_xml_parser.h>
#include <qorn/run_notes.h>
#include <qorn/solution.h>
#include <qorn/sorting.h>
#include <qorn/str.h>
#include <qorn/str/lines.h>
#include <qorn/templates/data_pt_types.h>
#include <qorn/templates/reports.h>
#include <qorn/util/engine_helper.h>
#include <qorn/word_table.h>
#include <qorn/written_path.h>
#include <qorn/xml.h>
#include <qorn/xml/document.h>
#include <qorn/xml/faults.h>
#include <qorn/xml/parser.h>
#include <qorn/xml/schema.h>
#include <qorn/xml/xpath.h>
