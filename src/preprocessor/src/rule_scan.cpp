#include "rule_scan.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <utility>

#include <qorn/str.h>

#include "clips_file.h"
#include "ecma_pattern.h"

namespace qorn::preproc::clips_parser {

using Step = RuleFile::Step;

namespace {

constexpr std::string_view DEFRULE = "defrule";
constexpr std::size_t MOST_QUOTED_BYTES = 200;  // of a document's text in a message

/// What stands between the first and the last double quote.
std::string within_quotes(std::string_view text) {
  const std::size_t start = text.find('"') + 1;
  return std::string(text.substr(start, text.rfind('"') - start));
}

/// Which of the words that matter a line holds behind its parentheses.
struct Openings {
  bool defrule = false;
  bool id = false;
};

bool is_white_space(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Tells the few lines apart that are worth a search by patterns.
Openings find_openings(std::string_view line) {
  Openings found;
  for (std::size_t at = line.find('('); at != std::string_view::npos; at = line.find('(', at)) {
    ++at;
    found.defrule = found.defrule || line.substr(at).starts_with(DEFRULE);
    while (at < line.size() && is_white_space(line[at])) {
      ++at;
    }
    found.id = found.id || line.substr(at).starts_with("id");
  }
  return found;
}

std::optional<std::string_view> find_defrule(std::string_view line) {
  static const EcmaPattern pattern(R"re(\s*\({1}(defrule){1}\s+\S+)re");
  return pattern.find(line);
}

bool is_negated(std::string_view line) {
  static const EcmaPattern pattern(R"re(\({1}\s*(not){1}.*\){1})re", "not");
  return pattern.matches(line);
}

/// The value of an id slot with a literal text.
std::optional<std::string> find_literal_id(std::string_view line) {
  static const EcmaPattern slot(R"re(\(\s*id\s+\"\S*\"\s*\))re", "\"");
  const auto found = slot.find(line);
  return found ? std::optional(within_quotes(*found)) : std::nullopt;
}

/// The variable of an id slot, with its question mark.
std::optional<std::string_view> find_variable(std::string_view line) {
  static const EcmaPattern slot(R"re(\({1}\s*(id){1}\s+\?{1}\S+\s*\){1})re", "?");
  static const EcmaPattern variable(R"re(\?[^\s\)]+)re");
  const auto found = slot.find(line);
  return found ? variable.find(*found) : std::nullopt;
}

EcmaPattern make_bind_pattern(std::string_view variable, const std::string& path,
                              std::size_t line_number) {
  const std::string pattern = R"re(\({1}\s*(bind){1}\s+\?{1})re" + std::string(variable) +
                              R"re({1}\s+\"{1}\S+\"{1}\s*\){1})re";
  try {
    return EcmaPattern(pattern, "bind");
  } catch (const std::invalid_argument&) {
    throw std::runtime_error(str::printable(path) + ":" + std::to_string(line_number) +
                             ": the variable '" +
                             str::printable(variable.substr(0, MOST_QUOTED_BYTES)) +
                             "' gives no valid search pattern for its bind.");
  }
}

/// The pattern of a bind to a variable. It is made once, of the first variable that the process
/// meets, and every later variable is looked up with it; the question mark of the variable's text
/// makes the quantifier ahead of it lazy. The text is not quoted: in it, special characters keep
/// their meaning in a pattern.
const EcmaPattern& bind_pattern(std::string_view variable, const std::string& path,
                                std::size_t line_number) {
  static const EcmaPattern pattern = make_bind_pattern(variable, path, line_number);
  return pattern;
}

std::optional<std::string> find_bound_id(const EcmaPattern& bind, std::string_view line) {
  static const EcmaPattern value(R"re(\"\S+\")re");
  const auto found = bind.find(line);
  const auto quoted = found ? value.find(*found) : std::nullopt;
  return quoted ? std::optional(within_quotes(*quoted)) : std::nullopt;
}

bool is_comment(std::string_view line) {
  return line.substr(0, 1) == ";";
}

}  // namespace

RuleScan::RuleScan(const std::string& path, const std::string& kb_dir, std::string text)
    : path_(path), kb_dir_(kb_dir), text_(std::move(text)), lines_(text_), bind_lines_(text_) {
  const std::size_t star = path_.find("* ");
  rule_.file = star == std::string::npos ? path_ : path_.substr(star + 1);
}

bool RuleScan::advance(RuleFile& file) {
  const std::size_t known = file.steps.size();
  while (lines_.next()) {
    if (!is_comment(lines_.line())) {
      scan_line(lines_.line(), file);
    }
    if (file.steps.size() > known) {
      return true;
    }
  }
  file.rule = std::move(rule_);
  file.rule.description = std::move(description_);
  return false;
}

void RuleScan::scan_line(std::string_view line, RuleFile& file) {
  const Openings openings = find_openings(line);
  if (openings.defrule) {
    take_name(line);
  }
  if (openings.id) {
    take_ids(line, file);
  }
  if (auto load = find_load(line)) {
    file.steps.push_back(
        {Step::Kind::LOAD, lines_.number(), kb_dir_ + "/" + load->name, {}, 0, load->is_starred});
  }
  take_text(line);
}

// The place of the word is taken ahead of the squeezing: with several blanks in front of it the
// name loses its start.
void RuleScan::take_name(std::string_view line) {
  if (const auto found = find_defrule(line)) {
    rule_.name = str::squeeze(*found, ' ').erase(0, found->find(DEFRULE) + DEFRULE.size() + 1);
  }
}

void RuleScan::take_ids(std::string_view line, RuleFile& file) {
  if (is_negated(line)) {
    return;
  }
  if (auto id = find_literal_id(line)) {
    file.steps.push_back({Step::Kind::ID, lines_.number(), std::move(*id), rule_.name});
  } else if (const auto variable = find_variable(line)) {
    take_bound_ids(*variable, file);
  }
}

// Every line up to the present one counts, for this variable as for those before. The pattern
// stays the same, so what an earlier variable has found holds for this one too.
void RuleScan::take_bound_ids(std::string_view variable, RuleFile& file) {
  const EcmaPattern& bind = bind_pattern(variable, path_, lines_.number());
  while (bind_lines_.number() < lines_.number() && bind_lines_.next()) {
    if (is_comment(bind_lines_.line())) {
      continue;
    }
    if (auto id = find_bound_id(bind, bind_lines_.line())) {
      file.bound_ids.push_back(std::move(*id));
    }
  }
  file.steps.push_back({Step::Kind::VARIABLE_ID, lines_.number(), std::string(variable), rule_.name,
                        file.bound_ids.size()});
}

void RuleScan::take_text(std::string_view line) {
  const bool is_last = line.ends_with('"');
  in_description_ = in_description_ || line.starts_with("  \"");
  if (in_description_ || is_last) {
    const auto start = static_cast<std::ptrdiff_t>(description_.size());
    description_.append(line).append(1, '\n');
    description_.erase(std::remove(description_.begin() + start, description_.end(), '"'),
                       description_.end());
  }
  in_description_ = in_description_ && !is_last;
}

}  // namespace qorn::preproc::clips_parser
