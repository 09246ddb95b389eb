#include "nodes.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <optional>

#include <qorn/node.h>
#include <qorn/str.h>

#include "loaded_run.h"
#include "node_group_document.h"
#include "suggestion.h"
#include "trouble.h"

namespace qorn::inspect {
namespace {

using Hosts = std::vector<std::string>;  // sorted, each once

/// The node group document that the main document of the installation names, or empty.
std::string node_group_file_of_installation() {
  LoadedRun run;
  run.take_command_line({"collect"});
  run.read_main_document();
  return run.config.node_group_file;
}

/// The groups that expressions name, read when the first one does.
class NamedGroups {
 public:
  explicit NamedGroups(std::string file) : file_(std::move(file)) {}

  const Hosts& hosts_of(const std::string& name) {
    if (!document_) {
      if (file_.empty()) {
        file_ = node_group_file_of_installation();
      }
      if (file_.empty()) {
        throw Trouble("@" + name + ": no node group document; name one with -g");
      }
      document_ = read_node_group_document(file_, node::get_default_path());
    }
    const NodeGroupDocument::Group* group = document_->find(name);
    if (group == nullptr) {
      throw Trouble(file_ + " has no group '" + name + "'" +
                    did_you_mean(name, document_->names()));
    }
    return group->hosts;
  }

 private:
  std::string file_;
  std::optional<NodeGroupDocument> document_;
};

Hosts hosts_of(const std::string& operand, NamedGroups& groups) {
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

Hosts evaluate(const std::string& expression, NamedGroups& groups) {
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

int print_nodes(const Question& question) {
  if (question.fold + question.expand + question.count > 1) {
    throw Trouble("nodes takes one of --fold, --expand and --count");
  }
  NamedGroups groups(question.node_group_file);
  Hosts hosts;
  for (const std::string& expression : question.expressions) {
    hosts = combine(hosts, ',', evaluate(expression, groups));
  }
  if (question.count) {
    std::cout << hosts.size() << '\n';
    return EXIT_SUCCESS;
  }
  const std::string folded = node::fold_hosts(hosts);
  if (folded.empty()) {
    return EXIT_SUCCESS;
  }
  if (question.expand) {
    node::for_each_host(folded,
                        [](std::string_view host) { std::cout << str::printable(host) << '\n'; });
  } else {
    std::cout << str::printable(folded) << '\n';
  }
  return EXIT_SUCCESS;
}

}  // namespace qorn::inspect
