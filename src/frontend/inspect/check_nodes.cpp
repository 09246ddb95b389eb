#include <algorithm>
#include <sstream>
#include <unordered_map>

#include <qorn/fs.h>
#include <qorn/node.h>
#include <qorn/preproc/preprocessor.h>
#include <qorn/str.h>

#include "run_loader.h"
#include "suggestion.h"
#include "survey.h"

namespace qorn::inspect {
namespace {

constexpr fs::Readable NODE_FILE{fs::Readable::Kinds::REGULAR_FILES, 512'000'000, "too large"};

std::vector<std::string> known_roles(const Survey& survey) {
  std::vector<std::string> roles(NODE_ROLES.begin(), NODE_ROLES.end());
  for (const Reference& role : survey.provider_roles) {
    roles.push_back(role.name);
  }
  return roles;
}

/// Turns "FILE:LINE: reason" and "FILE: reason" of the reader into faults.
void add_reader_lines(const std::vector<std::string>& lines, const std::string& file,
                      FaultList& faults) {
  for (const std::string& line : lines) {
    const std::string prefix = str::printable(file) + ":";
    long number = 0;
    std::string reason = line.starts_with(prefix) ? line.substr(prefix.size()) : line;
    if (const std::size_t colon = reason.find(':');
        colon != std::string::npos && reason.find_first_not_of("0123456789") == colon &&
        colon > 0) {
      number = std::stol(reason.substr(0, colon));
      reason.erase(0, colon + 1);
    }
    faults.error("node-file", {file, number}, str::stripws(reason));
  }
}

/// The words behind "role:" on a line that the reader has accepted.
std::vector<std::string> roles_of(const std::string& line) {
  std::string spaced = str::replace(str::replace(line, ":", " : "), ",", " , ");
  std::istringstream words(spaced);
  std::vector<std::string> roles;
  std::string keyword;
  std::string before;
  for (std::string word; words >> word;) {
    if (word == ":") {
      keyword = before;
      if (keyword == "subcluster" && !roles.empty()) {
        roles.pop_back();  // it was taken for a role
      }
    } else if (word != "," && keyword == "role") {
      roles.push_back(word);
    }
    before = word;
  }
  return roles;
}

/// Walks the lines of a node file that the reader has accepted.
class NodeLines {
 public:
  NodeLines(const std::string& file, Survey& survey)
      : file_(file), survey_(survey), roles_(known_roles(survey)) {}

  void check() {
    fs::FileText file = fs::read_file(file_, NODE_FILE);
    std::string& content = file.text;
    if (!file.was_read()) {
      return;  // a pipe can be read once
    }
    if (content.starts_with("\xef\xbb\xbf")) {
      content.erase(0, 3);
    }
    long number = 0;
    for (const std::string& line : str::split(content, '\n', true)) {
      check_line(str::stripws(line.substr(0, line.find('#'))), ++number);
    }
  }

 private:
  void check_line(const std::string& line, long number) {
    if (line.empty()) {
      return;
    }
    const std::size_t end = line.find_first_of(" \t");
    check_hosts(line.substr(0, end), number);
    if (end == std::string::npos) {
      return;
    }
    for (const std::string& role : roles_of(line.substr(end))) {
      if (std::find(roles_.begin(), roles_.end(), role) == roles_.end()) {
        survey_.faults.warning("unknown-role", {file_, number},
                               "'" + role + "' is no known role" + did_you_mean(role, roles_));
      }
    }
  }

  void check_hosts(const std::string& hosts, long number) {
    std::size_t repeated = 0;
    std::string first;
    node::for_each_host(hosts, [&](std::string_view host) {
      if (!lines_.emplace(host, number).second && ++repeated == 1) {
        first = host;
      }
    });
    if (repeated == 0) {
      return;
    }
    const Place before{file_, lines_.at(first)};
    std::string message = "the host '" + first + "'";
    if (repeated > 1) {
      message += " and " + std::to_string(repeated - 1) + " more";
    }
    survey_.faults
        .warning("repeated-host", {file_, number},
                 message + " stood before, at line " + std::to_string(before.line))
        .related.push_back({before, "first here"});
  }

  const std::string& file_;
  Survey& survey_;
  std::vector<std::string> roles_;
  std::unordered_map<std::string, long> lines_;  // of each host
};

void check_provider_roles(const Config& config, Survey& survey) {
  std::set<std::string> roles;
  for (const Node& node : config.nodes) {
    roles.insert(node.roles.begin(), node.roles.end());
  }
  const std::vector<std::string> known(roles.begin(), roles.end());
  for (const Reference& role : survey.provider_roles) {
    if (roles.count(role.name) == 0) {
      survey.faults.warning(
          "role-without-node", role.place,
          "no node has the role '" + role.name + "'" + did_you_mean(role.name, known));
    }
  }
}

void check_tie(const NodeGroups::Tie& tie, const NodeGroups& document, Survey& survey) {
  if (!tie.group.empty()) {
    if (document.find(tie.group) == nullptr) {
      survey.faults.error(
          "unknown-group", tie.place,
          "no group has the name '" + tie.group + "'" + did_you_mean(tie.group, document.names()));
    }
    return;
  }
  const Definition* definition = survey.graph.find(tie.path);
  if (definition == nullptr || !definition->reason.empty()) {
    survey.faults.error("missing-file", tie.place,
                        "the framework definition '" + tie.framework + "' is missing: " + tie.path +
                            did_you_mean(tie.framework, survey.graph.names()));
  }
}

}  // namespace

void check_nodes(Survey& survey, const std::string& file) {
  Config config;
  std::vector<std::string> words;
  bool good = false;
  {
    const Capture capture;
    good = preproc::Preprocessor().parse_nodefile(str::replace(file, " ", "\\ "), config);
    words = capture.error_lines();
  }
  add_reader_lines(words, file, survey.faults);
  if (good) {
    NodeLines(file, survey).check();
    check_provider_roles(config, survey);
  }
}

void check_groups(Survey& survey, const std::string& file) {
  if (survey.faults.has_error(file)) {
    return;  // a run reads none of it
  }
  NodeGroups document;
  std::vector<std::string> words;
  {
    const Capture capture;
    try {
      document = read_node_groups(str::replace(file, " ", "\\ "), survey.root);
    } catch (const Trouble&) {
      words = capture.error_lines();
    }
  }
  for (const std::string& line : words) {
    survey.faults.error("group-file", {file, 0}, line);
  }
  std::map<std::string, Place> known;
  for (const NodeGroup& group : document.groups) {
    if (group.hosts.empty()) {
      survey.faults.warning("empty-group", group.place,
                            "the group '" + group.name + "' has no node, so a run drops it");
    }
    const auto [first, added] = known.emplace(group.name, group.place);
    if (!added) {
      survey.faults
          .warning("repeated-group", group.place,
                   "the group '" + group.name + "' stood before, at line " +
                       std::to_string(first->second.line) + ", which counts")
          .related.push_back({first->second, "first here"});
    }
  }
  std::map<std::string, Place> tied;
  for (const NodeGroups::Tie& tie : document.ties) {
    check_tie(tie, document, survey);
    if (tie.group.empty() && !tied.emplace(tie.path, tie.place).second) {
      survey.faults.error("repeated-framework", tie.place,
                          "the framework definition '" + tie.framework +
                              "' stood before, at line " + std::to_string(tied[tie.path].line) +
                              ": a run ends here");
    }
  }
}

}  // namespace qorn::inspect
