#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <qorn/detail/notes.h>
#include <qorn/fs.h>

namespace qorn::fs {
namespace {

/// Parsers add some bytes of their own behind a document.
constexpr std::size_t ROOM = 512;

/// Why what has that mode isn't read; empty when it may be.
std::string refusal(mode_t mode, Readable::Kinds kinds) {
  if (S_ISDIR(mode)) {
    return std::strerror(EISDIR);
  }
  return S_ISREG(mode) || kinds == Readable::Kinds::ALL ? "" : "not a regular file";
}

ssize_t read_some(int descriptor, char* buffer, std::size_t size) {
  ssize_t result = -1;
  do {
    result = read(descriptor, buffer, size);
  } while (result < 0 && errno == EINTR);
  return result;
}

/// Reads to the end. `size` is what a file is said to have, which may grow; 0 for a pipe.
FileText::State read_all(int descriptor, std::size_t size, std::size_t most, std::string& text) {
  std::size_t used = 0;
  while (std::max(used, size) <= most) {
    if (used == text.size()) {
      text.resize(used == 0 ? size + ROOM : used + std::min(used, most - used) + 1);
    }
    const ssize_t got = read_some(descriptor, text.data() + used, text.size() - used);
    if (got <= 0) {
      text.resize(used);
      return got == 0 ? FileText::State::READ : FileText::State::NOT_READ;
    }
    used += static_cast<std::size_t>(got);
  }
  text.clear();
  return FileText::State::TOO_LARGE;
}

/// Whether an absolute path has nothing to remove, as most have.
bool is_normal(std::string_view path) {
  return path.size() > 1 && path.front() == '/' && path.back() != '/' &&
         path.find("//") == std::string_view::npos && path.find("/.") == std::string_view::npos;
}

}  // namespace

std::string abspath(const std::string& path) {
  if (is_normal(path)) {
    return path;
  }
  std::string absolute = (std::filesystem::current_path() / path).lexically_normal();
  // A lexically normal path may begin with two slashes or end with one.
  const std::size_t first = absolute.find_first_not_of('/');
  if (first == std::string::npos) {
    return "/";
  }
  absolute.erase(0, first - 1);
  if (absolute.back() == '/') {
    absolute.pop_back();
  }
  return absolute;
}

std::vector<std::string> list_files(const std::string& directory) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    std::error_code ignored;  // an entry that can't be looked at is no regular file
    if (entry.is_regular_file(ignored)) {
      names.push_back(entry.path().filename());
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

FileText read_file(const std::string& path, const Readable& what) {
  // Without O_NONBLOCK a pipe would be waited for before it can be refused.
  const int waiting = what.kinds == Readable::Kinds::ALL ? 0 : O_NONBLOCK;
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | waiting));
  if (file.get() >= 0) {
    detail::note_opened(path);
  }
  return read_file(file, what);
}

FileText read_file(const Descriptor& file, const Readable& what) {
  using State = FileText::State;
  FileText result;
  result.state = file.get() < 0 ? State::NOT_OPENED : State::NOT_READ;
  struct stat status {};
  if (file.get() < 0 || fstat(file.get(), &status) != 0) {
    result.reason = std::strerror(errno);
    return result;
  }
  result.id = {status.st_dev, status.st_ino};
  result.reason = refusal(status.st_mode, what.kinds);
  if (!result.reason.empty()) {
    return result;
  }
  const auto size = static_cast<std::size_t>(S_ISREG(status.st_mode) ? status.st_size : 0);
  result.state = read_all(file.get(), size, what.most_bytes, result.text);
  if (result.state != State::READ) {
    result.reason = result.state == State::TOO_LARGE ? what.too_large : std::strerror(errno);
  }
  return result;
}

}  // namespace qorn::fs
