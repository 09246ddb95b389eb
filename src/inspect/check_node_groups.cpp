#include <map>
#include <string>
#include <vector>

#include <qorn/str.h>

#include "capture.h"
#include "checks.h"
#include "node_group_document.h"
#include "suggestion.h"
#include "trouble.h"

namespace qorn::inspect {
namespace {

void check_tie(const NodeGroupDocument::Tie& tie, const NodeGroupDocument& document,
               Survey& survey) {
  if (!tie.group.empty()) {
    if (document.find(tie.group) == nullptr) {
      survey.findings.add(
          "unknown-group", tie.place,
          "no group has the name '" + tie.group + "'" + did_you_mean(tie.group, document.names()));
    }
    return;
  }
  const Definition* definition = survey.graph.find(tie.path);
  if (definition == nullptr || !definition->reason.empty()) {
    survey.findings.add("missing-file", tie.place,
                        "the framework definition '" + tie.framework + "' is missing: " + tie.path +
                            did_you_mean(tie.framework, survey.graph.names()));
  }
}

}  // namespace

void check_node_groups(Survey& survey, const std::string& file) {
  if (survey.findings.has_error(file)) {
    return;  // a run reads none of it
  }
  NodeGroupDocument document;
  std::vector<std::string> words;
  {
    const Capture capture;
    try {
      document = read_node_group_document(str::replace(file, " ", "\\ "), survey.root);
    } catch (const Trouble&) {
      words = capture.error_lines();
    }
  }
  for (const std::string& line : words) {
    survey.findings.add("group-file", {file, 0}, line);
  }
  std::map<std::string, Place> known;
  for (const NodeGroupDocument::Group& group : document.groups) {
    if (group.hosts.empty()) {
      survey.findings.add("empty-group", group.place,
                          "the group '" + group.name + "' has no node, so a run drops it");
    }
    const auto [first, added] = known.emplace(group.name, group.place);
    if (!added) {
      survey.findings
          .add("repeated-group", group.place,
               "the group '" + group.name + "' stood before, at line " +
                   std::to_string(first->second.line) + ", which counts")
          .related.push_back({first->second, "first here"});
    }
  }
  std::map<std::string, Place> tied;
  for (const NodeGroupDocument::Tie& tie : document.ties) {
    check_tie(tie, document, survey);
    if (tie.group.empty() && !tied.emplace(tie.path, tie.place).second) {
      survey.findings.add("repeated-framework", tie.place,
                          "the framework definition '" + tie.framework +
                              "' stood before, at line " + std::to_string(tied[tie.path].line) +
                              ": a run ends here");
    }
  }
}

}  // namespace qorn::inspect
