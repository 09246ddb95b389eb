#pragma once

#include <string>
#include <vector>

#include <getopt.h>

#include <qorn/config.h>
#include <qorn/preproc/common_helpers.h>
#include <qorn/preproc/print_handler.h>

namespace qorn::preproc {

/// Turns the command line into fields of the record.
class Options {
 public:
  static constexpr int LONG_OPTIONS = 28;
  static const option (&longopts)[LONG_OPTIONS];  // the last row is all zero

  Options();

  /// Reads all options of the stages in config.operations. False when an option or an argument is
  /// refused: the reason and the usage text have been printed. What earlier options wrote stays.
  /// Throws what std::stoi throws for a number of -r or -x that is none.
  bool parse_args(int argc, char** argv, Config& config);

  /// Each consumes one option and returns true, or returns false for what it doesn't know and
  /// for a value that it refuses, having logged why at level 3. `index` is the row of longopts.
  bool parse_args_common(int option, Config& config, const std::string& value);
  bool parse_args_common_with_all(int option, Config& config, const std::string& value);
  bool parse_args_collect(int option, Config& config, const std::string& value);
  bool parse_args_analyze(int option, Config& config, int index, const std::string& value);

  /// Sets the log level, in the record and at once; false, with two lines, for an unknown word.
  bool setLogLevel(const std::string& value, Config& config);

  /// Sets the number of node list permutations; false, with a line, when it is not a plain number
  /// or "all". Throws std::invalid_argument or std::out_of_range ("stoi") when it is no number.
  bool setPermutations(const std::string& value, Config& config);

  /// Sets `severity` to the lower bound of a severity word; false, with two lines, for an unknown
  /// word.
  static bool setSeverity(const std::string& value, int& severity);

  /// Appends a sort key. Throws std::invalid_argument for an unknown field.
  void add_sort_field(std::vector<Sorting>& fields, bool ascending, const std::string& name);

  std::string short_options;
  PrintHandler print_handler;
  CommonHelpers common_helpers;
  bool is_command = false;  // the first argument is a command word

 private:
  bool consume(int option, Config& config, int index, const std::string& value);
  void refuse_option(int option, const char* program, Config& config);
  bool add_sort_option(int index, Config& config, const std::string& value);
};

}  // namespace qorn::preproc
