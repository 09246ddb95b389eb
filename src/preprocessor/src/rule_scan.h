#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <qorn/fwd.h>
#include <qorn/str/lines.h>

namespace qorn::preproc::clips_parser {

/// What a line of a rule file asks for beyond its own file.
struct Step {
  enum class Kind {
    ID,           // register `text`
    VARIABLE_ID,  // register the first `values` entries of Outcome::bound_ids
    LOAD          // scan the file `text` before going on
  };
  Kind kind;
  std::string text;
  std::string rule;  // ids are registered under this name, which may be empty
  std::size_t values = 0;
};

/// What one rule file brings, whatever the files that it loads bring.
struct Outcome {
  std::vector<Step> steps;             // in the order of the lines
  std::vector<std::string> bound_ids;  // by the binds of the file, in the order of the lines
  Rule rule;                           // nameless: the file brings none
};

/// The scan of one rule file, which stops where another file is to be loaded and goes on later.
class RuleScan {
 public:
  /// `path` stands in the rule and in messages, loads refer to `kb_dir`; both must outlive this.
  RuleScan(const std::string& path, const std::string& kb_dir, std::string text);
  RuleScan(const RuleScan&) = delete;
  RuleScan& operator=(const RuleScan&) = delete;
  ~RuleScan() = default;

  /// Goes on to the next line that brings a step and adds its steps to `outcome`. At the end of
  /// the file sets the rule and returns false. Throws std::runtime_error with file, line and
  /// variable when the first variable of the process has no valid pattern.
  bool advance(Outcome& outcome);

 private:
  void scan_line(std::string_view line, Outcome& outcome);
  void take_name(std::string_view line);
  void take_ids(std::string_view line, Outcome& outcome);
  void take_bound_ids(std::string_view variable, Outcome& outcome);
  void take_text(std::string_view line);

  const std::string& path_;
  const std::string& kb_dir_;
  std::string text_;
  str::Lines lines_;
  str::Lines bind_lines_;  // those behind are searched for binds, at most up to lines_
  Rule rule_;
  std::string description_;
  bool in_description_ = false;
};

}  // namespace qorn::preproc::clips_parser
