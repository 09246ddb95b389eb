#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qorn::inspect {

/// The candidate that `word` is most likely a slip of: by the number of letters to insert, drop,
/// replace or swap, at most one for each three letters begun and never more than three; the first
/// of equally close ones. Empty when none is close, and for a word that is a candidate itself.
std::string closest_word(std::string_view word, const std::vector<std::string>& candidates);

/// "; did you mean 'WORD'?" for the closest candidate, empty when there is none.
std::string did_you_mean(std::string_view word, const std::vector<std::string>& candidates);

}  // namespace qorn::inspect
