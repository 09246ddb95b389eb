#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <qorn/fs.h>

namespace qorn::fs {
namespace {

class FileDescriptor {
 public:
  explicit FileDescriptor(int fd) : fd_(fd) {}
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() {
    if (fd_ >= 0) {
      close(fd_);
    }
  }
  int get() const { return fd_; }

 private:
  int fd_;
};

/// Why a file of that status isn't read; empty when it may be.
std::string refusal(const struct stat& status, std::size_t most) {
  if (S_ISDIR(status.st_mode)) {
    return std::strerror(EISDIR);
  }
  if (!S_ISREG(status.st_mode)) {
    return "not a regular file";
  }
  if (static_cast<std::size_t>(status.st_size) > most) {
    return "the file is larger than " + std::to_string(most / 1'000'000) + " MB";
  }
  return {};
}

/// Reads until the end, whatever size the file was said to have.
bool read_all(int fd, std::size_t most, std::string& content) {
  std::size_t used = 0;
  while (used <= most) {
    if (used == content.size()) {
      content.resize(used + std::max<std::size_t>(used / 2, 4096));
    }
    const ssize_t count = read(fd, content.data() + used, content.size() - used);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count < 0) {
      return false;
    }
    if (count == 0) {
      content.resize(used);
      return true;
    }
    used += static_cast<std::size_t>(count);
  }
  errno = EFBIG;
  return false;
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

bool read_regular_file(const std::string& path, std::size_t most, std::string& content,
                       std::string& reason) {
  // Without O_NONBLOCK a pipe would be waited for before it can be refused.
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (file.get() < 0 || fstat(file.get(), &status) != 0) {
    reason = std::strerror(errno);
    return false;
  }
  reason = refusal(status, most);
  if (!reason.empty()) {
    return false;
  }
  // Parsers add some bytes of their own behind a document.
  constexpr std::size_t ROOM = 512;
  content.assign(static_cast<std::size_t>(status.st_size) + ROOM, '\0');
  if (!read_all(file.get(), most, content)) {
    reason = std::strerror(errno);
    return false;
  }
  return true;
}

}  // namespace qorn::fs
