#include "installation.h"

#include <algorithm>
#include <filesystem>
#include <string_view>

#include <qorn/xml.h>

namespace qorn::inspect {
namespace {

using enum DocumentKind;

namespace filesystem = std::filesystem;

/// Beside those of the kinds: files below them are of that kind, whatever else may stand there.
constexpr std::string_view CUSTOM_PLACES[] = {"/etc/providers/custom/", "/provider/"};

/// Documents of four kinds are called configuration: what stands below tells them apart.
DocumentKind kind_of_configuration(const xmlNode* root) {
  if (xml::get_child_node(root, "framework_definition") != nullptr) {
    return FRAMEWORK;
  }
  const xmlNode* collector = xml::get_child_node(root, "collector");
  if (xml::get_child_node(collector, "provider") != nullptr) {
    return CUSTOM_PROVIDERS;
  }
  return xml::get_child_node(root, "command") != nullptr ? PROVIDER : MAIN;
}

DocumentKind kind_of_content(const xml::DocumentPtr& doc) {
  const xmlNode* root = xml::root_of(doc);
  if (root == nullptr) {
    return UNKNOWN;
  }
  if (xml::name_of(root) == "configuration") {
    return kind_of_configuration(root);
  }
  const auto* row =
      std::find_if(std::begin(DOCUMENT_KINDS), std::end(DOCUMENT_KINDS),
                   [&](const auto& each) { return each.root_element == xml::name_of(root); });
  return row == std::end(DOCUMENT_KINDS) ? UNKNOWN : row->kind;
}

bool lies_at(std::string_view below, std::string_view place) {
  return place.ends_with('/') ? below.starts_with(place) : below == place;
}

/// The kinds of documents that stand at a place below the root, the one that doesn't depend on
/// their content first.
std::vector<DocumentKind> kinds_at(std::string_view below) {
  if (std::any_of(std::begin(CUSTOM_PLACES), std::end(CUSTOM_PLACES),
                  [&](std::string_view place) { return lies_at(below, place); })) {
    return {CUSTOM_PROVIDERS};
  }
  std::vector<DocumentKind> kinds;
  for (const DocumentKindRow& row : DOCUMENT_KINDS) {
    if (*row.root_element != '\0' && *row.place != '\0' && lies_at(below, row.place)) {
      kinds.push_back(row.kind);
    }
  }
  return kinds;
}

void add_files(const std::string& directory, const char* extension,
               std::vector<std::string>& files) {
  std::error_code ignored;
  for (filesystem::recursive_directory_iterator it(directory, ignored), end; it != end;
       it.increment(ignored)) {
    if (it->path().extension() == extension && it->is_regular_file(ignored)) {
      files.push_back(it->path());
    }
  }
}

}  // namespace

DocumentKind kind_of(const std::string& path, const std::string& root,
                     const xml::DocumentPtr& doc) {
  if (path.ends_with(".clp")) {
    return RULE_FILE;
  }
  const DocumentKind content = kind_of_content(doc);
  const std::vector<DocumentKind> kinds = path.starts_with(root + "/")
                                              ? kinds_at(std::string_view(path).substr(root.size()))
                                              : std::vector<DocumentKind>();
  return kinds.empty() || std::find(kinds.begin(), kinds.end(), content) != kinds.end()
             ? content
             : kinds.front();
}

bool is_file(const std::string& path) {
  std::error_code ignored;
  return filesystem::is_regular_file(path, ignored);
}

std::vector<std::string> installed_files(const std::string& root) {
  std::vector<std::string> files;
  for (const char* directory : {"/etc", "/kb", "/provider"}) {
    add_files(root + directory, ".xml", files);
  }
  add_files(root + "/kb", ".clp", files);
  std::sort(files.begin(), files.end());
  return files;
}

std::string short_path(const std::string& path, const std::string& root) {
  return path.starts_with(root + "/") ? path.substr(root.size() + 1) : path;
}

}  // namespace qorn::inspect
