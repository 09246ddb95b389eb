#include "provider_document.h"

#include <array>
#include <string_view>

#include <qorn/xml.h>

namespace qorn::preproc {
namespace {

constexpr std::array<std::string_view, 9> ELEMENTS = {
    "architecture", "command", "encoding", "max_nodes", "min_nodes",
    "nodelist",     "role",    "timeout",  "version"};

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

}  // namespace

const std::vector<ProviderDocument::Element>& ProviderDocument::of(const char* name) const {
  static const std::vector<Element> NONE;
  const auto found = elements.find(std::string_view(name));
  return found == elements.end() ? NONE : found->second;
}

std::shared_ptr<const ProviderDocument> read_provider_document(const std::string& file) {
  std::vector<xml::Fault> faults;
  const xml::DocumentPtr doc = xml::read_document(file, faults);
  xml::report(faults);
  if (doc == nullptr) {
    return nullptr;
  }
  auto document = std::make_shared<ProviderDocument>();
  const xmlNode* root = xml::root_of(doc);
  collect(root, *document);
  document->success_codes = xml::get_str_list(xml::get_child_node(root, "success_codes"), "entry");
  return document;
}

}  // namespace qorn::preproc
