#include <qorn/config.h>
#include <qorn/fwd.h>
#include <qorn/log/error_log.h>
#include <qorn/str.h>
#include <qorn/xml.h>

namespace qorn::xml {
namespace {

/// The texts of the entry children of `node`; false, after one line, when one is empty.
bool read_entries(const xmlNode* node, std::vector<std::string>& entries) {
  entries = get_str_list(node, "entry");
  for (const std::string& entry : entries) {
    if (entry.empty()) {
      log::ErrorLog(log::level::ERROR).stream()
          << to_string(place_of(node)) << ": an entry of the element <" << name_of(node)
          << "> is empty";
      return false;
    }
  }
  return true;
}

}  // namespace

bool parse_pproc_tag(const xmlNode* node, std::vector<PostprocessorExtension>& extensions,
                     Config& config) {
  std::vector<std::string> entries;
  if (!read_entries(node, entries)) {
    return false;
  }
  for (std::string& entry : entries) {
    extensions.push_back({std::move(entry)});
  }
  std::string file;
  if (get_attr(node, "config_file", file)) {
    std::string directory = config.root + "/etc/postprocessor";
    get_attr(node, "config_path", directory);
    config.postproc_config_files.push_back(str::wordexp(directory + "/" + file));
  }
  return true;
}

bool parse_aExt_tag(const xmlNode* node, Fwd& fwd, Config& /*config*/) {
  std::vector<std::string> entries;
  if (!read_entries(node, entries)) {
    return false;
  }
  for (std::string& entry : entries) {
    fwd.analyzer_extensions.insert({std::move(entry)});
  }
  return true;
}

bool parse_msg_tag(const xmlNode* node, Fwd& fwd, Config& /*config*/) {
  std::vector<std::string> entries;
  if (!read_entries(node, entries)) {
    return false;
  }
  for (std::string& entry : entries) {
    fwd.message_catalogs.push_back({std::move(entry)});
  }
  return true;
}

bool parse_msg_schema_tag(const xmlNode* node, Fwd& /*fwd*/, Config& config) {
  std::vector<std::string> entries;
  if (!read_entries(node, entries)) {
    return false;
  }
  for (const std::string& entry : entries) {
    // What the text begins with once it is expanded decides, so that "~" and variables work.
    const std::string expanded = str::wordexp(entry);
    config.message_schema_files.push_back(
        expanded.rfind('/', 0) == 0 ? expanded : str::wordexp(config.root + "/kb/data/" + entry));
  }
  return true;
}

}  // namespace qorn::xml
