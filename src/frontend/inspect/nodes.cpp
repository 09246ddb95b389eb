#include "nodes.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <optional>

#include <qorn/node.h>
#include <qorn/str.h>

#include "node_group.h"
#include "run_loader.h"
#include "suggestion.h"

namespace qorn::inspect {
namespace {

using Hosts = std::vector<std::string>;  // sorted, each once

/// The groups that expressions name, read when the first one does.
class Groups {
 public:
  explicit Groups(std::string file) : file_(std::move(file)) {}

  const Hosts& hosts_of(const std::string& name) {
    if (!document_) {
      if (file_.empty()) {
        file_ = node_group_file_of_installation();
      }
      if (file_.empty()) {
        throw Trouble("@" + name + ": no node group document; name one with -g");
      }
      document_ = read_node_groups(file_, node::get_default_path());
    }
    const NodeGroup* group = document_->find(name);
    if (group == nullptr) {
      throw Trouble(file_ + " has no group '" + name + "'" +
                    did_you_mean(name, document_->names()));
    }
    return group->hosts;
  }

 private:
  std::string file_;
  std::optional<NodeGroups> document_;
};

Hosts hosts_of(const std::string& operand, Groups& groups) {
  if (operand.starts_with('@')) {
    return groups.hosts_of(operand.substr(1));
  }
  node::HostNames names = node::expand_hosts(operand);
  if (!names.reason.empty()) {
    throw Trouble("'" + operand + "': " + names.reason);
  }
  Hosts hosts = std::move(names.names);
  std::sort(hosts.begin(), hosts.end());
  hosts.erase(std::unique(hosts.begin(), hosts.end()), hosts.end());
  return hosts;
}

Hosts combine(const Hosts& left, char operation, const Hosts& right) {
  Hosts result;
  const auto out = std::back_inserter(result);
  switch (operation) {
    case '!':
      std::set_difference(left.begin(), left.end(), right.begin(), right.end(), out);
      break;
    case '&':
      std::set_intersection(left.begin(), left.end(), right.begin(), right.end(), out);
      break;
    default:
      std::set_union(left.begin(), left.end(), right.begin(), right.end(), out);
  }
  if (result.size() > node::MOST_HOSTS) {
    throw Trouble("more than 10,000,000 hosts");
  }
  return result;
}

/// The end of the operand that starts at `start`: an operator outside brackets, or the end.
std::size_t operand_end(const std::string& expression, std::size_t start) {
  bool inside = false;
  for (std::size_t i = start; i < expression.size(); ++i) {
    const char c = expression[i];
    if (c == '[' || c == ']') {
      inside = c == '[';
    } else if (!inside && (c == ',' || c == '!' || c == '&')) {
      return i;
    }
  }
  return expression.size();
}

Hosts evaluate(const std::string& expression, Groups& groups) {
  Hosts hosts;
  char operation = ',';
  for (std::size_t start = 0;;) {
    const std::size_t end = operand_end(expression, start);
    const std::string operand = str::stripws(expression.substr(start, end - start));
    if (operand.empty()) {
      throw Trouble("'" + expression + "': a name is missing beside an operator");
    }
    hosts = combine(hosts, operation, hosts_of(operand, groups));
    if (end == expression.size()) {
      return hosts;
    }
    operation = expression[end];
    start = end + 1;
  }
}

}  // namespace

void print_nodes(const std::vector<std::string>& expressions, NodeForm form,
                 std::string group_file) {
  Groups groups(std::move(group_file));
  Hosts hosts;
  for (const std::string& expression : expressions) {
    hosts = combine(hosts, ',', evaluate(expression, groups));
  }
  if (form == NodeForm::COUNT) {
    std::cout << hosts.size() << '\n';
    return;
  }
  const std::string folded = node::fold_hosts(hosts);
  if (folded.empty()) {
    return;
  }
  if (form == NodeForm::FOLD) {
    std::cout << str::printable(folded) << '\n';
    return;
  }
  node::for_each_host(folded,
                      [](std::string_view host) { std::cout << str::printable(host) << '\n'; });
}

}  // namespace qorn::inspect
