#include "finding.h"

#include <algorithm>
#include <tuple>

namespace qorn::inspect {
namespace {

auto words_of(const Finding& finding) {
  return std::tie(finding.place.file, finding.place.line, finding.column, finding.message,
                  finding.kind);
}

bool comes_before(const Finding& a, const Finding& b) {
  return std::tuple(words_of(a), a.follow_up) < std::tuple(words_of(b), b.follow_up);
}

/// A faulty schema is a fault of every document that it is for.
bool is_about(const Finding& finding, const std::vector<std::string>& files) {
  return finding.kind == "schema" ||
         std::find(files.begin(), files.end(), finding.place.file) != files.end();
}

}  // namespace

Finding& Findings::add(FindingKind kind, const Place& place, std::string message) {
  return findings_.emplace_back(Finding{kind, place, 0, std::move(message), {}, false});
}

bool Findings::has_error(const std::string& file) const {
  return std::any_of(findings_.begin(), findings_.end(), [&](const Finding& finding) {
    return finding.place.file == file && finding.kind.is_error();
  });
}

void Findings::settle(const std::vector<std::string>& files) {
  std::erase_if(findings_, [&](const Finding& finding) {
    return !files.empty() && !is_about(finding, files);
  });
  std::stable_sort(findings_.begin(), findings_.end(), comes_before);
  findings_.erase(
      std::unique(findings_.begin(), findings_.end(),
                  [](const Finding& a, const Finding& b) { return words_of(a) == words_of(b); }),
      findings_.end());
}

Findings::Counts Findings::count() const {
  Counts counts;
  for (const Finding& finding : findings_) {
    ++(finding.follow_up         ? counts.follow_ups
       : finding.kind.is_error() ? counts.errors
                                 : counts.warnings);
  }
  return counts;
}

}  // namespace qorn::inspect
