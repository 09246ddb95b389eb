#include <algorithm>
#include <filesystem>

#include <qorn/fs.h>
#include <qorn/preproc/clips_file.h>
#include <qorn/preproc/clips_parser.h>
#include <qorn/str.h>
#include <qorn/str/lines.h>

#include "rule_file.h"
#include "run_loader.h"
#include "suggestion.h"
#include "survey.h"

namespace qorn::inspect {
namespace {

bool is_file(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(path, ignored);
}

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
      const RuleFile file = read_rule_file(next);
      for (const RuleFile::Load& load : file.loads) {
        if (check_load(load, {next, load.line}, directory)) {
          unread.push_back(fs::abspath(directory + "/" + load.name));
        }
      }
      for (const RuleFile::Variable& variable : file.unbound) {
        survey_.faults.warning(
            "unbound-id", {next, variable.line},
            "the id '" + variable.name + "' is bound to no text up to here, so no id is noted");
      }
    }
  }

 private:
  /// Whether the load leads somewhere.
  bool check_load(const RuleFile::Load& load, const Place& place, const std::string& directory) {
    if (!load.followed) {
      survey_.faults.error("dead-load", place,
                           "this load line leads nowhere: only the form (batch* NAME) is followed");
      return false;
    }
    const std::string path = directory + "/" + load.name;
    if (is_file(path)) {
      return true;
    }
    std::vector<std::string> names;
    for (const auto& [file, kind] : survey_.files) {
      if (kind == Kind::RULE_FILE && file.starts_with(directory + "/")) {
        names.push_back(file.substr(directory.size() + 1));
      }
    }
    survey_.faults.error(
        "dead-load", place,
        "this load line leads nowhere: " + path + " is missing" + did_you_mean(load.name, names));
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
      survey.faults.error("rule-file-unusable", mod.place, error.what());
    }
    words = capture.error_lines();
  }
  for (const std::string& line : words) {
    survey.faults.error("rule-file-unusable", mod.place, line);
  }
  if (rules.empty() && words.empty()) {
    survey.faults.warning("no-rule", mod.place,
                          "'" + mod.name + "' and what it loads hold no rule");
  }
}

void check_mods(Survey& survey, Config& config) {
  RuleLines lines(survey);
  for (const Definition* definition : survey.graph.in_order()) {
    for (const Reference* mod : definition->of_kind(Kind::RULE_FILE)) {
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
  for (const char* name : {"/kb/rules/diagnosis.clp", "/kb/rules/shared_diagnosis.clp"}) {
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
        survey.faults
            .warning("unknown-sign", {path, line_with(path, "\"" + sign + "\"")},
                     "no rule file mentions the sign '" + sign + "'" + did_you_mean(sign, known))
            .follow_up = survey.names_are_missing;
      }
    }
    survey.message_ids.insert(of_file.begin(), of_file.end());
  }
}

void check_suppressions(Survey& survey) {
  const std::vector<std::string> known(survey.message_ids.begin(), survey.message_ids.end());
  for (const Reference& id : survey.suppressed) {
    if (survey.message_ids.count(id.name) == 0) {
      survey.faults
          .warning("unknown-id", id.place,
                   "nothing gives the message id '" + id.name + "'" + did_you_mean(id.name, known))
          .follow_up = survey.names_are_missing;
    }
  }
}

}  // namespace

void check_rules(Survey& survey) {
  const preproc::clips_parser::RunScope scope;
  Config config;
  check_mods(survey, config);
  check_diagnoses(survey, config);
  check_suppressions(survey);
}

}  // namespace qorn::inspect
