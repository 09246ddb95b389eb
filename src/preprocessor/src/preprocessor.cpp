#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>

#include <qorn/datastore/datastore_parse_utility.h>
#include <qorn/detail/notes.h>
#include <qorn/document_kind.h>
#include <qorn/log/error_log.h>
#include <qorn/log/output_log.h>
#include <qorn/node.h>
#include <qorn/preproc/preprocessor.h>
#include <qorn/util/engine_helper.h>

namespace qorn::preproc {
namespace {

/// One step of reading the documents. Line ends within the words give an empty line behind them,
/// which scripts may rely on.
struct Reader {
  DocumentStep step;
  int (*read)(Preprocessor& self, Config& config);
  const char* words;  // when it fails; null: the step has said everything
};

constexpr Reader READERS[] = {
    {DocumentStep::MAIN_DOCUMENT,
     [](Preprocessor& self, Config& config) {
       return self.config_parser.parse_configuration_xml(config);
     },
     "Could not parse configuration XML.\n"},
    {DocumentStep::DEFAULT_FRAMEWORKS,
     [](Preprocessor& self, Config& config) {
       return self.config_parser.load_default_fwds(config);
     },
     nullptr},
    {DocumentStep::TYPE_MAP,
     [](Preprocessor& self, Config& config) {
       return self.config_parser.parse_type_map(
           config, installed_place(DocumentKind::TYPE_MAP, config.root),
           schema_path(DocumentKind::TYPE_MAP, config.root));
     },
     "Could not parse CLIPS type map.\n"},
    {DocumentStep::FRAMEWORKS,
     [](Preprocessor& self, Config& config) { return self.fwd_parser.load_fwds(config, true); },
     "Could not load framework definitions.\n"},
    {DocumentStep::MESSAGE_SCHEMAS,
     [](Preprocessor& self, Config& config) {
       return self.config_parser.parse_tag_message_schema(
           config, schema_path(DocumentKind::MESSAGE_SCHEMA, config.root));
     },
     "Could not load message category mapping files"},
    {DocumentStep::PROVIDERS,
     [](Preprocessor& self, Config& config) { return self.build_provider_list(config) ? 0 : 1; },
     "No providers found.\n"}};

/// A run under way. Its notes are handed over when it ends, however that comes about.
class NotedRun {
 public:
  explicit NotedRun(RunNotes& notes) : notes_(notes) {}
  NotedRun(const NotedRun&) = delete;
  NotedRun& operator=(const NotedRun&) = delete;
  ~NotedRun() { notes_ = scope_.take_notes(); }

 private:
  RunNotes& notes_;
  RunScope scope_;
};

/// Says what a failed step means for the run; the status that it ends with.
int fail(DocumentStep step) {
  for (const Reader& reader : READERS) {
    if (reader.step == step && reader.words != nullptr) {
      log::ErrorLog(log::level::ERROR).stream() << reader.words;
    }
  }
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
  notes_ = {};
  try {
    const NotedRun run(notes_);
    return run_pipeline(config, argc, argv);
  } catch (const std::exception& error) {
    log::ErrorLog(log::level::ERROR).stream() << error.what();
    return 1;
  }
}

int Preprocessor::take_command_line(Config& config, int argc, char** argv) {
  set_defaults_in_config(config);
  update_paths(config);
  if (!config.common_options.skip_command_processing) {
    const int status = ProcessCommand(argc, argv, config);
    if (status != 0) {
      return status;
    }
  }
  set_config_xsd(config);
  set_env_prop_on_off(config);
  return 0;
}

int Preprocessor::run_pipeline(Config& config, int argc, char** argv) {
  const int status = take_command_line(config, argc, argv);
  if (status != 0) {
    return status;
  }
  log::OutputLog().stream() << util::EngineHelper::format_header() << "\n";
  if (!CheckConfiguration(config)) {
    return 1;
  }
  if (const auto failed = read_documents(config)) {
    return fail(*failed);
  }
  if (open_datastores(config) == 1) {
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

std::optional<DocumentStep> Preprocessor::read_documents(Config& config, DocumentStep last) {
  for (const Reader& reader : READERS) {
    if (reader.step > last) {
      break;
    }
    if (reader.read(*this, config) == 1) {
      return reader.step;
    }
  }
  return std::nullopt;
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
  config.config_file = installed_place(DocumentKind::MAIN, config.root);
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
  if (xsd != nullptr) {
    detail::note_setting({"config_xsd", "environment QORN_CONFIG_XSD", {}, xsd});
  }
  config.config_xsd = xsd != nullptr ? xsd : schema_path(DocumentKind::MAIN, config.root);
}

void Preprocessor::set_env_prop_on_off(Config& config) {
  const char* turned_off = std::getenv("QORN_TURN_OFF_ENV_PROPAGATION");
  if (turned_off != nullptr && std::strcmp(turned_off, "true") == 0) {
    config.env_propagation = false;
    detail::note_setting(
        {"env_propagation", "environment QORN_TURN_OFF_ENV_PROPAGATION", {}, turned_off});
  }
}

}  // namespace qorn::preproc
