#include <algorithm>
#include <new>
#include <stdexcept>
#include <utility>

#include <libxml/parser.h>

#include <qorn/str.h>
#include <qorn/xml.h>

namespace qorn::xml {
namespace {

struct TextDeleter {
  void operator()(xmlChar* text) const { xmlFree(text); }
};
using TextPtr = std::unique_ptr<xmlChar, TextDeleter>;

}  // namespace

xmlNode* root_of(const DocumentPtr& doc) {
  return xmlDocGetRootElement(doc.get());
}

std::string char_to_str(const xmlChar* text) {
  return text == nullptr ? std::string() : reinterpret_cast<const char*>(text);
}

bool char_cmp_str(const xmlChar* xml_text, std::string_view text) {
  return xml_text != nullptr && reinterpret_cast<const char*>(xml_text) == text;
}

std::string_view name_of(const xmlNode* node) {
  return reinterpret_cast<const char*>(node->name);
}

std::string content_of(const xmlNode* node) {
  std::string text;
  get_txt(node, text);
  return text;
}

Place place_of(const xmlNode* node) {
  return {node->doc == nullptr ? "" : char_to_str(node->doc->URL),
          std::max(xmlGetLineNo(node), 0L)};
}

xmlNode* get_child_node(const xmlNode* node, std::string_view name) {
  for (xmlNode* child : Elements(node)) {
    if (name_of(child) == name) {
      return child;
    }
  }
  return nullptr;
}

std::vector<xmlNode*> get_child_nodes(const xmlNode* node, std::string_view name) {
  std::vector<xmlNode*> children;
  for (xmlNode* child : Elements(node)) {
    if (name_of(child) == name) {
      children.push_back(child);
    }
  }
  return children;
}

int get_num_element_children(const xmlNode* node) {
  int count = 0;
  for ([[maybe_unused]] const xmlNode* child : Elements(node)) {
    ++count;
  }
  return count;
}

std::string get_str(const xmlNode* node, std::string_view name, const std::string& default_text) {
  const xmlNode* child = get_child_node(node, name);
  return child == nullptr ? default_text : content_of(child);
}

std::vector<std::string> get_str_list(const xmlNode* node, std::string_view name) {
  std::vector<std::string> texts;
  for (const xmlNode* child : Elements(node)) {
    if (name_of(child) == name) {
      texts.push_back(content_of(child));
    }
  }
  return texts;
}

bool get_txt(const xmlNode* node, std::string& text) {
  // An element that holds one piece of text, or none, is the common case.
  const bool is_element = node != nullptr && node->type == XML_ELEMENT_NODE;
  const xmlNode* only = is_element ? node->children : nullptr;
  if (node == nullptr || (is_element && only == nullptr)) {
    text.clear();
  } else if (only != nullptr && only->next == nullptr && only->type == XML_TEXT_NODE) {
    text = reinterpret_cast<const char*>(only->content);
  } else {
    const TextPtr content(xmlNodeGetContent(node));
    if (content == nullptr && is_element) {
      throw std::bad_alloc();  // other nodes, such as a processing instruction, may have none
    }
    text = char_to_str(content.get());
  }
  return !text.empty();
}

bool get_attr(const xmlNode* node, const std::string& name, std::string& value) {
  const auto* xml_name = reinterpret_cast<const xmlChar*>(name.c_str());
  const TextPtr text(node == nullptr ? nullptr : xmlGetProp(node, xml_name));
  if (text == nullptr) {
    if (node != nullptr && xmlHasProp(node, xml_name) != nullptr) {
      throw std::bad_alloc();
    }
    return false;
  }
  value = char_to_str(text.get());
  return true;
}

std::optional<std::string> attribute_of(const xmlNode* node, const std::string& name) {
  std::string value;
  return get_attr(node, name, value) ? std::optional(std::move(value)) : std::nullopt;
}

bool get_attr_value(const xmlAttr* attribute, std::string& value) {
  const TextPtr text(xmlNodeListGetString(attribute->doc, attribute->children, 1));
  const xmlNode* first = attribute->children;
  if (text == nullptr && first != nullptr && first->content != nullptr && *first->content != 0) {
    throw std::bad_alloc();
  }
  value = char_to_str(text.get());
  return !value.empty();
}

templates::DataPt_TYPES get_mapped_type(const std::string& entry, const std::string& word) {
  auto type = templates::DataPt_TYPES::LONG;
  if (!look_up(templates::DATA_POINT_TYPES, word, type)) {
    throw std::invalid_argument("Unknown type '" + word + "' for the type map entry '" + entry +
                                "'.");
  }
  return type;
}

}  // namespace qorn::xml
