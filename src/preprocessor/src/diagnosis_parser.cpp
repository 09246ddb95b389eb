#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <qorn/log/error_log.h>
#include <qorn/preproc/clips_parser.h>
#include <qorn/str.h>
#include <qorn/str/lines.h>

#include "clips_file.h"
#include "ecma_pattern.h"

namespace qorn::preproc::clips_parser {
namespace {

constexpr std::size_t MOST_SIGNS = 1'000'000;  // that one file may add to the record

bool starts_rule(std::string_view line) {
  static const EcmaPattern pattern(R"re(^\s*\(\s*(defrule)\s+)re", "defrule");
  return pattern.matches(line);
}

bool has_further_alternative(std::string_view line) {
  static const EcmaPattern pattern(R"re(\"\S+\"\s*\|)re", "|");
  return pattern.matches(line);
}

std::string first_quoted(std::string_view text) {
  static const EcmaPattern pattern(R"re(\"\S*\")re", "\"");
  const auto found = pattern.find(text);
  return found ? std::string(found->substr(1, found->size() - 2)) : std::string();
}

std::string first_id(std::string_view text) {
  static const EcmaPattern negation(R"re(\(\s*(not).*\))re", "not");
  static const EcmaPattern slot(R"re(\s*\(\s*(id)\s+\"\S+\")re", "id");
  if (negation.matches(text)) {
    return {};
  }
  const auto found = slot.find(text);
  return found ? first_quoted(*found) : std::string();
}

/// Where the scan of a file stands.
struct Scan {
  bool in_conditions = true;
  bool continued = false;  // the line before ended in an alternative
  std::vector<std::string> conditions;
  std::size_t signs = 0;  // added to the record
};

void take_condition(std::string_view line, Scan& scan) {
  std::string id = scan.continued ? first_quoted(line) : first_id(line);
  if (!id.empty()) {
    scan.conditions.push_back(std::move(id));
  }
  scan.continued = has_further_alternative(line);
}

void take_conclusion(std::string_view line, const std::string& file, Scan& scan, Config& config) {
  const std::string id = first_id(line);
  if (id.empty()) {
    return;
  }
  scan.signs += scan.conditions.size();
  if (scan.signs > MOST_SIGNS) {
    throw std::runtime_error("The diagnosis file " + str::printable(file) +
                             " has more than 1,000,000 signs: each id that a rule asserts takes "
                             "all ids of its conditions.");
  }
  auto& signs = config.diagnosis_signs[id];
  signs.insert(signs.end(), scan.conditions.begin(), scan.conditions.end());
}

// The rest of a line that starts a rule or holds the arrow isn't looked at.
void scan_line(std::string_view line, const std::string& file, Scan& scan, Config& config) {
  if (line.starts_with(';')) {
    return;
  }
  if (starts_rule(line)) {
    scan.in_conditions = true;
    scan.conditions.clear();
  } else if (holds(line, "=>")) {
    scan.in_conditions = false;
  } else if (scan.in_conditions) {
    take_condition(line, scan);
  } else {
    take_conclusion(line, file, scan, config);
  }
}

}  // namespace

void parse_diagnoses(const std::string& file, Config& config) {
  const fs::FileText content = read_clips_file(file);
  Scan scan;
  for (str::Lines lines(content.text); lines.next();) {
    scan_line(lines.line(), file, scan, config);
  }
  if (content.was_read() || content.state == fs::FileText::State::NOT_OPENED) {
    return;
  }
  if (content.state == fs::FileText::State::TOO_LARGE) {
    log::ErrorLog(log::level::ERROR).stream() << str::printable(file) << ": " << content.reason;
  }
  log::ErrorLog(log::level::ERROR).stream() << "Error closing file " << file;
}

void parse_installed_diagnoses(Config& config) {
  for (const char* file : DIAGNOSIS_FILES) {
    parse_diagnoses(config.root + file, config);
  }
}

std::string match_quotes(const std::string& text) {
  return first_quoted(text);
}

std::string find_id(const std::string& text) {
  return first_id(text);
}

}  // namespace qorn::preproc::clips_parser
