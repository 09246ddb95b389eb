#include <cstdlib>
#include <filesystem>
#include <string>

#include <dlfcn.h>

#include <qorn/detail/notes.h>
#include <qorn/document_kind.h>
#include <qorn/fs.h>
#include <qorn/node.h>

namespace qorn::node {
namespace {

/// The directory above the one that holds this library; empty when it isn't known.
std::string directory_above_library() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<const void*>(&get_default_path), &info) == 0 ||
      info.dli_fname == nullptr) {
    return {};
  }
  return std::filesystem::path(fs::abspath(info.dli_fname)).parent_path().parent_path();
}

}  // namespace

std::string get_default_path() {
  const char* root = std::getenv("QORN_ROOT");
  if (root != nullptr && *root != '\0') {
    detail::note_setting({"root", "environment QORN_ROOT", {}, root});
    return fs::abspath(root);
  }
  std::string above = directory_above_library();
  std::error_code ignored;
  if (!above.empty() &&
      std::filesystem::exists(installed_place(DocumentKind::MAIN, above), ignored)) {
    return above;
  }
  return QORN_PREFIX;
}

}  // namespace qorn::node
