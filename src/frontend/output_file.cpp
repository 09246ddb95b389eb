#include "output_file.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <qorn/fs/descriptor.h>
#include <qorn/str.h>

#include "descriptor_buffer.h"

namespace qorn::frontend {
namespace {

constexpr int MOST_LINKS = 40;  // as the system itself follows

[[noreturn]] void fail(const std::string& name, int error) {
  throw std::runtime_error("Could not write " + str::printable(name) + ": " + std::strerror(error));
}

/// The descriptor that opening `name` gave. Throws when it gave none.
int opened(int descriptor, const std::string& name) {
  if (descriptor < 0) {
    fail(name, errno);
  }
  return descriptor;
}

/// The name of a temporary file, removed with the object, and when the process exits before.
class TemporaryName {
 public:
  explicit TemporaryName(const std::filesystem::path& directory)
      : name_((directory / ".qorn-record.XXXXXX").string()) {
    static const int registered = std::atexit([] { remove(current); });
    static_cast<void>(registered);
    current = name_.c_str();
  }
  TemporaryName(const TemporaryName&) = delete;
  TemporaryName& operator=(const TemporaryName&) = delete;
  ~TemporaryName() {
    remove(current);
    current = nullptr;
  }

  /// Creates the file under a name that isn't taken; negative when that fails.
  int create() { return mkostemp(name_.data(), O_CLOEXEC); }
  const char* get() const { return name_.c_str(); }

 private:
  static void remove(const char* name) {
    if (name != nullptr) {
      static_cast<void>(unlink(name));
    }
  }

  static const char* current;
  std::string name_;
};

const char* TemporaryName::current = nullptr;

/// The place that a rename must take for `path` to have the new content.
std::filesystem::path follow_links(std::filesystem::path path) {
  std::error_code no_link;
  for (int i = 0; i < MOST_LINKS; ++i) {
    const std::filesystem::path target = std::filesystem::read_symlink(path, no_link);
    if (no_link) {
      return path;
    }
    path = path.parent_path() / target;
  }
  fail(path.string(), ELOOP);
}

mode_t mode_of_new_files() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

/// Gives a new file the owner and the permissions of the one whose place it takes.
bool take_over(int descriptor, const struct stat* old_file) {
  if (old_file == nullptr) {
    return fchmod(descriptor, mode_of_new_files()) == 0;
  }
  // Only root can; for anybody else the file changes its owner.
  static_cast<void>(!fchown(descriptor, old_file->st_uid, old_file->st_gid));
  return fchmod(descriptor, old_file->st_mode & 0777) == 0;
}

void write_and_rename(const std::string& path, const struct stat* old_file,
                      const std::function<void(std::ostream&)>& write) {
  if (old_file != nullptr && access(path.c_str(), W_OK) != 0) {
    fail(path, errno);
  }
  const std::filesystem::path place = follow_links(path);
  TemporaryName temporary(place.parent_path());
  fs::Descriptor file(opened(temporary.create(), path));
  write_descriptor(file.get(), path, write);
  if (!take_over(file.get(), old_file) || !file.close() ||
      rename(temporary.get(), place.c_str()) != 0) {
    fail(path, errno);
  }
}

}  // namespace

void write_descriptor(int descriptor, const std::string& name,
                      const std::function<void(std::ostream&)>& write) {
  DescriptorBuffer buffer(descriptor);
  std::ostream out(&buffer);
  write(out);
  out.flush();
  if (buffer.error() != 0) {
    fail(name, buffer.error());
  }
}

void replace_file(const std::string& path, const std::function<void(std::ostream&)>& write) {
  struct stat status {};
  const bool exists = stat(path.c_str(), &status) == 0;
  if (!exists && errno != ENOENT) {
    fail(path, errno);
  }
  if (!exists || S_ISREG(status.st_mode)) {
    write_and_rename(path, exists ? &status : nullptr, write);
    return;
  }
  fs::Descriptor file(opened(open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY), path));
  write_descriptor(file.get(), path, write);
  if (!file.close()) {
    fail(path, errno);
  }
}

}  // namespace qorn::frontend
