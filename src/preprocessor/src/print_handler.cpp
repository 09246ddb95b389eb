#include <algorithm>
#include <iostream>
#include <string_view>

#include <qorn/datastore/datastore_parse_utility.h>
#include <qorn/log/error_log.h>
#include <qorn/log/output_log.h>
#include <qorn/preproc/print_handler.h>
#include <qorn/str.h>
#include <qorn/util/engine_helper.h>

#include "option_table.h"

namespace qorn::preproc {
namespace {

constexpr unsigned DASHES = 80;

/// What documents may have in a text that is laid out already.
constexpr std::string_view LAYOUT = "\n\t";

void print(const std::string& text) {
  log::OutputLog().stream() << str::printable(text, LAYOUT);
}

std::map<const char, PrintHandler::opt_details> usage_texts() {
  std::map<const char, PrintHandler::opt_details> texts;
  for (const OptionRow& row : OPTION_TABLE) {
    if (row.usage != nullptr) {
      texts.insert({row.key, {row.usage, row.description}});
    }
  }
  return texts;
}

/// The keys of the options of some stages, in the order of flag_map.
std::string usage_letters(CommonHelpers::OPERATION_TYPE stages) {
  std::string letters;
  for (const OptionRow& row : OPTION_TABLE) {
    if (row.usage != nullptr && (row.stages & stages) != 0) {
      letters.push_back(row.key);
    }
  }
  std::sort(letters.begin(), letters.end());
  return letters;
}

/// What stands for an option's letter in a line of the usage text.
char letter_of(char key) {
  return is_letter(key) ? key : ' ';
}

std::string_view head_line(CommonHelpers::OPERATION_TYPE type) {
  switch (type) {
    case CommonHelpers::COLLECT:
      return "Usage: qorn-collect [options]\n";
    case CommonHelpers::ANALYZE:
      return "Usage: qorn-analyze [options]\n";
    default:
      return "Usage: qorn [options]\n";
  }
}

}  // namespace

const std::map<const char, PrintHandler::opt_details> PrintHandler::flag_map = usage_texts();

const std::map<std::string, std::string> PrintHandler::keyword_map = {
    {"field", "values to use are [id | node | severity]"},
    {"filename", "full pathname and filename to use"},
    {"fwd", "name of a specific framework definition to use or path to the XML file"},
    {"node", "id of a single specific node"},
    {"value", "values to use are [alert | critical | error | warning | notice | info | debug]"},
    {"#", "integer value"},
    {"severity", "values to use are [informational | warning | critical]"}};

PrintHandler::PrintHandler()
    : collect_letters_(usage_letters(COLLECT)),
      analyze_letters_(usage_letters(ANALYZE)),
      combined_letters_(usage_letters(BOTH)) {
}

const std::string& PrintHandler::letters_of(CommonHelpers::OPERATION_TYPE type) const {
  switch (type) {
    case CommonHelpers::COLLECT:
      return collect_letters_;
    case CommonHelpers::ANALYZE:
      return analyze_letters_;
    default:
      return combined_letters_;
  }
}

int PrintHandler::print_opts(Config& config) {
  if ((config.option_flags & option_flag::USAGE) != 0) {
    util::EngineHelper::print_copyright();
    print_args(config);
    return 0;
  }
  if ((config.option_flags & option_flag::VERSION) != 0) {
    print(util::EngineHelper::format_header());
    util::EngineHelper::print_copyright();
    return 0;
  }
  if ((config.option_flags & option_flag::COPYRIGHT) != 0) {
    util::EngineHelper::print_copyright();
    return 0;
  }
  return 1;
}

void PrintHandler::print_args(const Config& config) {
  print_args(CommonHelpers::set_to_enum(config));
}

void PrintHandler::print_args(const CommonHelpers::OPERATION_TYPE& type) {
  print(std::string(head_line(type)));
  const unsigned width = str::terminal_width();
  std::string quick;
  std::string options;
  for (const char letter : letters_of(type)) {
    quick += print_quick_arg(letter, flag_map);
    options += print_short_arg(letter, flag_map);
  }
  print(str::column_wrap(quick, width, " ", ':', true));
  print("\n[options]\n");
  print(str::column_wrap(options, width, " ", ':', true));
  print("\n[keywords]\n");
  std::string keywords;
  for (const auto& [keyword, explanation] : keyword_map) {
    keywords += format_keyword_output(keyword, explanation);
  }
  print(str::column_wrap(keywords, width, " ", ':', false));
  print("\nFor more details and examples, please see the man page\n\n");
}

std::string PrintHandler::print_quick_arg(const char& key,
                                          const std::map<const char, opt_details>& map) {
  const auto found = map.find(key);
  if (found == map.end()) {
    return {};
  }
  const char letter = letter_of(key);
  const std::string name = letter == ' ' ? "" : std::string("-") + letter + ",";
  return " [" + name + found->second.usage + "]";
}

std::string PrintHandler::print_short_arg(const char& key,
                                          const std::map<const char, opt_details>& map) {
  const auto found = map.find(key);
  if (found == map.end()) {
    return {};
  }
  return format_usage_output(letter_of(key), found->second.usage, found->second.description);
}

// The descriptions are wrapped with the whole list, which knows where its columns are; here they
// only lose line breaks of their own.
std::string PrintHandler::format_usage_output(const char& key, const std::string& usage,
                                              const std::string& description) {
  const std::string name = key == ' ' ? "" : std::string("-") + key + ",";
  return "  " + name + usage + ": " + str::clean_previous_formatting(description) + "\n";
}

std::string PrintHandler::format_keyword_output(const std::string& keyword,
                                                const std::string& explanation) {
  return "  " + keyword + ": " + str::clean_previous_formatting(explanation) + "\n";
}

void PrintHandler::print_duplicate(const std::string& flag, const std::string& what) {
  std::cerr << "WARNING: " << flag << " only supports one " << what << " at a time.\n"
            << "WARNING: Only the first specified " << what << " will be used.\n\n";
}

void PrintHandler::print_deprecation_messages(CommonOptions& options) {
  for (const std::string& message : options.deprecation_messages) {
    std::cerr << message;
  }
}

void PrintHandler::print_database() {
  for (const auto& store : datastore::DataStoreParseUtility::get_datastore_vector()) {
    if (!store.flags.test(datastore::DataStore::IN_USE)) {
      continue;
    }
    log::ErrorLog message(log::level::NOTICE);
    if (store.config.type == datastore::DatabaseType::SQLITE) {
      std::string path;
      bool read_only = false;
      datastore::parse_sqlite_params(store.config.parameters, path, read_only);
      message.stream() << "Database: " << store.config.name << ", at: " << path << ".\n";
    } else {
      message.stream() << "Database: " << store.config.name << ", " << store.config.parameters
                       << ".\n\n";
    }
  }
}

void PrintHandler::print_fwd_tree(const Fwd& fwd) {
  print_dashes();
  {
    log::OutputLog heading;
    log::OutputLog::singleton_obj->set_color(log::OutputLog::NO_COLOR);
    heading.stream() << "Framework Definition Dependencies\n";
  }
  print_dashes();
  print(str::format_tree(fwd.node->create_tree({}, true), "   ", "`- ", "|- ", "|  "));
}

void PrintHandler::print_dashes() {
  print_dashes(log::OutputLog().stream(), DASHES);
}

void PrintHandler::print_dashes(std::ostream& stream, unsigned width, char c) {
  stream << std::string(width, c) << '\n';
}

void PrintHandler::print_list(const std::string& indent, const std::vector<std::string>& items) {
  for (const std::string& item : items) {
    log::OutputLog().stream() << indent << str::printable(item, LAYOUT) << '\n';
  }
}

void PrintHandler::print_fwd_rules_list(const std::set<Rule>& rules,
                                        const std::string& first_indent,
                                        const std::string& second_indent) {
  for (const Rule& rule : rules) {
    std::vector<std::string> lines{str::word_wrap(rule.name, 0, first_indent)};
    const std::string text = str::clean_previous_formatting(rule.description);
    if (!text.empty()) {
      lines.push_back(str::word_wrap(text, 0, second_indent));
    }
    print_list("", lines);
  }
}

void PrintHandler::print_fwd_list_header(const std::string& directory) {
  print(str::word_wrap("Framework definition file path: " + directory, 0, "") + "\n\n" +
        "Framework definition list: \n");
}

void PrintHandler::print_fwd_rules_header(const Fwd& fwd) {
  print_dashes(log::OutputLog().stream(), str::terminal_width());
  print(str::word_wrap("Framework definition name: " + fwd.name, 0, "") + '\n' +
        str::word_wrap("Framework definition path: " + fwd.path, 0, "") + '\n' +
        str::word_wrap("Rule Path: " + fwd.kb_path + "/rules/\n", 0, "") +
        str::word_wrap("Provider Path: " + fwd.provider_path + "\n\n", 0, "") +
        str::word_wrap("Description:\n" + fwd.description, 0, "") + '\n');
}

void PrintHandler::print_string_with_border(const std::string& text) {
  log::OutputLog().stream() << '\n'
                            << text << '\n'
                            << std::string(text.size(), '-') << '\n'
                            << '\n';
}

}  // namespace qorn::preproc
