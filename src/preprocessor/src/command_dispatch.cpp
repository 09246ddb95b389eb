#include <cstdlib>
#include <cstring>
#include <exception>

#include <qorn/detail/notes.h>
#include <qorn/document_kind.h>
#include <qorn/log/error_log.h>
#include <qorn/log/output_log.h>
#include <qorn/preproc/clips_parser.h>
#include <qorn/preproc/preprocessor.h>
#include <qorn/rule_xml_parser.h>
#include <qorn/str.h>

namespace qorn::preproc {
namespace {

constexpr const char* GENERATE_RULES = "generate_rules";

/// What stands behind the program's name for a command.
std::string command_suffix(const std::string& command) {
  if (command == "01") {
    return "-collect";
  }
  return command == "10" ? "-analyze" : " " + command;
}

/// Reads a delay: a text that is no number gives 0, a negative number leaves `delay` as it is.
void read_close_delay(const std::string& text, std::int32_t& delay) {
  const auto warn = [](const std::string& value) {
    log::ErrorLog(log::level::WARNING).stream()
        << "Invalid value of QORN_COLLECT_DATABASE_CLOSE_DELAY: " << value;
  };
  int number = 0;
  try {
    number = std::stoi(text);
  } catch (const std::exception& error) {
    warn(text);
    log::ErrorLog(log::level::DEBUG).stream() << error.what();
  }
  using Effect = RunNotes::Setting::Effect;
  detail::note_setting({"db_close_delay",
                        "environment QORN_COLLECT_DATABASE_CLOSE_DELAY",
                        {},
                        text,
                        number < 0 ? Effect::IGNORED : Effect::SETS});
  if (number < 0) {
    warn(std::to_string(number));
  } else {
    delay = number;
  }
}

}  // namespace

int Preprocessor::ProcessCommand(int argc, char** argv, Config& config) {
  config.option_flags = 0;
  options.is_command = false;
  const std::string program = argv[0];  // throws for a null pointer
  config.command_line = program.substr(program.rfind('/') + 1);
  const char* first = argc >= 2 ? argv[1] : nullptr;
  cmd_struct* command = check_cmd_existence(first);
  if (command != nullptr) {
    options.is_command = true;
    const std::string suffix = command_suffix(first);
    config.command_line += suffix;
    detail::note_setting({"operations", "command line " + suffix.substr(1), {}, first});
  }
  for (int i = command != nullptr ? 2 : 1; i < argc; ++i) {
    config.command_line.append(" ").append(argv[i]);
  }
  if (command != nullptr) {
    return ParseCommand(command, argc, argv, config);
  }
  config.operations |= operation::COLLECT | operation::ANALYZE | operation::ANALYZE_ENGINE;
  return ProcessArgs(argc, argv, config);
}

int Preprocessor::ProcessArgs(int argc, char** argv, Config& config) {
  if (!options.parse_args(argc, argv, config)) {
    return 1;
  }
  if ((config.option_flags & (option_flag::USAGE | option_flag::VERSION)) != 0) {
    print_handler.print_opts(config);
    return 2;
  }
  if ((config.option_flags & option_flag::FWD_DESCRIPTION) != 0) {
    fwd_parser.print_fwds_with_rules(config.fwds->names.back(), config);
    return 2;
  }
  return 0;
}

int Preprocessor::ParseCommand(cmd_struct* command, int argc, char** argv, Config& config) {
  return command->function(argc, argv, config);
}

Preprocessor::cmd_struct* Preprocessor::check_cmd_existence(const char* name) {
  if (name == nullptr) {
    return nullptr;
  }
  for (cmd_struct& command : commands) {
    if (std::strcmp(command.name, name) == 0) {
      return &command;
    }
  }
  return nullptr;
}

int Preprocessor::cmd_collect(int argc, char** argv, Config& config) {
  config.operations |= operation::COLLECT;
  set_db_close_delay(config, "");
  print_handler.print_deprecation_messages(config.common_options);
  return ProcessArgs(argc, argv, config);
}

// The diagnoses are read again with the configuration checks; what is found twice stays twice.
int Preprocessor::cmd_analyze(int argc, char** argv, Config& config) {
  config.operations |= operation::ANALYZE | operation::ANALYZE_ENGINE;
  clips_parser::parse_installed_diagnoses(config);
  return ProcessArgs(argc, argv, config);
}

int Preprocessor::cmd_generate_solutions(int argc, char** argv, Config& config) {
  constexpr std::size_t LONGEST_COMMAND = 32;
  if (argc < 2 || std::strncmp(argv[1], GENERATE_RULES, LONGEST_COMMAND) != 0) {
    return 0;
  }
  if (argc != 3) {
    log::OutputLog().stream() << "Usage: qorn generate_rules <expected_data_xml_file>\n";
    return 1;
  }
  config.rules_file = str::wordexp(argv[2]);
  config.rules_xsd = schema_path(DocumentKind::RULES_DOCUMENT, config.root);
  config.analysis_map_xsd = schema_path(DocumentKind::ANALYSIS_MAP, config.root);
  return parseRulesXML(config);
}

void Preprocessor::set_db_close_delay(Config& config, const std::string& value) {
  const char* variable =
      value.empty() ? std::getenv("QORN_COLLECT_DATABASE_CLOSE_DELAY") : value.c_str();
  if (variable == nullptr) {
    log::ErrorLog(log::level::WARNING).stream()
        << "Value of QORN_COLLECT_DATABASE_CLOSE_DELAY pointer is NULL";
    config.db_close_delay = 0;
  } else {
    read_close_delay(variable, config.db_close_delay);
  }
  log::ErrorLog(log::level::INFO).stream()
      << "QORN_COLLECT_DATABASE_CLOSE_DELAY = " << config.db_close_delay;
}

}  // namespace qorn::preproc
