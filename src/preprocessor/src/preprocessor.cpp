#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>

#include <qorn/datastore/datastore_parse_utility.h>
#include <qorn/log/error_log.h>
#include <qorn/log/output_log.h>
#include <qorn/node.h>
#include <qorn/preproc/preprocessor.h>
#include <qorn/util/engine_helper.h>

namespace qorn::preproc {
namespace {

int fail(const char* words) {
  log::ErrorLog(log::level::ERROR).stream() << words;
  return 1;
}

}  // namespace

Preprocessor::Preprocessor() {
  commands = {{"01", [this](int argc, char** argv,
                            Config& config) { return cmd_collect(argc, argv, config); }},
              {"10", [this](int argc, char** argv,
                            Config& config) { return cmd_analyze(argc, argv, config); }},
              {"generate_rules", [this](int argc, char** argv, Config& config) {
                 return cmd_generate_solutions(argc, argv, config);
               }}};
}

int Preprocessor::Run(Config& config, int argc, char** argv) {
  std::signal(SIGINT, terminate);
  log::OutputLog::set_out_streams("", std::ios_base::out | std::ios_base::trunc);
  const RunScope scope;
  int status = 1;
  try {
    status = run_pipeline(config, argc, argv);
  } catch (const std::exception& error) {
    log::ErrorLog(log::level::ERROR).stream() << error.what();
  }
  notes_ = scope.notes();
  return status;
}

int Preprocessor::run_pipeline(Config& config, int argc, char** argv) {
  set_defaults_in_config(config);
  update_paths(config);
  if (!config.common_options.skip_command_processing) {
    const int status = ProcessCommand(argc, argv, config);
    if (status != 0) {
      return status;
    }
  }
  log::OutputLog().stream() << util::EngineHelper::format_header() << "\n";
  set_config_xsd(config);
  set_env_prop_on_off(config);
  if (!CheckConfiguration(config)) {
    return 1;
  }
  if (read_documents(config) == 1 || open_datastores(config) == 1) {
    return 1;
  }
  if (config.common_options.parse_node_groups && node_group_parser.parse_group_file(config) == 1) {
    log::OutputLog().stream() << "Error in parsing node group file: " << config.node_group_file
                              << "\n";
    return 1;
  }
  find_database_names(config);
  print_handler.print_database();
  populate_config_params_checks(config);
  return 0;
}

// Line ends within the words give an empty line behind them, which scripts may rely on.
int Preprocessor::read_documents(Config& config) {
  if (config_parser.parse_configuration_xml(config) == 1) {
    return fail("Could not parse configuration XML.\n");
  }
  if (config_parser.load_default_fwds(config) == 1) {
    return 1;
  }
  if (config_parser.parse_type_map(config, config.root + "/etc/CLIPS_type_map.xml",
                                   config.root + "/etc/type_map.xsd") == 1) {
    return fail("Could not parse CLIPS type map.\n");
  }
  if (fwd_parser.load_fwds(config, true) == 1) {
    return fail("Could not load framework definitions.\n");
  }
  if (config_parser.parse_tag_message_schema(config, config.root + "/etc/schema_map.xsd") == 1) {
    return fail("Could not load message category mapping files");
  }
  if (!build_provider_list(config)) {
    return fail("No providers found.\n");
  }
  return 0;
}

int Preprocessor::open_datastores(Config& config) {
  try {
    datastore::DataStoreParseUtility::initializeDatastoreExtensions(config.datastores);
  } catch (const std::runtime_error& error) {
    log::ErrorLog(log::level::ERROR).stream() << "Database failed to initialize.";
    log::ErrorLog(log::level::DEBUG).stream() << error.what();
    return 1;
  }
  return 0;
}

void Preprocessor::terminate(int signal_number) {
  log::OutputLog().stream() << "\nPreprocessor: caught signal. Cleaning up.\n";
  std::exit(signal_number);
}

void Preprocessor::set_defaults_in_config(Config& config) {
  if (config.root.empty()) {
    config.root = node::get_default_path();
  }
  config.config_file = config.root + "/etc/qorn.xml";
}

void Preprocessor::update_paths(Config& config) {
  config.root = node::get_default_path();
  if (config.bin_path.empty()) {
    config.bin_path = config.root + "/bin";
  }
  datastore::DataStoreParseUtility::set_default_install_path(config.root);
}

void Preprocessor::set_config_xsd(Config& config) {
  const char* xsd = std::getenv("QORN_CONFIG_XSD");
  config.config_xsd = xsd != nullptr ? xsd : config.root + "/etc/qorn.xsd";
}

void Preprocessor::set_env_prop_on_off(Config& config) {
  const char* turned_off = std::getenv("QORN_TURN_OFF_ENV_PROPAGATION");
  if (turned_off != nullptr && std::strcmp(turned_off, "true") == 0) {
    config.env_propagation = false;
  }
}

}  // namespace qorn::preproc
