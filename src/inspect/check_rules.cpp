#include <algorithm>
#include <stdexcept>

#include <qorn/fs.h>
#include <qorn/preproc/clips_parser.h>
#include <qorn/preproc/rule_file.h>
#include <qorn/str.h>
#include <qorn/str/lines.h>

#include "capture.h"
#include "checks.h"
#include "installation.h"
#include "suggestion.h"

namespace qorn::inspect {
namespace {

using Step = preproc::clips_parser::RuleFile::Step;

/// The lines of the rule files that framework definitions lead to.
class RuleLines {
 public:
  explicit RuleLines(Survey& survey) : survey_(survey) {}

  /// The file and all that it loads from `directory`.
  void check(const std::string& path, const std::string& directory) {
    std::vector<std::string> unread{path};
    while (!unread.empty()) {
      const std::string next = unread.back();
      unread.pop_back();
      if (!is_file(next) || !done_.emplace(next, directory).second) {
        continue;
      }
      for (const Step& step : steps_of(next, directory)) {
        const Place place{next, static_cast<long>(step.line)};
        if (step.kind == Step::Kind::LOAD && check_load(step, place, directory)) {
          unread.push_back(fs::abspath(step.text));
        } else if (step.kind == Step::Kind::VARIABLE_ID && step.values == 0) {
          survey_.findings.add(
              "unbound-id", place,
              "the id '" + step.text + "' is bound to no text up to here, so no id is noted");
        }
      }
    }
  }

 private:
  static std::vector<Step> steps_of(const std::string& path, const std::string& directory) {
    try {
      return preproc::clips_parser::scan_rule_file(path, directory)->steps;
    } catch (const std::runtime_error&) {
      return {};  // the scan of a run says it
    }
  }

  /// Whether the load leads somewhere.
  bool check_load(const Step& load, const Place& place, const std::string& directory) {
    if (!load.is_starred) {
      survey_.findings.add("dead-load", place,
                           "this load line leads nowhere: only the form (batch* NAME) is followed");
      return false;
    }
    if (is_file(load.text)) {
      return true;
    }
    std::vector<std::string> names;
    for (const auto& [file, kind] : survey_.files) {
      if (kind == DocumentKind::RULE_FILE && file.starts_with(directory + "/")) {
        names.push_back(file.substr(directory.size() + 1));
      }
    }
    survey_.findings.add("dead-load", place,
                         "this load line leads nowhere: " + load.text + " is missing" +
                             did_you_mean(load.text.substr(directory.size() + 1), names));
    return false;
  }

  Survey& survey_;
  std::set<std::pair<std::string, std::string>> done_;
};

/// Scans a rule file as a run does. What that says is a fault at the place that names the file.
void scan(const Reference& mod, const std::string& directory, Config& config, Survey& survey) {
  std::set<Rule> rules;
  std::vector<std::string> words;
  {
    const Capture capture;
    try {
      preproc::clips_parser::parse_clips_rules(mod.path, rules, config, directory);
    } catch (const std::exception& error) {
      survey.findings.add("rule-file-unusable", mod.place, error.what());
    }
    words = capture.error_lines();
  }
  for (const std::string& line : words) {
    survey.findings.add("rule-file-unusable", mod.place, line);
  }
  if (rules.empty() && words.empty()) {
    survey.findings.add("no-rule", mod.place, "'" + mod.name + "' and what it loads hold no rule");
  }
}

void check_mods(Survey& survey, Config& config) {
  RuleLines lines(survey);
  for (const Definition* definition : survey.graph.in_order()) {
    for (const Reference* mod : definition->of_kind(DocumentKind::RULE_FILE)) {
      if (is_file(mod->path)) {
        scan(*mod, definition->rule_directory, config, survey);
        lines.check(fs::abspath(mod->path), definition->rule_directory);
      }
    }
  }
}

/// The first line of a file that holds `text`; 0 when none does.
long line_with(const std::string& path, const std::string& text) {
  const fs::FileText file = preproc::clips_parser::read_clips_file(path);
  for (str::Lines lines(file.text); lines.next();) {
    if (lines.line().find(text) != std::string_view::npos) {
      return static_cast<long>(lines.number());
    }
  }
  return 0;
}

/// Signs of a diagnosis that neither a rule nor another diagnosis gives.
void check_diagnoses(Survey& survey, Config& config) {
  std::map<std::string, std::set<std::string>> signs;  // by file
  for (const char* name : preproc::clips_parser::DIAGNOSIS_FILES) {
    const std::string path = survey.root + name;
    Config file;
    const Capture capture;
    preproc::clips_parser::parse_diagnoses(path, file);
    for (const auto& [id, of_id] : file.diagnosis_signs) {
      config.diagnosis_signs[id];
      signs[path].insert(of_id.begin(), of_id.end());
    }
  }
  std::vector<std::string> known;
  for (const auto* ids : {&config.diagnosis_rules, &config.diagnosis_signs}) {
    for (const auto& [id, rest] : *ids) {
      known.push_back(id);
    }
  }
  survey.message_ids.insert(known.begin(), known.end());
  for (const auto& [path, of_file] : signs) {
    for (const std::string& sign : of_file) {
      if (std::find(known.begin(), known.end(), sign) == known.end()) {
        survey.findings
            .add("unknown-sign", {path, line_with(path, "\"" + sign + "\"")},
                 "no rule file mentions the sign '" + sign + "'" + did_you_mean(sign, known))
            .follow_up = survey.names_are_missing;
      }
    }
    survey.message_ids.insert(of_file.begin(), of_file.end());
  }
}

void check_suppressions(Survey& survey) {
  const std::vector<std::string> known(survey.message_ids.begin(), survey.message_ids.end());
  for (const Mention& id : survey.suppressed) {
    if (survey.message_ids.count(id.word) == 0) {
      survey.findings
          .add("unknown-id", id.place,
               "nothing gives the message id '" + id.word + "'" + did_you_mean(id.word, known))
          .follow_up = survey.names_are_missing;
    }
  }
}

}  // namespace

void check_rules(Survey& survey) {
  Config config;
  check_mods(survey, config);
  check_diagnoses(survey, config);
  check_suppressions(survey);
}

}  // namespace qorn::inspect
