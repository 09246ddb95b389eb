#include "provider_document.h"

#include <array>
#include <cerrno>
#include <string_view>

#include <unistd.h>

#include <qorn/xml.h>

namespace qorn::preproc {
namespace {

constexpr std::array<std::string_view, 9> ELEMENTS = {"architecture", "command",   "encoding",
                                                      "max_nodes",    "min_nodes", "nodelist",
                                                      "role",         "timeout",   "version"};

bool is_known(std::string_view name) {
  for (const std::string_view each : ELEMENTS) {
    if (each == name) {
      return true;
    }
  }
  return false;
}

ProviderDocument::Element to_element(const xmlNode* node) {
  ProviderDocument::Element element{xml::content_of(node), {}};
  for (const xmlAttr* each = node->properties; each != nullptr; each = each->next) {
    std::string value;
    xml::get_attr_value(each, value);
    element.attributes.emplace_back(xml::char_to_str(each->name), value);
  }
  return element;
}

/// Elements in a namespace are none of ours.
bool has_name(const xmlNode* node, std::string_view name) {
  return node->ns == nullptr && xml::name_of(node) == name;
}

// The parser bounds the depth of a document, and with it this recursion.
void collect(const xmlNode* parent, ProviderDocument& document) {
  const bool in_configuration = has_name(parent, "configuration");
  for (const xmlNode* child : xml::Elements(parent)) {
    const std::string_view name = xml::name_of(child);
    if (in_configuration && child->ns == nullptr && is_known(name)) {
      document.elements[std::string(name)].push_back(to_element(child));
    }
    collect(child, document);
  }
}

ProviderDocuments::Outcome read_once(const std::string& file) {
  ProviderDocuments::Outcome outcome;
  errno = 0;
  if (access(file.c_str(), R_OK) != 0) {
    outcome.access_error = errno;
    return outcome;
  }
  const xml::DocumentPtr doc = xml::read_document(file, outcome.faults);
  if (doc != nullptr) {
    const xmlNode* root = xml::root_of(doc);
    outcome.document.emplace();
    collect(root, *outcome.document);
    outcome.document->success_codes =
        xml::get_str_list(xml::get_child_node(root, "success_codes"), "entry");
  }
  return outcome;
}

}  // namespace

const std::vector<ProviderDocument::Element>& ProviderDocument::of(const char* name) const {
  static const std::vector<Element> NONE;
  const auto found = elements.find(std::string_view(name));
  return found == elements.end() ? NONE : found->second;
}

const ProviderDocuments::Outcome& ProviderDocuments::read(const std::string& file) {
  const auto [entry, is_new] = known_.try_emplace(file);
  Outcome& outcome = entry->second;
  if (is_new) {
    outcome = read_once(file);
  }
  xml::report(outcome.faults);
  return outcome;
}

}  // namespace qorn::preproc
