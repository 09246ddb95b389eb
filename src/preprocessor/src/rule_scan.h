#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <qorn/preproc/rule_file.h>
#include <qorn/str/lines.h>

namespace qorn::preproc::clips_parser {
#pragma GCC visibility push(hidden)

/// The scan of one rule file, which stops where another file is to be loaded and goes on later.
class RuleScan {
 public:
  /// `path` stands in the rule and in messages, loads refer to `kb_dir`; both must outlive this.
  RuleScan(const std::string& path, const std::string& kb_dir, std::string text);
  RuleScan(const RuleScan&) = delete;
  RuleScan& operator=(const RuleScan&) = delete;
  ~RuleScan() = default;

  /// Goes on to the next line that brings a step and adds its steps to `file`. At the end of the
  /// file sets the rule and returns false. Throws std::runtime_error with file, line and variable
  /// when the first variable of the process has no valid pattern.
  bool advance(RuleFile& file);

 private:
  void scan_line(std::string_view line, RuleFile& file);
  void take_name(std::string_view line);
  void take_ids(std::string_view line, RuleFile& file);
  void take_bound_ids(std::string_view variable, RuleFile& file);
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

#pragma GCC visibility pop
}  // namespace qorn::preproc::clips_parser
