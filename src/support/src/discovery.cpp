#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <unordered_set>

#include <qorn/log/error_log.h>
#include <qorn/node.h>
#include <qorn/str.h>

#include "node_input.h"

namespace qorn::node {
namespace {

/// Hosts in the order in which they came first.
class Hosts {
 public:
  /// Adds a host that isn't there yet. Returns false, with the reason, when it can't be one.
  bool add(std::string_view name, std::string& reason) {
    if (!Nodelist::hostname_valid(name)) {
      reason = bad_host_name(name);
      return false;
    }
    if (!names.emplace(name).second) {
      return true;
    }
    if (names.size() > MOST_HOSTS) {
      reason = too_many_hosts();
      return false;
    }
    Node& node = nodes.emplace_back();
    node.hostname = name;
    node.roles.emplace_back("compute");
    return true;
  }

  std::vector<Node> nodes;

 private:
  std::unordered_set<std::string> names;
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

bool take_folded(const std::string& value, Hosts& hosts, std::string& reason) {
  std::size_t count = 0;
  if (!count_hosts(value, count, reason)) {
    return false;
  }
  for_each_host(value, [&](std::string_view name) { hosts.add(name, reason); });
  return true;
}

bool take_words(const std::string& value, Hosts& hosts, std::string& reason) {
  std::string_view rest = value;
  for (std::string_view word = next_word(rest); !word.empty(); word = next_word(rest)) {
    if (!hosts.add(word, reason)) {
      return false;
    }
  }
  return true;
}

/// The first word of each line of a file; what follows it is the resource manager's own.
bool take_file(const std::string& path, Hosts& hosts, std::string& reason) {
  std::string content;
  if (!read_input(path, content, reason)) {
    reason.insert(0, str::printable(path) + ": ");
    return false;
  }
  std::string_view lines = content;
  for (std::size_t number = 1; !lines.empty(); ++number) {
    std::string_view line = next_line(lines);
    const std::string_view word = next_word(line);
    if (!word.empty() && !hosts.add(word, reason)) {
      reason.insert(0, str::printable(path) + ":" + std::to_string(number) + ": ");
      return false;
    }
  }
  return true;
}

/// Where a resource manager says which hosts a job has.
struct Source {
  const char* variable;
  bool (*take)(const std::string& value, Hosts& hosts, std::string& reason);
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
  std::string reason;
  if (!source->take(value(*source), hosts, reason)) {
    log::ErrorLog(log::level::WARNING).stream() << source->variable << ": " << reason;
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
