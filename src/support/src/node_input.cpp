#include "node_input.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <qorn/node.h>
#include <qorn/str.h>

namespace qorn::node {
namespace {

constexpr std::size_t MOST_BYTES = std::size_t{512} << 20U;
constexpr std::size_t SMALLEST_BUFFER = std::size_t{64} << 10U;
constexpr std::size_t LONGEST_QUOTE = 80;  // bytes

struct Descriptor {
  explicit Descriptor(const std::string& path)
      : number(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number >= 0) {
      close(number);
    }
  }

  int number;
};

/// The size of a regular file, 0 where it isn't known. Never trusted: a file may grow.
std::size_t expected_size(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)
             ? static_cast<std::size_t>(status.st_size)
             : 0;
}

ssize_t read_some(int descriptor, char* buffer, std::size_t size) {
  ssize_t result = -1;
  do {
    result = read(descriptor, buffer, size);
  } while (result < 0 && errno == EINTR);
  return result;
}

bool fail(std::string& reason) {
  reason = std::generic_category().message(errno);
  return false;
}

}  // namespace

bool read_input(const std::string& path, std::string& content, std::string& reason) {
  const Descriptor file(path);
  if (file.number < 0) {
    return fail(reason);
  }
  std::size_t used = 0;
  std::size_t wanted = std::max(expected_size(file.number) + 1, SMALLEST_BUFFER);
  while (wanted <= MOST_BYTES + 1) {
    content.resize(wanted);
    const ssize_t got = read_some(file.number, content.data() + used, wanted - used);
    if (got < 0) {
      return fail(reason);
    }
    if (got == 0) {
      content.resize(used);
      return true;
    }
    used += static_cast<std::size_t>(got);
    if (used == wanted) {
      wanted = used > MOST_BYTES ? used + 1 : std::min(2 * used, MOST_BYTES + 1);
    }
  }
  reason = "expected at most 512 MiB, found more";
  return false;
}

std::string_view next_line(std::string_view& text) {
  const std::size_t end = std::min(text.find('\n'), text.size());
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return line;
}

std::string quoted(std::string_view piece) {
  const auto continues = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; };
  std::size_t end = std::min(piece.size(), LONGEST_QUOTE);
  while (end < piece.size() && end > LONGEST_QUOTE - 3 && continues(piece[end])) {
    --end;  // not inside a character of UTF-8
  }
  return "'" + str::printable(piece.substr(0, end)) + (end < piece.size() ? "...'" : "'");
}

std::string bad_host_name(std::string_view name) {
  return "expected a host name (labels of 1 to 63 letters, digits, '_' and inner '-', joined by "
         "'.', 253 characters at most), found " +
         quoted(name);
}

std::string too_many_hosts() {
  return "expected at most " + std::to_string(MOST_HOSTS / 1'000'000) +
         " million hosts in all, found more";
}

}  // namespace qorn::node
