#pragma once

#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include <qorn/config.h>
#include <qorn/preproc/common_helpers.h>

namespace qorn::preproc {

/// Prints what the user asks of the command line itself: usage, version, listings. Everything
/// goes to the output streams unless an operation says otherwise.
class PrintHandler {
 public:
  struct opt_details {
    std::string usage;
    std::string description;
  };

  PrintHandler();

  /// Prints usage, version or copyright, whichever config.option_flags asks for first, and
  /// returns 0; returns 1, having printed nothing, when it asks for none.
  int print_opts(Config& config);

  /// Prints the usage text of the stages in config.operations.
  void print_args(const Config& config);
  void print_args(const CommonHelpers::OPERATION_TYPE& type);

  /// One option's entry in the short list and in the long list; empty for a letter not in `map`.
  std::string print_quick_arg(const char& key, const std::map<const char, opt_details>& map);
  std::string print_short_arg(const char& key, const std::map<const char, opt_details>& map);

  /// A line of the option list and of the keyword list. A blank key stands for no letter.
  std::string format_usage_output(const char& key, const std::string& usage,
                                  const std::string& description);
  std::string format_keyword_output(const std::string& keyword, const std::string& explanation);

  /// Warns on the standard error stream that only the first `what` of `flag` counts.
  void print_duplicate(const std::string& flag, const std::string& what);

  /// Writes each deprecation message to the standard error stream, as it stands.
  void print_deprecation_messages(CommonOptions& options);

  /// Logs name and place of each store in use at level 5.
  void print_database();

  /// Prints the include tree of a definition below a heading. Throws std::runtime_error when the
  /// tree is too large, see FwdNode::create_tree.
  void print_fwd_tree(const Fwd& fwd);

  /// A line of 80 dashes.
  void print_dashes();
  /// A line of `width` characters `c` into `stream`.
  void print_dashes(std::ostream& stream, unsigned width, char c = '-');

  /// Prints each item on a line of its own, behind `indent`.
  void print_list(const std::string& indent, const std::vector<std::string>& items);

  /// Prints each rule's name behind `first_indent` and its text behind `second_indent`.
  void print_fwd_rules_list(const std::set<Rule>& rules, const std::string& first_indent,
                            const std::string& second_indent);

  /// The head of the list of installed definitions.
  void print_fwd_list_header(const std::string& directory);

  /// The head of one definition's description.
  void print_fwd_rules_header(const Fwd& fwd);

  /// A heading, underlined.
  void print_string_with_border(const std::string& text);

  static const std::map<const char, opt_details> flag_map;
  static const std::map<std::string, std::string> keyword_map;

 private:
  const std::string& letters_of(CommonHelpers::OPERATION_TYPE type) const;

  std::string collect_letters_;
  std::string analyze_letters_;
  std::string combined_letters_;
};

}  // namespace qorn::preproc
