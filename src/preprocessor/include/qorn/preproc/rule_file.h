#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <qorn/fs.h>
#include <qorn/fwd.h>

namespace qorn::preproc::clips_parser {

/// Reads a CLIPS file: a regular file of at most 100 MB. The text of one that can't be read to its
/// end is the whole lines ahead of the failure.
fs::FileText read_clips_file(const std::string& path);

/// What the scan of one rule file finds, whatever the files that it loads hold.
struct RuleFile {
  enum class State : int {
    NOT_OPENED,  // missing, no rights: brings nothing, silently
    READ,
    FAILED  // not a regular file, larger than 100 MB, or reading broke off
  };

  /// What a line asks for beyond its own file.
  struct Step {
    enum class Kind : int { ID, VARIABLE_ID, LOAD };

    Kind kind = Kind::ID;
    std::size_t line = 0;  // counted from 1
    std::string text;  // an id, a variable with its question mark, or the path of a file to load
    std::string rule;  // ids are registered under this name, which may be empty
    std::size_t values = 0;  // of a variable: so many of bound_ids, the first ones, are registered
    bool is_starred =
        false;  // of a load: it has the form (batch* NAME), which alone leads anywhere
  };

  std::string path;
  State state = State::NOT_OPENED;
  std::string reason;                  // what State::FAILED doesn't tell; mostly empty
  std::vector<Step> steps;             // in the order of the lines
  std::vector<std::string> bound_ids;  // by the binds of the file, in the order of the lines
  Rule rule;                           // nameless: the file brings none
};

/// Scans the file at `path` and none of those that it loads, which are named relative to `kb_dir`.
/// While a RunScope lives, what it has scanned before is given again. Throws like
/// parse_clips_rules.
std::shared_ptr<const RuleFile> scan_rule_file(const std::string& path, const std::string& kb_dir);

}  // namespace qorn::preproc::clips_parser
