#include "finding.h"

#include <algorithm>
#include <string_view>
#include <tuple>

#include <nlohmann/json.hpp>

#include <qorn/str.h>

namespace qorn::inspect {
namespace {

using Json = nlohmann::ordered_json;
using Severity = Finding::Severity;

constexpr int FORMAT_VERSION = 1;

const char* word_of(Severity severity) {
  return severity == Severity::ERROR ? "error" : "warning";
}

auto order_of(const Finding& finding) {
  return std::tie(finding.place.file, finding.place.line, finding.column, finding.message);
}

/// A faulty schema is a fault of every document that it is for.
bool is_about(const Finding& finding, const std::vector<std::string>& files) {
  return std::find(files.begin(), files.end(), finding.place.file) != files.end() ||
         std::string_view(finding.id) == "schema";
}

std::string counted(std::size_t number, const std::string& noun) {
  return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

Json json_of(const Finding& finding) {
  Json related = Json::array();
  for (const auto& each : finding.related) {
    related.push_back(
        {{"file", each.place.file}, {"line", each.place.line}, {"message", each.message}});
  }
  return {{"severity", word_of(finding.severity)},
          {"id", finding.id},
          {"file", finding.place.file},
          {"line", finding.place.line},
          {"column", finding.column},
          {"message", finding.message},
          {"follow_up", finding.follow_up},
          {"related", related}};
}

}  // namespace

std::string to_string(const Place& place) {
  return str::printable(place.file) + (place.line > 0 ? ":" + std::to_string(place.line) : "");
}

Finding& FaultList::error(const char* id, const Place& place, std::string message) {
  return add(Severity::ERROR, id, place, std::move(message));
}

Finding& FaultList::warning(const char* id, const Place& place, std::string message) {
  return add(Severity::WARNING, id, place, std::move(message));
}

Finding& FaultList::add(Severity severity, const char* id, const Place& place,
                        std::string message) {
  return findings_.emplace_back(Finding{severity, id, place, 0, std::move(message), {}, false});
}

bool FaultList::has_error(const std::string& file) const {
  return std::any_of(findings_.begin(), findings_.end(), [&](const Finding& finding) {
    return finding.severity == Severity::ERROR && finding.place.file == file;
  });
}

void FaultList::settle(const std::vector<std::string>& files) {
  std::erase_if(findings_, [&](const Finding& finding) {
    return !files.empty() && !is_about(finding, files);
  });
  std::stable_sort(findings_.begin(), findings_.end(),
                   [](const Finding& a, const Finding& b) { return order_of(a) < order_of(b); });
  findings_.erase(
      std::unique(findings_.begin(), findings_.end(),
                  [](const Finding& a, const Finding& b) { return order_of(a) == order_of(b); }),
      findings_.end());
}

void FaultList::print(std::ostream& out, const Terminal& terminal, bool verbose) const {
  for (const Finding& finding : findings_) {
    if (finding.follow_up && !verbose) {
      continue;
    }
    const bool is_error = finding.severity == Severity::ERROR;
    out << to_string(finding.place);
    if (finding.column > 0) {
      out << ':' << finding.column;
    }
    out << ": "
        << terminal.paint(is_error ? Terminal::RED : Terminal::YELLOW, word_of(finding.severity))
        << ": " << (finding.follow_up ? "(follow-up) " : "") << str::printable(finding.message)
        << '\n';
  }
  out << counted(read.documents, "document") << ", " << counted(read.rule_files, "rule file")
      << ", " << counted(read.node_files, "node file")
      << " read: " << counted(count(Severity::ERROR), "error") << ", "
      << counted(count(Severity::WARNING), "warning");
  if (const std::size_t hidden = follow_ups(); hidden > 0) {
    out << ", " << counted(hidden, "follow-up") << (verbose ? "" : " hidden (-v shows them)");
  }
  out << '\n';
}

void FaultList::print_json(std::ostream& out, const std::string& root) const {
  Json findings = Json::array();
  for (const Finding& finding : findings_) {
    findings.push_back(json_of(finding));
  }
  const Json document = {{"version", FORMAT_VERSION},
                         {"root", root},
                         {"read",
                          {{"documents", read.documents},
                           {"rule_files", read.rule_files},
                           {"node_files", read.node_files}}},
                         {"errors", count(Severity::ERROR)},
                         {"warnings", count(Severity::WARNING)},
                         {"follow_ups", follow_ups()},
                         {"findings", findings}};
  out << document.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

int FaultList::exit_status(bool strict) const {
  if (count(Severity::ERROR) > 0) {
    return 1;
  }
  return strict && count(Severity::WARNING) > 0 ? 3 : 0;
}

std::size_t FaultList::count(Severity severity) const {
  return static_cast<std::size_t>(std::count_if(
      findings_.begin(), findings_.end(),
      [&](const Finding& finding) { return !finding.follow_up && finding.severity == severity; }));
}

std::size_t FaultList::follow_ups() const {
  return static_cast<std::size_t>(
      std::count_if(findings_.begin(), findings_.end(),
                    [](const Finding& finding) { return finding.follow_up; }));
}

}  // namespace qorn::inspect
