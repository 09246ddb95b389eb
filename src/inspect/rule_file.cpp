#include "rule_file.h"

#include <set>
#include <string_view>

#include <re2/re2.h>

#include <qorn/fs.h>
#include <qorn/str.h>

namespace qorn::inspect {
namespace {

constexpr std::size_t MOST_BYTES = 100'000'000;

/// Bytes are taken as they stand; a vertical tab is a blank as well.
bool matches(std::string_view line, const RE2& pattern, re2::StringPiece* part = nullptr) {
  const re2::StringPiece text(line.data(), line.size());
  return part == nullptr ? RE2::PartialMatch(text, pattern)
                         : RE2::PartialMatch(text, pattern, part);
}

void read_load(std::string_view line, long number, RuleFile& file) {
  if (!line.starts_with("(batch") && !line.starts_with("(load")) {
    return;
  }
  const std::size_t star = line.find("* ");
  // The name starts two places behind the star, or behind the line's start without one.
  const std::size_t start = std::min((star == std::string_view::npos ? 0 : star) + 2, line.size());
  const std::size_t end = line.find(')');
  const std::string_view name = end != std::string_view::npos && end > start
                                    ? line.substr(start, end - start)
                                    : line.substr(start);
  file.loads.push_back({number, str::stripws(name), star != std::string_view::npos});
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
  std::string content;
  if (!fs::read_regular_file(path, MOST_BYTES, content, file.reason)) {
    return file;
  }
  std::set<std::string> bound;
  long number = 0;
  for (std::size_t start = 0; start < content.size();) {
    const std::size_t end = std::min(content.find('\n', start), content.size());
    const std::string_view line = std::string_view(content).substr(start, end - start);
    ++number;
    if (!line.starts_with(';')) {
      read_variable(line, number, bound, file);
      read_load(line, number, file);
    }
    start = end + 1;
  }
  return file;
}

}  // namespace qorn::inspect
