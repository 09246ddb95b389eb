#include <algorithm>
#include <exception>
#include <stdexcept>

#include <qorn/detail/notes.h>
#include <qorn/document_kind.h>
#include <qorn/log/error_log.h>
#include <qorn/preproc/clips_parser.h>
#include <qorn/preproc/config.h>
#include <qorn/preproc/fwd_parser.h>
#include <qorn/str.h>
#include <qorn/written_path.h>
#include <qorn/xml.h>

#include "rule_chain.h"

namespace qorn::preproc {
namespace {

constexpr const char* DEFAULT_RULE_FILE = "health.clp";

// Directories below the installation root for what a definition doesn't say.
constexpr const char* KB_PATH = "/kb";
constexpr const char* PROVIDER_PATH = "/etc/providers";
constexpr const char* PROVIDER_AUX_PATH = "/provider/share";

/// Reads a text of a definition; 1, with a line at level 3, when that throws.
int read_text(const xmlNode* node, const char* name, std::string& text) {
  try {
    text = xml::get_str(node, name, "");
  } catch (const std::exception&) {
    log::ErrorLog(log::level::ERROR).stream()
        << "Failed to parse " << name << " tag from framework";
    return 1;
  }
  return 0;
}

bool is_listed(const std::string& mod, const Fwd& fwd) {
  return std::find(fwd.kb_mods.begin(), fwd.kb_mods.end(), mod) != fwd.kb_mods.end();
}

/// Notes the file that the first of `mods` leads to, with those behind it that nobody scans.
void note_unscanned(const std::string& path, const std::vector<const xmlNode*>& mods,
                    const Fwd& fwd) {
  RunNotes::PassedOver passed_over{
      RunNotes::PassedOver::Kind::RULE_FILES, path, {}, fwd.name, xml::place_of(mods.front()), {}};
  for (const xmlNode* mod : mods) {
    if (std::string text = xml::content_of(mod); !is_listed(text, fwd)) {
      passed_over.together.push_back(std::move(text));
    }
  }
  detail::note_passed_over(std::move(passed_over));
}

}  // namespace

void FWDParser::set_default_paths(const std::string& fwd_xsd_path, const std::string& analyzer,
                                  const std::string& kb, const std::string& provider,
                                  const std::string& provider_aux, const std::string& base) {
  fwd_xsd = fwd_xsd_path;
  analyzer_path = analyzer;
  kb_path = kb;
  provider_path = provider;
  provider_aux_path = provider_aux;
  fwd_base = base;
}

void FWDParser::update_defaults(const Config& config) {
  set_default_paths(schema_path(DocumentKind::FRAMEWORK, config.root),
                    config.root + "/analyzer/qorn64/cpp", config.root + KB_PATH,
                    config.root + PROVIDER_PATH, config.root + PROVIDER_AUX_PATH,
                    config.root + "/etc");
}

int FWDParser::compute_name_and_path(Fwd& fwd) {
  fwd.path = written_path::framework(fwd.name, fwd_base);
  fwd.name = written_path::framework_name(fwd.name);
  return 0;
}

void FWDParser::set_fwd_paths(const Config& config, Fwd& fwd) {
  const auto fill = [&](std::string& directory, const char* usual) {
    if (directory.empty()) {
      directory = config.root + usual;
    }
  };
  fill(fwd.kb_path, KB_PATH);
  fill(fwd.provider_path, PROVIDER_PATH);
  fill(fwd.provider_aux_path, PROVIDER_AUX_PATH);
  for (std::string& mod : fwd.kb_mods) {
    mod = str::stripws(mod);
    mod = str::wordexp(mod.empty() ? DEFAULT_RULE_FILE : mod);
    if (mod.empty()) {
      throw std::out_of_range(fwd.path + ": a <mod> of <kb_mods> expands to nothing");
    }
    if (mod.front() != '/') {
      mod.insert(0, fwd.kb_path + "/");
    }
  }
}

int FWDParser::parse_tag_provider(xmlNode* node, Fwd& fwd, Config& config) {
  xmlNode* providers = xml::get_child_node(node, "providers");
  std::string custom_file;
  if (xml::get_attr(providers, "config_file", custom_file) && !claim_custom_providers(config)) {
    return 1;
  }
  if (providers != nullptr && !parse_provider_tag(providers, fwd, config)) {
    return 1;
  }
  return 0;
}

int FWDParser::parse_tag_kb_mods(xmlNode* node, Fwd& fwd, Config& config) {
  const xmlNode* kb_mods = xml::get_child_node(node, "kb_mods");
  if (kb_mods == nullptr) {
    return 0;
  }
  if (const auto file = xml::attribute_of(kb_mods, "config_file")) {
    const std::string path =
        written_path::knowledge_base(*file, xml::attribute_of(kb_mods, "config_path"), config.root);
    log::debug("KB config XML: ", path);
    detail::note_named({DocumentKind::KNOWLEDGE_BASE, *file, path, xml::place_of(kb_mods)});
    config.kb_config_files.push_back(path);
  }
  const std::string directory = written_path::rule_directory(fwd.kb_path);
  const std::vector<xmlNode*> mods = xml::get_child_nodes(kb_mods, "mod");
  for (auto each = mods.begin(); each != mods.end(); ++each) {
    const std::string mod = xml::content_of(*each);
    if (is_listed(mod, fwd)) {
      continue;
    }
    fwd.kb_mods.push_back(mod);
    if (str::stripws(mod).empty()) {
      continue;  // the directory that it would lead to is nobody's rule file
    }
    const std::string path = written_path::rule_file(mod, fwd.kb_path);
    detail::note_named(DocumentKind::RULE_FILE, path, [&] {
      return Reference{DocumentKind::RULE_FILE, mod, path, xml::place_of(*each)};
    });
    const auto [is_whole, has_rule] = clips_parser::scan_chain(path, fwd.rules, config, directory);
    if (!is_whole) {
      note_unscanned(path, {each, mods.end()}, fwd);
      return 1;
    }
    if (!has_rule) {
      detail::note_passed_over(
          {RunNotes::PassedOver::Kind::SILENT_RULES, path, {}, fwd.name, xml::place_of(*each), {}});
    }
  }
  return 0;
}

int FWDParser::parse_clips_rules(const std::string& file, std::set<Rule>& rules, Config& config,
                                 std::string kb_dir) {
  return clips_parser::parse_clips_rules(file, rules, config, kb_dir);
}

int FWDParser::parse_tag_analyze_ext(xmlNode* node, Fwd& fwd, xmlDoc* /*doc*/, Config& config) {
  const xmlNode* child = xml::get_child_node(node, "analyzer_extension");
  return child == nullptr || xml::parse_aExt_tag(child, fwd, config) ? 0 : 1;
}

int FWDParser::parse_tag_postproc_ext(xmlNode* node, Fwd& fwd, xmlDoc* /*doc*/, Config& config) {
  const xmlNode* child = xml::get_child_node(node, "postproc_extensions");
  if (child == nullptr || xml::parse_pproc_tag(child, fwd.postproc_extensions, config)) {
    return 0;
  }
  log::ErrorLog(log::level::ERROR).stream()
      << "Failed to parse postproc_extensions tag from framework";
  return 1;
}

int FWDParser::parse_tag_mesg_catalogs(xmlNode* node, Fwd& fwd, xmlDoc* /*doc*/, Config& config) {
  const xmlNode* child = xml::get_child_node(node, "message_catalogs");
  return child == nullptr || xml::parse_msg_tag(child, fwd, config) ? 0 : 1;
}

int FWDParser::parse_tag_mesg_schemas(xmlNode* node, Fwd& fwd, xmlDoc* /*doc*/, Config& config) {
  const xmlNode* child = xml::get_child_node(node, "message_schemas");
  return child == nullptr || xml::parse_msg_schema_tag(child, fwd, config) ? 0 : 1;
}

int FWDParser::parse_tag_description(xmlNode* node, Fwd& fwd) {
  return read_text(node, "fwd_desc", fwd.description);
}

int FWDParser::parse_tag_custom_result(xmlNode* node, Fwd& fwd) {
  return read_text(node, "custom_result", fwd.custom_result);
}

}  // namespace qorn::preproc
