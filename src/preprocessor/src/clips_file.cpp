#include "clips_file.h"

#include <qorn/preproc/rule_file.h>
#include <qorn/str.h>

namespace qorn::preproc::clips_parser {

fs::FileText read_clips_file(const std::string& path) {
  constexpr fs::Readable CLIPS_FILE{fs::Readable::Kinds::REGULAR_FILES, 100'000'000,
                                    "larger than 100 MB"};
  fs::FileText file = fs::read_file(path, CLIPS_FILE);
  if (!file.was_read()) {
    file.text.resize(file.text.rfind('\n') + 1);
  }
  return file;
}

// The name starts two places behind the star, or behind the line's start without one. Double
// quotes stay in it.
std::optional<Load> find_load(std::string_view line) {
  if (!line.starts_with("(batch") && !line.starts_with("(load")) {
    return std::nullopt;
  }
  const std::size_t star = line.find("* ");
  const bool is_starred = star != std::string_view::npos;
  const std::size_t start = (is_starred ? star : 0) + 2;
  const std::size_t end = line.find(')');
  return Load{str::stripws(line.substr(start, end > start ? end - start : line.npos)), is_starred};
}

}  // namespace qorn::preproc::clips_parser
