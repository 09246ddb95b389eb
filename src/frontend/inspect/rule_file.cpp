#include "rule_file.h"

#include <set>
#include <string_view>

#include <re2/re2.h>

#include <qorn/preproc/clips_file.h>
#include <qorn/str/lines.h>

namespace qorn::inspect {
namespace {

/// Bytes are taken as they stand; a vertical tab is a blank as well.
bool matches(std::string_view line, const RE2& pattern, re2::StringPiece* part = nullptr) {
  const re2::StringPiece text(line.data(), line.size());
  return part == nullptr ? RE2::PartialMatch(text, pattern)
                         : RE2::PartialMatch(text, pattern, part);
}

void read_variable(std::string_view line, long number, std::set<std::string>& bound,
                   RuleFile& file) {
  static const RE2 bind(R"(\([\s\x0b]*bind[\s\x0b]+(\?[^\s)]+)[\s\x0b]+"\S+"[\s\x0b]*\))",
                        RE2::Latin1);
  static const RE2 negated(R"(\([\s\x0b]*not.*\))", RE2::Latin1);
  static const RE2 literal(R"re(\([\s\x0b]*id[\s\x0b]+"\S*"[\s\x0b]*\))re", RE2::Latin1);
  static const RE2 variable(R"(\([\s\x0b]*id[\s\x0b]+(\?[^\s)]+)\S*[\s\x0b]*\))", RE2::Latin1);
  re2::StringPiece name;
  re2::StringPiece rest(line.data(), line.size());
  while (RE2::FindAndConsume(&rest, bind, &name)) {
    bound.insert(std::string(name));
  }
  if (line.find("id") != std::string_view::npos && matches(line, variable, &name) &&
      !matches(line, negated) && !matches(line, literal) && bound.count(std::string(name)) == 0) {
    file.unbound.push_back({number, std::string(name)});
  }
}

}  // namespace

RuleFile read_rule_file(const std::string& path) {
  RuleFile file;
  const fs::FileText content = preproc::clips_parser::read_clips_file(path);
  if (!content.was_read()) {
    return file;
  }
  std::set<std::string> bound;
  for (str::Lines lines(content.text); lines.next();) {
    const std::string_view line = lines.line();
    const long number = static_cast<long>(lines.number());
    if (line.starts_with(';')) {
      continue;
    }
    read_variable(line, number, bound, file);
    if (auto load = preproc::clips_parser::find_load(line)) {
      file.loads.push_back({number, std::move(load->name), load->followed});
    }
  }
  return file;
}

}  // namespace qorn::inspect
