#include <qorn/config.h>
#include <qorn/detail/notes.h>
#include <qorn/fwd.h>
#include <qorn/log/error_log.h>
#include <qorn/written_path.h>
#include <qorn/xml.h>

namespace qorn::xml {
namespace {

/// Hands the entry children of `node` over, with their texts; false, after one line and with none
/// handed over, when one is empty.
template <typename Take>
bool take_entries(const xmlNode* node, Take take) {
  const std::vector<xmlNode*> entries = get_child_nodes(node, "entry");
  for (const xmlNode* entry : entries) {
    if (content_of(entry).empty()) {
      log::ErrorLog(log::level::ERROR).stream()
          << to_string(place_of(node)) << ": an entry of the element <" << name_of(node)
          << "> is empty";
      return false;
    }
  }
  for (const xmlNode* entry : entries) {
    take(content_of(entry), entry);
  }
  return true;
}

}  // namespace

bool parse_pproc_tag(const xmlNode* node, std::vector<PostprocessorExtension>& extensions,
                     Config& config) {
  if (!take_entries(node, [&](const std::string& entry, const xmlNode* /*element*/) {
        extensions.push_back({entry});
      })) {
    return false;
  }
  if (const auto file = attribute_of(node, "config_file")) {
    const std::string path =
        written_path::postprocessor(*file, attribute_of(node, "config_path"), config.root);
    detail::note_named({DocumentKind::TABLE, *file, path, place_of(node)});
    config.postproc_config_files.push_back(path);
  }
  return true;
}

bool parse_aExt_tag(const xmlNode* node, Fwd& fwd, Config& /*config*/) {
  return take_entries(node, [&](const std::string& entry, const xmlNode* /*element*/) {
    fwd.analyzer_extensions.insert({entry});
  });
}

bool parse_msg_tag(const xmlNode* node, Fwd& fwd, Config& /*config*/) {
  return take_entries(node, [&](const std::string& entry, const xmlNode* /*element*/) {
    fwd.message_catalogs.push_back({entry});
  });
}

bool parse_msg_schema_tag(const xmlNode* node, Fwd& /*fwd*/, Config& config) {
  return take_entries(node, [&](const std::string& entry, const xmlNode* element) {
    const std::string path = written_path::message_schema(entry, config.root);
    detail::note_named({DocumentKind::MESSAGE_SCHEMA, entry, path, place_of(element)});
    config.message_schema_files.push_back(path);
  });
}

}  // namespace qorn::xml
