#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <utility>

#include <qorn/detail/notes.h>
#include <qorn/log/error_log.h>
#include <qorn/preproc/config_parser.h>
#include <qorn/str.h>
#include <qorn/xml.h>

#include "postprocessor_documents.h"

namespace qorn {
namespace {

using Reports = std::map<std::string, templates::Reports_t>;

/// The text of a message_id element; false, with a line at level 3 and `message_id` left alone,
/// when it is empty.
bool get_message_id(const xmlNode* node, std::string& message_id) {
  std::string text;
  if (xml::get_txt(node, text)) {
    message_id = std::move(text);
    return true;
  }
  log::ErrorLog(log::level::ERROR).stream() << "XML validation failed: <message_id> tag "
                                            << "cannot be empty";
  return false;
}

/// The report's own columns and message id apply to every variant, behind what it names itself.
void complete_variants(templates::Reports_t& report, const templates::Reports_kb_t& plain) {
  if (report.variants.empty()) {
    report.variants.push_back(plain);
    return;
  }
  for (templates::Reports_kb_t& variant : report.variants) {
    if (variant.message_id.empty()) {
      variant.message_id = plain.message_id;
    }
    variant.columns.insert(variant.columns.end(), plain.columns.begin(), plain.columns.end());
  }
}

bool parse_report(const xmlNode* node, templates::Reports_t& report) {
  templates::Reports_kb_t plain;
  for (xmlNode* item : xml::Elements(node)) {
    const std::string_view tag = xml::name_of(item);
    if (tag == "constraints") {
      templates::Reports_kb_t variant;
      if (parse_constraints(item, variant) == 0) {
        report.variants.push_back(variant);
      }
    } else if (tag == "message_id") {
      if (!get_message_id(item, plain.message_id)) {
        return false;
      }
    } else {
      plain.columns.emplace_back(tag);
    }
  }
  complete_variants(report, plain);
  return true;
}

bool parse_reports(const xmlNode* root, Reports& reports) {
  for (const xmlNode* node : xml::Elements(root)) {
    templates::Reports_t report;
    if (!parse_report(node, report)) {
      return false;
    }
    reports[std::string(xml::name_of(node))] = report;
  }
  return true;
}

}  // namespace

int parse_constraints(xmlNode* node, templates::Reports_kb_t& variant) {
  if (node == nullptr) {
    return 1;
  }
  std::map<std::string, std::string> attributes;  // sorted: so the constraints come
  for (const xmlAttr* each = node->properties; each != nullptr; each = each->next) {
    std::string value;
    if (xml::get_attr_value(each, value)) {
      attributes[xml::char_to_str(each->name)] = value;
    }
  }
  for (const auto& [name, value] : attributes) {
    variant.constraints.emplace_back(name, std::make_tuple(value, "", ""));
  }
  for (const xmlNode* child : xml::Elements(node)) {
    if (xml::name_of(child) != "message_id") {
      variant.columns.emplace_back(xml::name_of(child));
    } else if (!get_message_id(child, variant.message_id)) {
      return 1;
    }
  }
  return xml::get_num_element_children(node) == 0 ? 1 : 0;
}

namespace preproc {
namespace {

/// Reports the faults of a document as a report, behind those that it had as a table; those of the
/// other documents of the list are theirs to answer for.
void report_faults(const std::string& file, const std::vector<xml::Fault>& table_faults,
                   const std::vector<xml::Fault>& faults, const Config& config) {
  std::set<std::string> others;
  for (const std::string& path : config.postproc_config_files) {
    others.insert(str::unescape_blanks(path));
  }
  others.erase(file);
  std::vector<xml::Fault> all;
  std::copy_if(table_faults.begin(), table_faults.end(), std::back_inserter(all),
               [&](const xml::Fault& fault) { return others.count(fault.file) == 0; });
  all.insert(all.end(), faults.begin(), faults.end());
  xml::report(all);
}

}  // namespace

int ConfigParser::parse_postproc_reports_config(Config& config, const std::string& xsd) {
  return read_postproc_reports(config, xsd, {});
}

int read_postproc_reports(Config& config, const std::string& xsd,
                          const std::vector<xml::Fault>& table_faults) {
  for (const std::string& path : config.postproc_config_files) {
    log::ErrorLog(log::level::DEBUG).stream() << "Postprocessor config file: " << path;
    std::vector<xml::Fault> faults;
    const xml::DocumentPtr doc = xml::read_valid_document(path, xsd, faults);
    if (doc == nullptr) {
      report_faults(str::unescape_blanks(path), table_faults, faults, config);
      log::ErrorLog(log::level::ERROR).stream() << "Failed to open and validate xml " << path;
      return 1;
    }
    Reports reports;
    if (!parse_reports(xml::root_of(doc), reports)) {
      return 1;
    }
    config.postproc_reports = std::move(reports);  // not merged
  }
  return 0;
}

void pass_over_reports(const Config& config, const std::string& xsd,
                       std::vector<xml::Fault>& faults) {
  for (const std::string& path : config.postproc_config_files) {
    const std::string file = str::unescape_blanks(path);
    const auto is_about = [&](const xml::Fault& fault) { return fault.file == file; };
    std::vector<xml::Fault> ignored;
    if (std::any_of(faults.begin(), faults.end(), is_about) &&
        xml::read_valid_document(path, xsd, ignored) != nullptr) {
      std::erase_if(faults, is_about);
      detail::note_passed_over({RunNotes::PassedOver::Kind::REPORT, file, {}, {}, {}, {}});
    }
  }
}

}  // namespace preproc
}  // namespace qorn
