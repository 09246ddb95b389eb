#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <string>

#include <qorn/config.h>

#include "clips_file.h"

namespace qorn::preproc::clips_parser {
#pragma GCC visibility push(hidden)

/// A rule file that is scanned, or is being scanned.
struct ScannedFile;

/// While one lives, a rule file is read and scanned once for a directory, and what it brings is
/// brought again each time it is named. The registrations by variables are counted from its start.
/// Of nested ones the innermost counts.
class RuleFileScope {
 public:
  RuleFileScope();
  RuleFileScope(const RuleFileScope&) = delete;
  RuleFileScope& operator=(const RuleFileScope&) = delete;
  ~RuleFileScope();

  /// Files by path that are scanned and remembered.
  using KnownFiles = std::map<std::string, std::shared_ptr<ScannedFile>>;

  /// By the directory of loads. What a file brings depends on its lines and on the variable pattern
  /// alone. Lines that need the pattern make it, so it can't differ later. Which of the loads are
  /// followed is decided anew each time.
  std::map<std::string, KnownFiles> known_files;
  std::size_t variable_ids = 0;

  /// The innermost one; null outside of a run.
  static RuleFileScope* current;

 private:
  RuleFileScope* outer_;
};

/// What the scan of a rule file with all that it loads came to.
struct ChainOutcome {
  bool is_whole = true;   // every file was read to its end
  bool has_rule = false;  // at least one of the files brings a rule
};

/// See parse_clips_rules.
ChainOutcome scan_chain(const std::string& file, std::set<Rule>& rules, Config& config,
                        const std::string& kb_dir);

#pragma GCC visibility pop
}  // namespace qorn::preproc::clips_parser
