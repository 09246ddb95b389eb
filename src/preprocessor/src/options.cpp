#include <cstdint>
#include <iostream>
#include <stdexcept>

#include <qorn/detail/notes.h>
#include <qorn/log/error_log.h>
#include <qorn/log/output_log.h>
#include <qorn/node/nodelist.h>
#include <qorn/preproc/options.h>
#include <qorn/str.h>

#include "option_table.h"

namespace qorn::preproc {
namespace {

/// Value of --sort-asc and --sort-desc, which have no letter; their row tells them apart.
constexpr int SORT = 1;

struct LongOptionTable {
  option rows[Options::LONG_OPTIONS] = {};  // the last one stays zero
};

constexpr LongOptionTable long_options() {
  LongOptionTable table;
  std::size_t count = 0;
  for (const OptionRow& row : OPTION_TABLE) {
    for (const char* name : row.names) {
      if (name != nullptr) {
        table.rows[count++] = {name, row.argument, nullptr, is_letter(row.key) ? row.key : SORT};
      }
    }
  }
  return table;
}

constexpr LongOptionTable LONG_OPTION_TABLE = long_options();
static_assert(LONG_OPTION_TABLE.rows[Options::LONG_OPTIONS - 2].name != nullptr &&
              LONG_OPTION_TABLE.rows[Options::LONG_OPTIONS - 1].name == nullptr);

/// Makes getopt_long forget an earlier command line of the process, which may have ended in the
/// middle of a word.
void reset_getopt(const std::string& short_options, int first) {
  char name[] = "qorn";
  char* argv[] = {name, nullptr};
  optind = 0;
  static_cast<void>(getopt_long(1, argv, short_options.c_str(), Options::longopts, nullptr));
  optind = first;
}

bool has_flag(const Config& config, std::uint64_t flag) {
  return (config.option_flags & flag) != 0;
}

/// An option as it was typed.
std::string typed_name(int option, int row) {
  return row >= 0 ? std::string("--") + Options::longopts[row].name
                  : std::string("-") + static_cast<char>(option);
}

using Effect = RunNotes::Setting::Effect;

void note_option(const char* setting, const std::string& value, Effect effect = Effect::SETS) {
  detail::note_setting({setting, {}, {}, value, effect});
}

/// Sets a field that keeps the first value; false when it has one.
bool set_first(const char* setting, const std::string& value, std::string& field) {
  note_option(setting, value, field.empty() ? Effect::SETS : Effect::IGNORED);
  if (!field.empty()) {
    return false;
  }
  field = value;
  return true;
}

void add_to(const char* setting, const std::string& value, std::vector<std::string>& list) {
  note_option(setting, value, Effect::ADDS);
  list.push_back(value);
}

/// Adds the age limit as a parameter; a bad number is reported and passed over.
void add_data_age(const std::string& value, Config& config) {
  try {
    const auto days = static_cast<std::int32_t>(static_cast<std::uint32_t>(std::stoul(value)));
    if (days == 0) {
      return;
    }
    ConfigParam param;
    param.name = "data-age-threshold";
    param.values.push_back(std::to_string(days));
    config.config_params.push_back(param);
    note_option("config_params.data-age-threshold", value, Effect::ADDS);
  } catch (const std::exception&) {
    log::ErrorLog(log::level::ERROR).stream()
        << "Invalid value specified for threshold-too-old: " << value << ".";
  }
}

bool is_valid_permutation_count(const std::string& value) {
  if (str::lower(value) == "all") {
    return true;
  }
  const int number = std::stoi(value);
  // The length refuses trailing letters, a plus sign and leading zeros.
  return number >= 0 && std::to_string(number).size() == value.size();
}

}  // namespace

const option (&Options::longopts)[LONG_OPTIONS] = LONG_OPTION_TABLE.rows;

Options::Options() {
  for (const OptionRow& row : OPTION_TABLE) {
    if (row.names[0] != nullptr && is_letter(row.key)) {
      short_options.append(1, row.key).append(row.argument == required_argument ? ":" : "");
    }
  }
}

bool Options::parse_args(int argc, char** argv, Config& config) {
  reset_getopt(short_options, is_command ? 2 : 1);
  int index = 0;
  int row = -1;  // of a long option; getopt_long leaves it alone for a letter
  for (int each = 0; (each = getopt_long(argc, argv, short_options.c_str(), longopts, &row)) != -1;
       row = -1) {
    const detail::SettingSource source("command line " + typed_name(each, row));
    index = row >= 0 ? row : index;
    // Escaped blanks survive the word expansion of paths.
    const std::string value = optarg == nullptr ? "" : str::replace(optarg, " ", "\\ ");
    if (!consume(each, config, index, value)) {
      refuse_option(each, argv[0], config);
      return false;
    }
  }
  if (optind < argc) {
    std::string text = "Invalid option flag arguments: ";
    for (int i = optind; i < argc; ++i) {
      text.append(argv[i]).append(" ");
    }
    log::ErrorLog(log::level::ERROR).stream() << text << "\n";
    config.option_flags |= option_flag::USAGE;
    print_handler.print_opts(config);
    return false;
  }
  return true;
}

// Every function sees every option, whichever of them has consumed it.
bool Options::consume(int option, Config& config, int index, const std::string& value) {
  const CommonHelpers::OPERATION_TYPE stage = CommonHelpers::set_to_enum(config);
  bool consumed = false;
  if ((stage & CommonHelpers::ANALYZE) != 0) {
    consumed = parse_args_analyze(option, config, index, value);
  }
  if ((stage & CommonHelpers::COLLECT) != 0) {
    consumed = parse_args_collect(option, config, value) || consumed;
  }
  if (stage != CommonHelpers::NEITHER) {
    consumed = parse_args_common(option, config, value) || consumed;
  }
  return parse_args_common_with_all(option, config, value) || consumed;
}

// A bad value of a known option ends in the same words as an option of the other stage.
void Options::refuse_option(int option, const char* program, Config& config) {
  if (option != '?') {
    const CommonHelpers::OPERATION_TYPE stage = CommonHelpers::set_to_enum(config);
    if (stage == CommonHelpers::COLLECT) {
      log::ErrorLog(log::level::ERROR).stream()
          << program << "-collect: invalid option -- cannot run "
          << "qorn-collect on analyze only options.";
    } else if (stage == CommonHelpers::ANALYZE) {
      log::ErrorLog(log::level::ERROR).stream()
          << program << "-analyze: invalid option -- cannot run "
          << "qorn-analyze on collect only options.";
    }
    config.option_flags |= option_flag::USAGE;
  }
  print_handler.print_opts(config);
}

bool Options::parse_args_common(int option, Config& config, const std::string& value) {
  switch (option) {
    case 'c':
      note_option("config_file", value);
      config.config_file = value;
      return true;
    case 'f':
      if (!set_first("node_file", value, config.node_file)) {
        print_handler.print_duplicate("-f/--nodefile", "nodefile");
      }
      return true;
    case 'F':
      if (!has_flag(config, option_flag::FWD_DESCRIPTION)) {
        config.option_flags |= option_flag::FWD_GIVEN;
        add_to("fwds.names", value, config.fwds->names);
      }
      return true;
    case 'l':
      return setLogLevel(value, config);
    case 'X':
      if (has_flag(config, option_flag::FWD_DESCRIPTION)) {
        print_handler.print_duplicate("-X/--FWD_description", "Framework Definition");
      } else {
        config.option_flags |= option_flag::FWD_DESCRIPTION;
        config.fwds->names.push_back(value);
      }
      return true;
    case '?':
      config.option_flags |= option_flag::USAGE;
      return false;
    default:
      return false;
  }
}

bool Options::parse_args_common_with_all(int option, Config& config, const std::string& value) {
  switch (option) {
    case 'D':
      note_option("datastores", value, Effect::ADDS);
      add_to("db_names", value, config.db_names);
      return true;
    case 'h':
      config.option_flags |= option_flag::USAGE;
      return true;
    case 'v':
      config.option_flags |= option_flag::VERSION;
      return true;
    case '?':
      config.option_flags |= option_flag::USAGE;
      return false;
    default:
      return false;
  }
}

bool Options::parse_args_collect(int option, Config& config, const std::string& value) {
  switch (option) {
    case 'a':
      if (!has_flag(config, option_flag::FWD_DESCRIPTION)) {
        config.option_flags |= option_flag::FWD_GIVEN;
        add_to("fwds.names", "health_base", config.fwds->names);
        log::ErrorLog(log::level::ERROR).stream()
            << "-a/--all has been deprecated. Please use Framework Definitions instead.";
      }
      return true;
    case 'C':
      note_option("re_collect", "true");
      config.re_collect = true;
      return true;
    case 'e':
      note_option("env_propagation", "false");
      config.env_propagation = false;
      return true;
    case 'r':
      return setPermutations(value, config);
    case 'S':
      note_option("ignore_subclusters", "true");
      config.ignore_subclusters = true;
      return true;
    default:
      return false;
  }
}

bool Options::parse_args_analyze(int option, Config& config, int index, const std::string& value) {
  switch (option) {
    case 'g':
      if (!config.node_group_file.empty()) {
        note_option("node_group_file", value, Effect::IGNORED);
        print_handler.print_duplicate("-g/--groupfile", "set the group configuration file");
      } else {
        log::OutputLog().stream()
            << "-g/--groupfile is a beta feature currently in development.\n\n";
        set_first("node_group_file", value, config.node_group_file);
      }
      return true;
    case 'n':
      if (!node::Nodelist::hostname_valid(value)) {
        log::ErrorLog(log::level::ERROR).stream()
            << "Invalid value specified for hostname: " << value;
        return false;
      }
      add_to("node_include", value, config.node_include);
      return true;
    case 'o':
      if (!set_first("log_file", value, config.log_file)) {
        print_handler.print_duplicate("-o/--logfile", "set the logfile");
      }
      return true;
    case 't':
      add_data_age(value, config);
      return true;
    case 'x':
      log::ErrorLog(log::level::ERROR).stream()
          << "'-x' has been deprecated. Instead use -z <informational|warning|critical>";
      config.min_severity = std::stoi(value);
      note_option("min_severity", value);
      return true;
    case 'z':
      note_option("min_severity", value);
      return setSeverity(value, config.min_severity);
    case SORT:
      return add_sort_option(index, config, value);
    default:
      return false;
  }
}

bool Options::add_sort_option(int index, Config& config, const std::string& value) {
  const char* name = longopts[index].name;
  if (name == nullptr) {
    return true;
  }
  const std::string direction = name;
  if (direction != "sort-asc" && direction != "sort-desc") {
    return false;
  }
  try {
    add_sort_field(config.sort_fields, direction == "sort-asc", value);
    note_option("sort_fields", value, Effect::ADDS);
  } catch (const std::exception& error) {
    log::ErrorLog(log::level::ERROR).stream() << error.what() << ", exiting.";
    return false;
  }
  return true;
}

void Options::add_sort_field(std::vector<Sorting>& fields, bool ascending,
                             const std::string& name) {
  try {
    fields.emplace_back(ascending, enums::convert_sorting_field(name));
  } catch (...) {
    throw std::invalid_argument("unsupported sort field: '" + name + "'");
  }
}

bool Options::setSeverity(const std::string& value, int& severity) {
  Severity found{};
  if (!look_up(SEVERITIES, value, found)) {
    log::ErrorLog(log::level::ERROR).stream() << "Invalid value specified for severity: " << value;
    log::ErrorLog(log::level::ERROR).stream()
        << "Recognized values are (in increasing order of severity): informational, warning, and "
           "critical [default = warning].";
    return false;
  }
  severity = found.lower_bound;
  return true;
}

bool Options::setLogLevel(const std::string& value, Config& config) {
  if (!look_up(LOG_LEVELS, value, log::LOG_LEVEL)) {
    log::ErrorLog(log::level::ERROR).stream() << "Invalid value specified for log-level: " << value;
    log::ErrorLog(log::level::ERROR).stream()
        << "Recognized values are (in increasing order of verbosity): alert, critical, error, "
           "warning, notice, info, debug [default = error].";
    return false;
  }
  note_option("log_level", value);
  config.log_level = value;
  if (value == "debug") {
    config.common_options.debug_log = true;
  }
  return true;
}

bool Options::setPermutations(const std::string& value, Config& config) {
  if (!is_valid_permutation_count(value)) {
    log::ErrorLog(log::level::ERROR).stream()
        << "Invalid value specified for number of nodelist permutations"
        << " in the command line. Valid values are positive integers,"
        << " the keyword 'all', or the number 0 to represent all.";
    return false;
  }
  note_option("num_permutations", value);
  config.num_permutations =
      str::get_num_permutations_from_string(value, config.num_permutations, "the command line");
  log::ErrorLog(log::level::DEBUG).stream()
      << "Over riding XML specified permutations with value: " << config.num_permutations;
  return true;
}

}  // namespace qorn::preproc
