#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <unordered_set>

#include <qorn/log/error_log.h>
#include <qorn/node.h>
#include <qorn/str.h>
#include <qorn/str/lines.h>

#include "node_input.h"

namespace qorn::node {
namespace {

/// Why something can't be used; nothing when it can.
using Reason = std::optional<std::string>;

/// Hosts in the order in which they came first.
class Hosts {
 public:
  /// Adds a host that isn't there yet. Gives the reason when it can't be one.
  Reason add(std::string_view name) {
    if (!Nodelist::hostname_valid(name)) {
      return bad_host_name(name);
    }
    if (!names_.emplace(name).second) {
      return {};
    }
    if (names_.size() > MOST_HOSTS) {
      return too_many_hosts();
    }
    Node& node = nodes.emplace_back();
    node.hostname = name;
    node.roles.emplace_back(DEFAULT_ROLE);
    return {};
  }

  std::vector<Node> nodes;

 private:
  std::unordered_set<std::string> names_;
};

/// Cuts the next word off `text`; empty at its end.
std::string_view next_word(std::string_view& text) {
  const auto ends_word = [](char c) { return is_blank(c) || c == '\n'; };
  const auto start = std::find_if_not(text.begin(), text.end(), ends_word);
  const auto end = std::find_if(start, text.end(), ends_word);
  const std::string_view word(start, end);
  text = std::string_view(end, text.end());
  return word;
}

Reason take_folded(const std::string& value, Hosts& hosts) {
  HostCount count = count_hosts(value);
  if (!count.reason.empty()) {
    return std::move(count.reason);
  }
  for_each_host(value, [&](std::string_view name) { hosts.add(name); });
  return {};
}

Reason take_words(const std::string& value, Hosts& hosts) {
  std::string_view rest = value;
  for (std::string_view word = next_word(rest); !word.empty(); word = next_word(rest)) {
    if (Reason reason = hosts.add(word)) {
      return reason;
    }
  }
  return {};
}

/// The first word of each line of a file; what follows it is the resource manager's own.
Reason take_file(const std::string& path, Hosts& hosts) {
  const fs::FileText file = fs::read_file(path, NODE_INPUT);
  if (!file.was_read()) {
    return str::printable(path) + ": " + file.reason;
  }
  for (str::Lines lines(file.text); lines.next();) {
    std::string_view line = lines.line();
    const std::string_view word = next_word(line);
    const Reason reason = word.empty() ? Reason() : hosts.add(word);
    if (reason) {
      return str::printable(path) + ":" + std::to_string(lines.number()) + ": " + *reason;
    }
  }
  return {};
}

/// Where a resource manager says which hosts a job has.
struct Source {
  const char* variable;
  Reason (*take)(const std::string& value, Hosts& hosts);
};

constexpr std::array<Source, 5> SOURCES = {{{"SLURM_JOB_NODELIST", take_folded},
                                            {"PBS_NODEFILE", take_file},
                                            {"LSB_DJOB_HOSTFILE", take_file},
                                            {"PE_HOSTFILE", take_file},
                                            {"LSB_HOSTS", take_words}}};

}  // namespace

void discoverNodes(std::vector<Node>& nodes) {
  const auto value = [](const Source& source) {
    const char* text = std::getenv(source.variable);
    return std::string(text == nullptr ? "" : text);
  };
  const auto* const source =
      std::find_if(SOURCES.begin(), SOURCES.end(),
                   [&](const Source& candidate) { return !value(candidate).empty(); });
  if (source == SOURCES.end()) {
    return;
  }
  Hosts hosts;
  if (const Reason reason = source->take(value(*source), hosts)) {
    log::ErrorLog(log::level::WARNING).stream() << source->variable << ": " << *reason;
    return;
  }
  if (hosts.nodes.empty()) {
    log::ErrorLog(log::level::WARNING).stream()
        << source->variable << ": expected host names, found none in " << quoted(value(*source));
  }
  nodes.insert(nodes.end(), std::make_move_iterator(hosts.nodes.begin()),
               std::make_move_iterator(hosts.nodes.end()));
}

}  // namespace qorn::node
