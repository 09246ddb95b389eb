#include "finding_report.h"

#include <nlohmann/json.hpp>

#include <qorn/str.h>

namespace qorn::inspect {
namespace {

using Json = nlohmann::ordered_json;

constexpr int FORMAT_VERSION = 1;

std::string counted(std::size_t number, const std::string& noun) {
  return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

Json json_of(const Finding& finding) {
  Json related = Json::array();
  for (const Finding::Related& each : finding.related) {
    related.push_back(
        {{"file", each.place.file}, {"line", each.place.line}, {"message", each.message}});
  }
  return {{"severity", finding.kind->severity}, {"id", finding.kind->id},
          {"file", finding.place.file},         {"line", finding.place.line},
          {"column", finding.column},           {"message", finding.message},
          {"follow_up", finding.follow_up},     {"related", related}};
}

void print_line(const Finding& finding, std::ostream& out, const Terminal& terminal) {
  out << to_string(finding.place);
  if (finding.column > 0) {
    out << ':' << finding.column;
  }
  out << ": "
      << terminal.paint(finding.kind.is_error() ? Terminal::RED : Terminal::YELLOW,
                        finding.kind->severity)
      << ": " << (finding.follow_up ? "(follow-up) " : "") << str::printable(finding.message)
      << '\n';
}

}  // namespace

void print_text(const Findings& findings, std::ostream& out, const Terminal& terminal,
                bool verbose) {
  for (const Finding& finding : findings.all()) {
    if (!finding.follow_up || verbose) {
      print_line(finding, out, terminal);
    }
  }
  const Findings::Counts counts = findings.count();
  out << counted(findings.read.documents, "document") << ", "
      << counted(findings.read.rule_files, "rule file") << ", "
      << counted(findings.read.node_files, "node file")
      << " read: " << counted(counts.errors, "error") << ", "
      << counted(counts.warnings, "warning");
  if (counts.follow_ups > 0) {
    out << ", " << counted(counts.follow_ups, "follow-up")
        << (verbose ? "" : " hidden (-v shows them)");
  }
  out << '\n';
}

void print_json(const Findings& findings, std::ostream& out, const std::string& root) {
  Json list = Json::array();
  for (const Finding& finding : findings.all()) {
    list.push_back(json_of(finding));
  }
  const Findings::Counts counts = findings.count();
  const Json document = {{"version", FORMAT_VERSION},
                         {"root", root},
                         {"read",
                          {{"documents", findings.read.documents},
                           {"rule_files", findings.read.rule_files},
                           {"node_files", findings.read.node_files}}},
                         {"errors", counts.errors},
                         {"warnings", counts.warnings},
                         {"follow_ups", counts.follow_ups},
                         {"findings", list}};
  out << document.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace qorn::inspect
