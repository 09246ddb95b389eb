#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <qorn/config.h>
#include <qorn/preproc/config_parser.h>
#include <qorn/preproc/fwd_parser.h>
#include <qorn/preproc/node_group_parser.h>
#include <qorn/preproc/options.h>
#include <qorn/preproc/print_handler.h>
#include <qorn/preproc/run_scope.h>

namespace qorn::preproc {

/// What a run reads its documents for, in this order.
enum class DocumentStep : int {
  MAIN_DOCUMENT,
  DEFAULT_FRAMEWORKS,
  TYPE_MAP,
  FRAMEWORKS,  // with rule files, postprocessor and knowledge base documents
  MESSAGE_SCHEMAS,
  PROVIDERS
};

/// The preparation stage: one call of Run, once for a process, fills the record.
class Preprocessor {
 public:
  /// One command of the command line.
  struct cmd_struct {
    const char* name;  // compared with the first argument
    std::function<int(int, char**, Config&)> function;
  };

  Preprocessor();
  // The command table refers to this object.
  Preprocessor(const Preprocessor&) = delete;
  Preprocessor& operator=(const Preprocessor&) = delete;

  /// Reads the command line, the environment and all documents into `config`, which is freshly
  /// constructed but for common_options.skip_command_processing and parse_node_groups. `argv` may
  /// be reordered.
  /// Returns 0 when the record is complete; 1 when the run failed, with the reason on the
  /// standard error stream, and the record is not to be used; 2 when a request was served that
  /// needs no engine (usage, version, a listing). Exceptions that are no std::exception pass.
  int Run(Config& config, int argc, char** argv);

  /// What the last Run noticed beyond its messages.
  const RunNotes& notes() const { return notes_; }

  /// What Run begins with: defaults, paths, the command line and, when that asks for no printing
  /// request, the environment. Gives the status of ProcessCommand.
  int take_command_line(Config& config, int argc, char** argv);

  /// Reads the documents of a run up to and with the step `last`. Gives the step that failed, after
  /// its reason; nothing when all went well.
  std::optional<DocumentStep> read_documents(Config& config,
                                             DocumentStep last = DocumentStep::PROVIDERS);

  /// The handler of SIGINT: writes a line to the output streams and exits with the signal's
  /// number.
  [[noreturn]] static void terminate(int signal_number);

  /// Sets root, unless it is set, and the path of the main document.
  static void set_defaults_in_config(Config& config);
  /// Sets root to the installation root in force, and the paths that hang on it.
  void update_paths(Config& config);
  /// Takes the main document's schema from QORN_CONFIG_XSD, else from the installation.
  void set_config_xsd(Config& config);
  /// Switches environment propagation off when QORN_TURN_OFF_ENV_PROPAGATION is "true".
  void set_env_prop_on_off(Config& config);

  /// Records the command line and hands over to the command that its first argument names, else
  /// to ProcessArgs for both stages. Returns what that returned. Throws std::logic_error for a
  /// null argv[0].
  int ProcessCommand(int argc, char** argv, Config& config);
  /// Reads the options: 0 go on, 1 refused, 2 a printing request was served.
  int ProcessArgs(int argc, char** argv, Config& config);
  /// Calls a command. Throws std::bad_function_call for one without a function.
  int ParseCommand(cmd_struct* command, int argc, char** argv, Config& config);
  /// The command of that exact name, or null.
  cmd_struct* check_cmd_existence(const char* name);

  int cmd_collect(int argc, char** argv, Config& config);
  int cmd_analyze(int argc, char** argv, Config& config);
  /// Reads the rules document that the command line names. 0 also for another command's words.
  int cmd_generate_solutions(int argc, char** argv, Config& config);

  /// Sets config.db_close_delay from `value`, or when that is empty from the variable
  /// QORN_COLLECT_DATABASE_CLOSE_DELAY. A text that is no number gives 0, a negative number
  /// leaves the field alone; both are logged at level 4.
  void set_db_close_delay(Config& config, const std::string& value);

  /// Loads the diagnosis rules of a run that analyzes and settles the node list: the node file,
  /// else discovery. False, with the reason at level 3, when the run can't go on.
  bool CheckConfiguration(Config& config);

  /// Replaces config.nodes by the nodes of a node file, roles sorted, "compute" added where no
  /// role is a valid one. False, with config.nodes as it was, when the file can't be used.
  bool parse_nodefile(const std::string& file, Config& config);

  /// Appends the parameter "qorn-checks": the analyzer extensions of all framework definitions.
  void populate_config_params_checks(Config& config);

  /// Reads the document of each provider that a framework definition named. What fails is
  /// reported and leaves config.providers; true when that holds a provider afterwards.
  bool build_provider_list(Config& config);

  /// directory + "/" + name + ".xml".
  static std::string provider_path(const std::string& directory, const std::string& name);

  /// Fills config.database_names with the sources of the stores in use.
  void find_database_names(Config& config);

  /// Reads one provider document into `provider`. 0 on success; the negated error number when
  /// the file can't be accessed; 1 for any other failure. What was set before a failure stays.
  /// Logs bad values at level 4 and failures at level 3.
  static int parse_provider_config_xml(provider_config& provider, const std::string& file,
                                       const Config& config, const std::string& aux_path);

  std::vector<cmd_struct> commands;
  PrintHandler print_handler;
  ConfigParser config_parser;
  FWDParser fwd_parser;
  Options options;
  NodeGroupParser node_group_parser;

 private:
  int run_pipeline(Config& config, int argc, char** argv);
  int open_datastores(Config& config);

  RunNotes notes_;
};

}  // namespace qorn::preproc
