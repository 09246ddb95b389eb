#include <algorithm>

#include <qorn/document_kind.h>
#include <qorn/fs.h>
#include <qorn/str.h>
#include <qorn/written_path.h>

namespace qorn::written_path {
namespace {

constexpr std::string_view EXTENSION = ".xml";

std::string installed_framework(const std::string& name, const std::string& root) {
  return installed_place(DocumentKind::FRAMEWORK, root).append(name).append(EXTENSION);
}

/// A file in a directory that a document writes, else in the installed one of that kind.
std::string in_directory(const std::string& file, const std::optional<std::string>& directory,
                         DocumentKind kind, const std::string& root) {
  return str::wordexp(directory ? *directory + "/" + file : installed_place(kind, root) + file);
}

}  // namespace

std::string asked_framework(const std::string& name, const std::string& root) {
  if (name.size() == EXTENSION.size() || !name.ends_with(EXTENSION)) {
    return installed_framework(name, root);
  }
  return name.front() == '/' ? name : fs::abspath(".") + "/" + name;
}

std::string framework(const std::string& name, const std::string& base) {
  return fs::abspath(str::wordexp(name.at(0) == '/' ? name : base + "/" + name));
}

std::string framework_name(const std::string& name) {
  std::string bare = name.substr(name.rfind('/') + 1);
  const std::size_t extension = bare.rfind(EXTENSION);
  if (extension != std::string::npos) {
    bare.erase(extension, std::min(extension + 3, bare.size() - extension));
  }
  return bare;
}

std::string group_framework(const std::string& name, const std::string& root) {
  return fs::abspath(name.find(EXTENSION) != std::string::npos ? name
                                                               : installed_framework(name, root));
}

std::string provider(const std::string& name, const std::string& directory) {
  return fs::abspath((directory + "/" + name).append(EXTENSION));
}

std::string custom_providers(const std::string& file, const std::optional<std::string>& directory,
                             const std::string& root) {
  return in_directory(file, directory, DocumentKind::CUSTOM_PROVIDERS, root);
}

std::string knowledge_base(const std::string& file, const std::optional<std::string>& directory,
                           const std::string& root) {
  return directory ? str::wordexp(*directory) + file
                   : in_directory(file, directory, DocumentKind::KNOWLEDGE_BASE, root);
}

std::string postprocessor(const std::string& file, const std::optional<std::string>& directory,
                          const std::string& root) {
  return in_directory(file, directory, DocumentKind::TABLE, root);
}

std::string message_schema(const std::string& text, const std::string& root) {
  std::string expanded = str::wordexp(text);
  return expanded.starts_with('/')
             ? expanded
             : str::wordexp(installed_place(DocumentKind::MESSAGE_SCHEMA, root) + text);
}

std::string rule_file(const std::string& mod, const std::string& kb_path) {
  return str::wordexp(kb_path + "/" + mod);
}

std::string rule_directory(const std::string& kb_path) {
  return str::wordexp(kb_path);
}

std::string plain_file(const std::string& text) {
  return str::unescape_blanks(text);
}

}  // namespace qorn::written_path
