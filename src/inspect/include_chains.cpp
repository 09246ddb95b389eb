#include "include_chains.h"

#include <algorithm>

#include <qorn/written_path.h>

#include "reference.h"

namespace qorn::inspect {
namespace {

/// More ways than this to one definition are not counted.
constexpr std::size_t MOST_WAYS = 1'000'000;

/// A longer chain is shown with its start and its end.
constexpr std::size_t MOST_LINES = 20;

void add_ways(std::size_t& ways, std::size_t more) {
  ways = std::min(ways + more, MOST_WAYS);
}

}  // namespace

IncludeChains::IncludeChains(const Config& config, const RunNotes& notes)
    : config_(config), notes_(notes) {
  put_in_order();
  find_includes();
  count_ways();
  name_origins();
}

void IncludeChains::put_in_order() {
  for (const auto& [path, fwd] : config_.fwds->by_path) {
    paths_.emplace(written_path::plain_file(path), path);
  }
  for (const std::string& opened : notes_.opened) {
    const auto found = paths_.find(opened);
    if (found != paths_.end() && order_.emplace(found->second, order_.size()).second) {
      in_order_.push_back(found->second);
    }
  }
}

std::vector<std::string> IncludeChains::lines_of(const std::string& path) const {
  std::vector<std::string> lines;
  std::string at = path;
  for (const Include* include = first_include(at); include != nullptr;
       include = first_include(at)) {
    lines.push_back("included by " + to_string(include->reference->place));
    at = include->from;
  }
  lines.push_back(origins_.at(at));
  std::reverse(lines.begin(), lines.end());
  if (lines.size() > MOST_LINES) {
    const std::size_t left_out = lines.size() - MOST_LINES;
    lines.erase(lines.begin() + 1, lines.begin() + 1 + static_cast<long>(left_out));
    lines.insert(lines.begin() + 1, "and " + std::to_string(left_out) + " includes between");
  }
  if (const std::size_t more = ways_.at(path) - 1; more > 0) {
    lines.back() += " (and " + std::string(more >= MOST_WAYS - 1 ? "at least " : "") +
                    std::to_string(more) + (more == 1 ? " more way)" : " more ways)");
  }
  return lines;
}

void IncludeChains::find_includes() {
  for (const Reference& reference : notes_.named) {
    const auto from = paths_.find(reference.place.file);
    if (reference.kind == DocumentKind::FRAMEWORK && from != paths_.end()) {
      includes_.emplace(reference.path, Include{&reference, from->second});
    }
  }
}

/// The include by which a run reaches the definition first; null when it is asked for first.
const IncludeChains::Include* IncludeChains::first_include(const std::string& path) const {
  const auto found = includes_.find(path);
  return found != includes_.end() && order_.at(found->second.from) < order_.at(path)
             ? &found->second
             : nullptr;
}

// The last of the ready nodes include and are not included: ways flow down from there.
void IncludeChains::count_ways() {
  for (const auto& root : config_.fwds->roots) {
    add_ways(ways_[root->fwd->path], 1);
  }
  const auto& nodes = config_.fwds->ready_nodes;
  for (auto node = nodes.rbegin(); node != nodes.rend(); ++node) {
    const std::size_t ways = ways_[(*node)->fwd->path];
    for (const auto& group : (*node)->groups) {
      for (const auto& member : group) {
        add_ways(ways_[member->fwd->path], ways);
      }
    }
  }
}

void IncludeChains::name_origins() {
  for (const std::string& name : config_.fwds->names) {
    const RunNotes::Setting* request = request_of(name, notes_);
    const std::string path = framework_path(name, config_.root);
    origins_.emplace(
        path, written_path::framework_name(path) + (request == nullptr ? ", asked for by default"
                                                    : request->source.empty()
                                                        ? ", named at " + to_string(request->place)
                                                        : ", asked for on the command line"));
  }
}

}  // namespace qorn::inspect
