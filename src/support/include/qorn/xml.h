#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <libxml/tree.h>

#include <qorn/extensions.h>
#include <qorn/place.h>
#include <qorn/templates/data_pt_types.h>
#include <qorn/xml/document.h>

namespace qorn {
struct Config;
struct Fwd;
}  // namespace qorn

/// Operations on the nodes of a document. Texts are never stripped. A null node is allowed
/// everywhere and has no children, no text and no attributes.
namespace qorn::xml {

/// The element children of a node, for a range-based for.
class Elements {
 public:
  class Iterator {
   public:
    explicit Iterator(xmlNode* node) : node_(node) { skip(); }
    xmlNode* operator*() const { return node_; }
    Iterator& operator++() {
      node_ = node_->next;
      skip();
      return *this;
    }
    bool operator!=(const Iterator& other) const { return node_ != other.node_; }

   private:
    void skip() {
      while (node_ != nullptr && node_->type != XML_ELEMENT_NODE) {
        node_ = node_->next;
      }
    }

    xmlNode* node_;
  };

  explicit Elements(const xmlNode* parent)
      : first_(parent == nullptr ? nullptr : parent->children) {}
  Iterator begin() const { return Iterator(first_); }
  Iterator end() const { return Iterator(nullptr); }

 private:
  xmlNode* first_;
};

/// The root element of a document.
xmlNode* root_of(const DocumentPtr& doc);

/// The element's name.
std::string_view name_of(const xmlNode* node);

/// The text of a node and all that it contains; a node without content has the empty text.
std::string content_of(const xmlNode* node);

/// Where a node stands, for messages.
Place place_of(const xmlNode* node);

/// The first child element of that name, or null.
xmlNode* get_child_node(const xmlNode* node, std::string_view name);

/// All child elements of that name, in document order.
std::vector<xmlNode*> get_child_nodes(const xmlNode* node, std::string_view name);

/// The number of element children.
int get_num_element_children(const xmlNode* node);

/// The text of the first child element of that name, or `default_text` when there is none.
std::string get_str(const xmlNode* node, std::string_view name, const std::string& default_text);

/// The texts of all child elements of that name, in document order.
std::vector<std::string> get_str_list(const xmlNode* node, std::string_view name);

/// Stores the element's text; false when it is empty.
bool get_txt(const xmlNode* node, std::string& text);

/// Stores the attribute's value; false, leaving `value` alone, when the attribute is absent.
bool get_attr(const xmlNode* node, const std::string& name, std::string& value);

/// The attribute's value; none when the attribute is absent.
std::optional<std::string> attribute_of(const xmlNode* node, const std::string& name);

/// The attribute's value as libxml2 lists it; false when it has none (an empty value).
bool get_attr_value(const xmlAttr* attribute, std::string& value);

/// The data point type of `word`: LONG, DOUBLE, STRING, SYMBOL or MULTI, in upper or in lower
/// case. Throws std::invalid_argument that names `entry` for any other word.
templates::DataPt_TYPES get_mapped_type(const std::string& entry, const std::string& word);

/// The string form of a text of libxml2; a null pointer gives the empty string.
std::string char_to_str(const xmlChar* text);

/// Whether a text of libxml2 equals `text`; a null pointer equals nothing.
bool char_cmp_str(const xmlChar* xml_text, std::string_view text);

/// Reads a postproc_extensions element into `extensions`, and appends the postprocessor document
/// that it names (attributes config_file, config_path) to config.postproc_config_files.
/// False, after one line at level 3, when an entry is empty.
bool parse_pproc_tag(const xmlNode* node, std::vector<PostprocessorExtension>& extensions,
                     Config& config);

/// Reads an analyzer_extension element into fwd.analyzer_extensions. False, after one line at
/// level 3, when an entry is empty.
bool parse_aExt_tag(const xmlNode* node, Fwd& fwd, Config& config);

/// Reads a message_catalogs element into fwd.message_catalogs. False, after one line at level 3,
/// when an entry is empty.
bool parse_msg_tag(const xmlNode* node, Fwd& fwd, Config& config);

/// Reads a message_schemas element: appends the documents that it names, word-expanded, relative
/// ones below root + "/kb/data", to config.message_schema_files. False, after one line at
/// level 3, when an entry is empty.
bool parse_msg_schema_tag(const xmlNode* node, Fwd& fwd, Config& config);

}  // namespace qorn::xml
