#include "suggestion.h"

#include <algorithm>

#include <qorn/str.h>

namespace qorn::inspect {
namespace {

constexpr std::size_t LONGEST_WORD = 64;
constexpr std::size_t MOST_EDITS = 3;

/// The number of letters to insert, drop, replace or swap with their neighbour.
std::size_t edit_distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> before_last;
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> current(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) {
    last[j] = j;
  }
  for (std::size_t i = 1; i <= a.size(); ++i) {
    current[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      current[j] = std::min({replaced, last[j] + 1, current[j - 1] + 1});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        current[j] = std::min(current[j], before_last[j - 2] + 1);
      }
    }
    before_last = last;
    last.swap(current);
  }
  return last[b.size()];
}

}  // namespace

std::string closest_word(std::string_view word, const std::vector<std::string>& candidates) {
  if (word.size() > LONGEST_WORD) {
    return {};
  }
  const std::string lower = str::lower(word);
  std::size_t least = std::min((word.size() + 2) / 3, MOST_EDITS) + 1;
  std::string closest;
  for (const std::string& candidate : candidates) {
    if (candidate == word) {
      return {};
    }
    if (candidate.size() > word.size() + MOST_EDITS ||
        word.size() > candidate.size() + MOST_EDITS) {
      continue;
    }
    const std::size_t distance = edit_distance(lower, str::lower(candidate));
    if (distance < least && distance < word.size()) {
      least = distance;
      closest = candidate;
    }
  }
  return closest;
}

std::string did_you_mean(std::string_view word, const std::vector<std::string>& candidates) {
  const std::string closest = closest_word(word, candidates);
  return closest.empty() ? "" : "; did you mean '" + str::printable(closest) + "'?";
}

}  // namespace qorn::inspect
