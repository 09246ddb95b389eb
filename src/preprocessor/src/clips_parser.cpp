#include <cstddef>
#include <iostream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <qorn/detail/notes.h>
#include <qorn/log/error_log.h>
#include <qorn/preproc/clips_parser.h>
#include <qorn/str.h>

#include "clips_file.h"
#include "rule_chain.h"
#include "rule_scan.h"

namespace qorn::preproc::clips_parser {

struct ScannedFile {
  RuleFile content;
  fs::FileId id;
  std::size_t size = 0;  // bytes
};

namespace {

constexpr std::size_t MOST_VARIABLE_IDS = 1'000'000;  // registered in one run
// Loads can multiply: n files that load the next one twice are 2^n scans.
constexpr std::size_t MOST_LOADED_BYTES = 256'000'000;
constexpr std::size_t LEAST_BYTES_OF_LOAD = 256;  // what a load counts for beside its text
/// A file with more steps is scanned again rather than remembered.
constexpr std::size_t MOST_KEPT_STEPS = 100'000;

using Step = RuleFile::Step;

/// Reads a rule file; what is to be scanned goes to `text`.
std::shared_ptr<ScannedFile> open_rule_file(const std::string& path, std::string& text) {
  using State = fs::FileText::State;
  fs::FileText read = read_clips_file(path);
  auto file = std::make_shared<ScannedFile>();
  file->content.path = path;
  file->content.state = read.was_read()                   ? RuleFile::State::READ
                        : read.state == State::NOT_OPENED ? RuleFile::State::NOT_OPENED
                                                          : RuleFile::State::FAILED;
  if (read.state == State::TOO_LARGE) {
    file->content.reason = std::move(read.reason);
  }
  file->id = read.id;
  file->size = read.text.size();
  text = std::move(read.text);
  return file;
}

/// The scan of a file with all that it loads. Files are read whole and closed before the next one
/// is opened, and their chain is a list: neither open files nor the stack limit its depth.
class ChainScan {
 public:
  ChainScan(std::set<Rule>& rules, Config& config, const std::string& kb_dir, RuleFileScope& scope,
            bool keep_files)
      : rules_(rules),
        config_(config),
        kb_dir_(kb_dir),
        scope_(scope),
        known_files_(scope.known_files[kb_dir]),
        keep_files_(keep_files) {}

  ChainOutcome scan(const std::string& path) {
    enter(path);
    while (!chain_.empty()) {
      Link& link = chain_.back();
      const auto& steps = link.file->content.steps;
      if (link.next_step < steps.size()) {
        take(*link.file, steps[link.next_step++]);
      } else if (link.scan == nullptr || !advance(link)) {
        if (link.failed()) {
          report_failure(link);
          outcome_.is_whole = false;
          return outcome_;
        }
        leave();
      }
    }
    return outcome_;
  }

 private:
  /// A file on the way from the first one.
  struct Link {
    std::shared_ptr<ScannedFile> file;
    std::unique_ptr<RuleScan> scan;  // null when the whole outcome is known
    std::size_t next_step = 0;
    bool keep = false;  // the file is remembered
    bool failed() const { return file->content.state == RuleFile::State::FAILED; }
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
    std::string text;
    link.file = open_rule_file(path, text);
    if (link.file->content.state == RuleFile::State::NOT_OPENED) {
      return false;
    }
    link.scan = std::make_unique<RuleScan>(link.file->content.path, kb_dir_, std::move(text));
    link.keep = keep_files_ && !link.failed();
    return true;
  }

  static bool advance(Link& link) {
    auto& steps = link.file->content.steps;
    link.keep = link.keep && steps.size() <= MOST_KEPT_STEPS;
    if (!link.keep) {
      steps.clear();
      link.next_step = 0;
    }
    return link.scan->advance(link.file->content);
  }

  // An argument of its own: a load lets the chain grow under the link that it stands in.
  void take(const ScannedFile& file, const Step& step) {
    switch (step.kind) {
      case Step::Kind::LOAD:
        return load(file.content.path, step);
      case Step::Kind::ID:
        return register_id(step.text, step.rule);
      case Step::Kind::VARIABLE_ID:
        return register_bound_ids(file.content, step);
    }
  }

  void load(const std::string& from, const Step& step) {
    detail::note_named({DocumentKind::RULE_FILE,
                        step.text.substr(kb_dir_.size() + 1),
                        step.text,
                        {from, static_cast<long>(step.line)}});
    enter(step.text);
  }

  void register_id(const std::string& id, const std::string& rule) {
    config_.diagnosis_rules[id].push_back(rule);
  }

  void register_bound_ids(const RuleFile& file, const Step& step) {
    scope_.variable_ids += step.values;
    if (scope_.variable_ids > MOST_VARIABLE_IDS) {
      throw std::runtime_error("The rule file " + str::printable(file.path) +
                               " brings the ids registered by variables to more than 1,000,000: "
                               "each variable of an id slot meets each bind ahead of it.");
    }
    for (std::size_t i = 0; i < step.values; ++i) {
      register_id(file.bound_ids[i], step.rule);
    }
  }

  // No first file is large enough to fail here by itself.
  void count_load(std::size_t bytes) {
    loaded_bytes_ += LEAST_BYTES_OF_LOAD + bytes;
    if (loaded_bytes_ > MOST_LOADED_BYTES) {
      throw std::runtime_error("The rule file " +
                               str::printable(chain_.front().file->content.path) +
                               " loads more than 256 MB or 1,000,000 files, each counted as often "
                               "as it is loaded.");
    }
  }

  static void report_failure(const Link& link) {
    const RuleFile& file = link.file->content;
    if (!file.reason.empty()) {
      std::cerr << str::printable(file.path) << ": " << file.reason << '\n';
    }
    std::cerr << "Exception closing file " << file.path << '\n';
  }

  void leave() {
    const Link& link = chain_.back();
    const RuleFile& file = link.file->content;
    if (!file.rule.name.empty()) {
      rules_.insert(file.rule);
      outcome_.has_rule = true;
    }
    if (link.keep) {
      known_files_.emplace(file.path, link.file);
    }
    on_chain_.erase(link.file->id);
    chain_.pop_back();
  }

  std::set<Rule>& rules_;
  Config& config_;
  const std::string& kb_dir_;
  RuleFileScope& scope_;
  RuleFileScope::KnownFiles& known_files_;
  bool keep_files_;
  ChainOutcome outcome_;
  std::vector<Link> chain_;
  std::set<fs::FileId> on_chain_;
  std::set<std::string> reported_;  // files that load themselves
  std::size_t loaded_bytes_ = 0;
};

}  // namespace

RuleFileScope* RuleFileScope::current = nullptr;

RuleFileScope::RuleFileScope() : outer_(std::exchange(current, this)) {
}

RuleFileScope::~RuleFileScope() {
  current = outer_;
}

ChainOutcome scan_chain(const std::string& file, std::set<Rule>& rules, Config& config,
                        const std::string& kb_dir) {
  if (RuleFileScope::current != nullptr) {
    return ChainScan(rules, config, kb_dir, *RuleFileScope::current, true).scan(file);
  }
  RuleFileScope outside;
  return ChainScan(rules, config, kb_dir, outside, false).scan(file);
}

int parse_clips_rules(const std::string& file, std::set<Rule>& rules, Config& config,
                      const std::string& kb_dir) {
  return scan_chain(file, rules, config, kb_dir).is_whole ? 0 : 1;
}

std::shared_ptr<const RuleFile> scan_rule_file(const std::string& path, const std::string& kb_dir) {
  if (RuleFileScope::current != nullptr) {
    const auto& known = RuleFileScope::current->known_files[kb_dir];
    if (const auto found = known.find(path); found != known.end()) {
      return {found->second, &found->second->content};
    }
  }
  std::string text;
  const std::shared_ptr<ScannedFile> file = open_rule_file(path, text);
  RuleScan scan(file->content.path, kb_dir, std::move(text));
  while (scan.advance(file->content)) {
  }
  return {file, &file->content};
}

}  // namespace qorn::preproc::clips_parser
