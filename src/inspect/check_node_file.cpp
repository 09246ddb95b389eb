#include <algorithm>
#include <unordered_map>

#include <qorn/constants.h>
#include <qorn/node.h>

#include "checks.h"
#include "suggestion.h"

namespace qorn::inspect {
namespace {

std::vector<std::string> known_roles(const Survey& survey) {
  std::vector<std::string> roles(NODE_ROLES.begin(), NODE_ROLES.end());
  for (const Mention& role : survey.provider_roles) {
    roles.push_back(role.word);
  }
  return roles;
}

/// Looks at the lines of a node file that have no fault.
class LineCheck {
 public:
  LineCheck(const std::string& file, Survey& survey)
      : file_(file), survey_(survey), known_roles_(known_roles(survey)) {}

  void check(const node::NodeLine& line) {
    check_hosts(line.hosts, static_cast<long>(line.number));
    for (const std::string_view each : line.roles) {
      const std::string role(each);
      if (std::find(known_roles_.begin(), known_roles_.end(), role) == known_roles_.end()) {
        survey_.findings.add("unknown-role", {file_, static_cast<long>(line.number)},
                             "'" + role + "' is no known role" + did_you_mean(role, known_roles_));
      }
    }
    if (last_roles_ != line.roles || roles_.empty()) {
      last_roles_ = line.roles;
      std::vector<std::string> roles(line.roles.begin(), line.roles.end());
      node::complete_roles(roles);
      roles_.insert(roles.begin(), roles.end());
    }
  }

  /// Those of all nodes.
  const std::set<std::string>& roles() const { return roles_; }

 private:
  void check_hosts(std::string_view hosts, long number) {
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
    survey_.findings
        .add("repeated-host", {file_, number},
             message + " stood before, at line " + std::to_string(before.line))
        .related.push_back({before, "first here"});
  }

  const std::string& file_;
  Survey& survey_;
  std::vector<std::string> known_roles_;
  std::vector<std::string_view> last_roles_;
  std::set<std::string> roles_;
  std::unordered_map<std::string, long> lines_;  // of each host
};

/// Tells of roles of providers that no node has.
void check_provider_roles(const std::set<std::string>& roles, Survey& survey) {
  const std::vector<std::string> known(roles.begin(), roles.end());
  for (const Mention& role : survey.provider_roles) {
    if (roles.count(role.word) == 0) {
      survey.findings.add(
          "role-without-node", role.place,
          "no node has the role '" + role.word + "'" + did_you_mean(role.word, known));
    }
  }
}

}  // namespace

void check_node_file(Survey& survey, const std::string& file) {
  const auto lines = node::read_lines(file, [&](const node::LineFault& fault) {
    survey.findings.add("node-file", {file, static_cast<long>(fault.line)}, fault.reason);
  });
  if (!lines) {
    return;
  }
  LineCheck check(file, survey);
  node::for_each_line(*lines, [&](const node::NodeLine& line) { check.check(line); });
  check_provider_roles(check.roles(), survey);
}

}  // namespace qorn::inspect
