#include <cstddef>
#include <iostream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <qorn/log/error_log.h>
#include <qorn/preproc/clips_file.h>
#include <qorn/preproc/clips_parser.h>
#include <qorn/str.h>

#include "rule_scan.h"

namespace qorn::preproc::clips_parser {
namespace {

constexpr std::size_t MOST_VARIABLE_IDS = 1'000'000;  // registered in one run
// Loads can multiply: n files that load the next one twice are 2^n scans.
constexpr std::size_t MOST_LOADED_BYTES = 256'000'000;
constexpr std::size_t LEAST_BYTES_OF_LOAD = 256;  // what a load counts for beside its text
/// A file with more steps is scanned again rather than remembered.
constexpr std::size_t MOST_KEPT_STEPS = 100'000;

/// A rule file that is scanned, or is being scanned.
struct RuleFile {
  std::string path;
  fs::FileId id;
  std::size_t size = 0;  // bytes
  Outcome outcome;
};

/// Files by path that are scanned and remembered.
using KnownFiles = std::map<std::string, std::shared_ptr<RuleFile>>;

/// What holds for one run.
struct Run {
  /// By the directory of loads. What a file brings depends on its lines and on the variable
  /// pattern alone. Lines that need the pattern make it, so it can't differ later. Which of the
  /// loads are followed is decided anew each time.
  std::map<std::string, KnownFiles> known_files;
  std::size_t variable_ids = 0;
};

std::unique_ptr<Run> current_run;

/// The scan of a file with all that it loads. Files are read whole and closed before the next one
/// is opened, and their chain is a list: neither open files nor the stack limit its depth.
class ChainScan {
 public:
  ChainScan(std::set<Rule>& rules, Config& config, const std::string& kb_dir, Run& run,
            bool keep_files)
      : rules_(rules),
        config_(config),
        kb_dir_(kb_dir),
        run_(run),
        known_files_(run.known_files[kb_dir]),
        keep_files_(keep_files) {}

  /// Returns false when a file couldn't be read.
  bool scan(const std::string& path) {
    enter(path);
    while (!chain_.empty()) {
      Link& link = chain_.back();
      const auto& steps = link.file->outcome.steps;
      if (link.next_step < steps.size()) {
        take(*link.file, steps[link.next_step++]);
      } else if (link.scan == nullptr || !advance(link)) {
        if (link.failed) {
          return report_failure(link);
        }
        leave();
      }
    }
    return true;
  }

 private:
  /// A file on the way from the first one.
  struct Link {
    std::shared_ptr<RuleFile> file;
    std::unique_ptr<RuleScan> scan;  // null when the whole outcome is known
    std::size_t next_step = 0;
    bool keep = false;    // the outcome is remembered
    bool failed = false;  // the text breaks off
    std::string reason;   // what the words of a failure wouldn't tell; mostly empty
  };

  void enter(const std::string& path) {
    Link link;
    const auto known = known_files_.find(path);
    if (known != known_files_.end()) {
      link.file = known->second;
    } else if (!open(path, link)) {
      count_load(0);
      return;
    }
    count_load(link.file->size);
    if (!on_chain_.insert(link.file->id).second) {
      if (!reported_.insert(path).second) {
        return;
      }
      log::ErrorLog(log::level::ERROR).stream()
          << "The rule file " << str::printable(path)
          << " loads itself, directly or through others: not scanned again.";
      return;
    }
    chain_.push_back(std::move(link));
  }

  bool open(const std::string& path, Link& link) const {
    fs::FileText file = read_clips_file(path);
    if (file.state == fs::FileText::State::NOT_OPENED) {
      return false;
    }
    link.file = std::make_shared<RuleFile>(RuleFile{path, file.id, file.text.size(), {}});
    link.scan = std::make_unique<RuleScan>(link.file->path, kb_dir_, std::move(file.text));
    link.failed = !file.was_read();
    link.keep = keep_files_ && !link.failed;
    if (file.state == fs::FileText::State::TOO_LARGE) {
      link.reason = std::move(file.reason);
    }
    return true;
  }

  static bool advance(Link& link) {
    auto& steps = link.file->outcome.steps;
    link.keep = link.keep && steps.size() <= MOST_KEPT_STEPS;
    if (!link.keep) {
      steps.clear();
      link.next_step = 0;
    }
    return link.scan->advance(link.file->outcome);
  }

  // An argument of its own: a load lets the chain grow under the link that it stands in.
  void take(const RuleFile& file, const Step& step) {
    switch (step.kind) {
      case Step::Kind::LOAD:
        return enter(step.text);
      case Step::Kind::ID:
        return register_id(step.text, step.rule);
      case Step::Kind::VARIABLE_ID:
        return register_bound_ids(file, step);
    }
  }

  void register_id(const std::string& id, const std::string& rule) {
    config_.diagnosis_rules[id].push_back(rule);
  }

  void register_bound_ids(const RuleFile& file, const Step& step) {
    run_.variable_ids += step.values;
    if (run_.variable_ids > MOST_VARIABLE_IDS) {
      throw std::runtime_error("The rule file " + str::printable(file.path) +
                               " brings the ids registered by variables to more than 1,000,000: "
                               "each variable of an id slot meets each bind ahead of it.");
    }
    for (std::size_t i = 0; i < step.values; ++i) {
      register_id(file.outcome.bound_ids[i], step.rule);
    }
  }

  // No first file is large enough to fail here by itself.
  void count_load(std::size_t bytes) {
    loaded_bytes_ += LEAST_BYTES_OF_LOAD + bytes;
    if (loaded_bytes_ > MOST_LOADED_BYTES) {
      throw std::runtime_error("The rule file " + str::printable(chain_.front().file->path) +
                               " loads more than 256 MB or 1,000,000 files, each counted as often "
                               "as it is loaded.");
    }
  }

  static bool report_failure(const Link& link) {
    if (!link.reason.empty()) {
      std::cerr << str::printable(link.file->path) << ": " << link.reason << '\n';
    }
    std::cerr << "Exception closing file " << link.file->path << '\n';
    return false;
  }

  void leave() {
    const Link& link = chain_.back();
    if (!link.file->outcome.rule.name.empty()) {
      rules_.insert(link.file->outcome.rule);
    }
    if (link.keep) {
      known_files_.emplace(link.file->path, link.file);
    }
    on_chain_.erase(link.file->id);
    chain_.pop_back();
  }

  std::set<Rule>& rules_;
  Config& config_;
  const std::string& kb_dir_;
  Run& run_;
  KnownFiles& known_files_;
  bool keep_files_;
  std::vector<Link> chain_;
  std::set<fs::FileId> on_chain_;
  std::set<std::string> reported_;  // files that load themselves
  std::size_t loaded_bytes_ = 0;
};

}  // namespace

RunScope::RunScope() : is_outermost_(current_run == nullptr) {
  if (is_outermost_) {
    current_run = std::make_unique<Run>();
  }
}

RunScope::~RunScope() {
  if (is_outermost_) {
    current_run.reset();
  }
}

int parse_clips_rules(const std::string& file, std::set<Rule>& rules, Config& config,
                      const std::string& kb_dir) {
  Run outside;
  Run& run = current_run == nullptr ? outside : *current_run;
  return ChainScan(rules, config, kb_dir, run, current_run != nullptr).scan(file) ? 0 : 1;
}

}  // namespace qorn::preproc::clips_parser
