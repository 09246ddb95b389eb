#include "clips_file.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qorn::preproc::clips_parser {
namespace {

constexpr std::size_t MOST_BYTES = 100'000'000;

class Descriptor {
 public:
  explicit Descriptor(const std::string& path)
      : number(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number >= 0) {
      close(number);
    }
  }

  const int number;
};

/// Reads to the end of the file, which is said to have `expected` bytes. False: reading broke off,
/// or there are more than MOST_BYTES, which errno says as EFBIG.
bool read_all(int descriptor, std::size_t expected, std::string& text) {
  std::size_t used = 0;
  while (std::max(used, expected) <= MOST_BYTES) {
    if (used == text.size()) {
      text.resize(used == 0 ? expected + 1 : 2 * used);
    }
    const ssize_t got = read(descriptor, text.data() + used, text.size() - used);
    if (got < 0 && errno == EINTR) {
      continue;
    }
    if (got <= 0) {
      text.resize(used);
      return got == 0;
    }
    used += static_cast<std::size_t>(got);
  }
  errno = EFBIG;
  return false;
}

}  // namespace

ClipsFile read_clips_file(const std::string& path) {
  ClipsFile file;
  const Descriptor descriptor(path);
  if (descriptor.number < 0) {
    return file;
  }
  file.state = ClipsFile::State::FAILED;
  struct stat status {};
  if (fstat(descriptor.number, &status) != 0 || !S_ISREG(status.st_mode)) {
    return file;
  }
  file.id = {status.st_dev, status.st_ino};
  if (read_all(descriptor.number, static_cast<std::size_t>(status.st_size), file.text)) {
    file.state = ClipsFile::State::READ;
  } else if (errno == EFBIG) {
    file.reason = "larger than 100 MB";
    file.text.clear();
  } else {
    file.text.resize(file.text.rfind('\n') + 1);
  }
  return file;
}

bool Lines::next(std::string_view& line) {
  if (position_ >= text_.size()) {
    return false;
  }
  const std::size_t end = std::min(text_.find('\n', position_), text_.size());
  line = text_.substr(position_, end - position_);
  position_ = end + 1;
  return true;
}

}  // namespace qorn::preproc::clips_parser
