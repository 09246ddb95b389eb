#include "check_schema.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <qorn/str.h>
#include <qorn/xml.h>
#include <qorn/xml/xpath.h>

#include "detached_node.h"
#include "joined.h"
#include "suggestion.h"

namespace qorn::inspect {
namespace {

constexpr int MOST_ROUNDS = 100;

using Words = std::vector<std::string>;

const xmlChar* xml_text(const std::string& text) {
  return reinterpret_cast<const xmlChar*>(text.c_str());
}

/// What stands between the first `from` and the next `to`; empty when they aren't there.
std::string between(const std::string& text, const std::string& from, const std::string& to) {
  const std::size_t start = text.find(from);
  if (start == std::string::npos) {
    return {};
  }
  const std::size_t end = text.find(to, start + from.size());
  return end == std::string::npos ? ""
                                  : text.substr(start + from.size(), end - start - from.size());
}

/// The words of a list in the validator's text: ( a, b ) or {'a', 'b'}.
Words words_of(const std::string& list) {
  Words words;
  for (const std::string& word : str::split(list, ',', false)) {
    words.push_back(str::strip(word, " '"));
  }
  return words;
}

std::string tag(const xmlNode* element) {
  return "<" + std::string(xml::name_of(element)) + ">";
}

class SchemaCheck {
 public:
  SchemaCheck(xml::DocumentPtr copy, std::string path, std::string xsd, std::string root_element,
              Findings& findings)
      : copy_(std::move(copy)),
        path_(std::move(path)),
        xsd_(std::move(xsd)),
        root_element_(std::move(root_element)),
        findings_(findings) {}

  xml::DocumentPtr run() {
    for (round_ = 0; round_ < MOST_ROUNDS; ++round_) {
      repaired_ = false;
      for (const xml::ElementFault& found : xml::validate_document(*copy_, path_, xsd_)) {
        take(found);
      }
      if (!repaired_) {
        break;
      }
    }
    for (const Entry& entry : entries_) {
      report(entry);
    }
    if (repaired_) {
      findings_.add("more-may-follow", {path_, 0},
                    "after 100 rounds of validation more faults may follow");
    }
    return std::move(copy_);
  }

 private:
  enum class Lack { NONE, ELEMENT, ATTRIBUTE, KEY };
  struct Entry {
    Place place;
    FindingKind kind;
    std::string message;
    Lack lack = Lack::NONE;
    const xmlNode* element = nullptr;
    int first_round = 0;
    int last_round = 0;
  };

  void take(const xml::ElementFault& found) {
    Entry entry{{found.fault.file, found.fault.line}, "wrong-value", found.fault.text};
    entry.element = found.element;
    entry.first_round = entry.last_round = round_;
    if (found.element == nullptr) {
      entry.kind = "schema";
    } else {
      describe(found, entry);
    }
    if (const auto known = find(entry); known != entries_.end()) {
      known->last_round = round_;
    } else {
      entries_.push_back(std::move(entry));
    }
  }

  /// What is known of the same element in the same words. Its line may hold other elements.
  std::vector<Entry>::iterator find(const Entry& entry) {
    return std::find_if(entries_.begin(), entries_.end(), [&](const Entry& other) {
      return other.element == entry.element && other.message == entry.message &&
             (entry.element != nullptr || other.place.line == entry.place.line);
    });
  }

  void describe(const xml::ElementFault& found, Entry& entry) {
    const std::string& text = found.fault.text;
    switch (found.code) {
      case XML_SCHEMAV_CVC_ELT_1:
        return wrong_root(found.element, entry);
      case XML_SCHEMAV_ELEMENT_CONTENT:
        if (text.find("Missing child element") != std::string::npos) {
          return missing_element(found.element, text, entry);
        }
        return unexpected_element(found.element, text, entry);
      case XML_SCHEMAV_CVC_COMPLEX_TYPE_3_2_1:
      case XML_SCHEMAV_CVC_COMPLEX_TYPE_3_2_2:
        return unexpected_attribute(found.element, text, entry);
      case XML_SCHEMAV_CVC_COMPLEX_TYPE_4:
        entry.lack = Lack::ATTRIBUTE;
        entry.kind = "missing-attribute";
        entry.message = tag(found.element) + " lacks the attribute '" +
                        between(text, "The attribute '", "'") + "'";
        return;
      case XML_SCHEMAV_CVC_IDC:
        entry.lack = Lack::KEY;
        entry.kind = "missing-element";
        entry.message = tag(found.element) + ": " +
                        str::replace(between(text, "key identity-constraint '", "'"), "-", " ");
        return;
      case XML_SCHEMAV_CVC_ENUMERATION_VALID:
        return wrong_word(found.element, text, entry);
      default:
        return wrong_value(found.element, text, entry);
    }
  }

  void wrong_root(xmlNode* element, Entry& entry) {
    entry.kind = "wrong-root";
    entry.message = "the root element is " + tag(element) + ", expected <" + root_element_ + ">";
    rename(element, root_element_);
  }

  static void missing_element(const xmlNode* element, const std::string& text, Entry& entry) {
    entry.lack = Lack::ELEMENT;
    entry.kind = "missing-element";
    entry.message =
        tag(element) + " lacks an element, expected " + joined(words_of(between(text, "( ", " )")));
  }

  void unexpected_element(xmlNode* element, const std::string& text, Entry& entry) {
    const std::string name(xml::name_of(element));
    if (const auto renamed = renamed_.find(element); renamed != renamed_.end()) {
      return take_back(renamed->second, element, entry);
    }
    const Words expected = words_of(between(text, "( ", " )"));
    std::string close = closest_word(name, expected);
    // The validator's list ends after ten names.
    close = close.empty() ? closest_word(name, names("element")) : close;
    entry.kind = "unexpected-element";
    entry.message = tag(element) + " is not expected in " + tag(element->parent);
    if (is_repeated(element)) {
      entry.message += ", which has it already";
    } else if (!close.empty()) {
      entry.message += "; did you mean '" + close + "'?";
    } else if (!expected.empty()) {
      entry.message += ", expected " + joined(expected);
    }
    if (!close.empty() && (!has_child(element->parent, close) || may_repeat(close))) {
      renamed_.emplace(element, entry.message);
      touched_.insert(element->parent);
      rename(element, close);
    } else {
      remove(element);
    }
  }

  /// The close name isn't expected there either: the suggestion goes, unless the name is only
  /// there already.
  void take_back(const std::string& message, xmlNode* element, Entry& entry) {
    entry.message = message;
    if (!is_repeated(element)) {
      const auto wrong = find(entry);
      entry.message = message.substr(0, message.find("; did you mean"));
      wrong->message = entry.message;
    }
    remove(element);
  }

  void unexpected_attribute(xmlNode* element, const std::string& text, Entry& entry) {
    const std::string name = between(text, "The attribute '", "'");
    const std::string close = closest_word(name, names("attribute"));
    entry.kind = "unexpected-attribute";
    entry.message = tag(element) + " has no attribute '" + name + "'" +
                    (close.empty() ? "" : "; did you mean '" + close + "'?");
    std::string value;
    xml::get_attr(element, name, value);
    if (xmlUnsetProp(element, xml_text(name)) != 0) {
      return;  // of a namespace: stays
    }
    if (!close.empty() && xmlHasProp(element, xml_text(close)) == nullptr) {
      xmlNewProp(element, xml_text(close), xml_text(value));
    }
    touched_.insert(element);
    repaired_ = true;
  }

  static void wrong_word(const xmlNode* element, const std::string& text, Entry& entry) {
    const std::string word = between(text, "The value '", "' is not");
    const std::string attribute = between(text, ", attribute '", "'");
    const Words words = words_of(between(text, "{", "}"));
    entry.kind = "wrong-word";
    entry.message = tag(element) + (attribute.empty() ? "" : ", attribute '" + attribute + "'") +
                    ": '" + word + "' is none of " + joined(words) + did_you_mean(word, words);
  }

  /// The validator's own words, without its name for the element and for the rule of a type.
  static void wrong_value(const xmlNode* element, const std::string& text, Entry& entry) {
    const std::string attribute = between(text, ", attribute '", "'");
    const std::size_t rule = text.find("[facet '");
    const std::size_t start = rule == std::string::npos ? text.find(": ") : text.find("] ", rule);
    entry.message = tag(element) + (attribute.empty() ? "" : ", attribute '" + attribute + "'") +
                    ": " +
                    str::strip(start == std::string::npos ? text : text.substr(start + 2), ".");
  }

  void report(const Entry& entry) {
    // What is missing only after a child was taken out may be that child under its right name.
    const bool comes_late = entry.first_round > 0 && entry.lack == Lack::ELEMENT &&
                            removed_from_.count(entry.element) != 0;
    const bool was_mended =
        entry.lack != Lack::NONE && touched_.count(entry.element) != 0 && entry.last_round < round_;
    findings_.add(entry.kind, entry.place, entry.message).follow_up = comes_late || was_mended;
  }

  static bool has_child(const xmlNode* parent, const std::string& name) {
    return xml::get_child_node(parent, name) != nullptr;
  }

  /// Whether the schema lets an element of that name come more than once in a parent. Renaming to
  /// another name would make the element that has it the unexpected one.
  bool may_repeat(const std::string& name) {
    return !in_schema("//*[local-name()='element'][@name='" + name +
                      "'][@maxOccurs or ../@maxOccurs]")
                .empty();
  }

  static bool is_repeated(const xmlNode* element) {
    for (const xmlNode* before = element->prev; before != nullptr; before = before->prev) {
      if (before->type == XML_ELEMENT_NODE && xmlStrEqual(before->name, element->name) != 0) {
        return true;
      }
    }
    return false;
  }

  void rename(xmlNode* element, const std::string& name) {
    xmlNodeSetName(element, xml_text(name));
    repaired_ = true;
  }

  /// Kept to the end, since faults of earlier rounds may be about it.
  void remove(xmlNode* element) {
    removed_from_.insert(element->parent);
    xmlUnlinkNode(element);
    removed_.emplace_back(element);
    repaired_ = true;
  }

  /// The names that the schema declares for elements or attributes, wherever they may stand.
  Words names(const std::string& declaration) {
    Words names;
    for (const xmlNode* name : in_schema("//*[local-name()='" + declaration + "']/@name")) {
      names.push_back(xml::content_of(name));
    }
    return names;
  }

  std::vector<xmlNode*> in_schema(const std::string& expression) {
    std::vector<xml::Fault> ignored;
    schema_ = schema_ == nullptr ? xml::read_document(xsd_, ignored) : std::move(schema_);
    return xml::XPath(schema_).nodes(expression);
  }

  xml::DocumentPtr copy_;
  std::string path_;
  std::string xsd_;
  std::string root_element_;
  Findings& findings_;
  int round_ = 0;
  bool repaired_ = false;
  std::vector<Entry> entries_;
  std::map<const xmlNode*, std::string> renamed_;  // with the message about each
  std::set<const xmlNode*> touched_;               // had a child or an attribute renamed
  std::set<const xmlNode*> removed_from_;          // had a child taken out
  std::vector<DetachedNode> removed_;
  xml::DocumentPtr schema_;  // as a document, once it was asked
};

}  // namespace

xml::DocumentPtr check_schema(const std::string& path, DocumentKind kind, const std::string& root,
                              Findings& findings) {
  std::vector<xml::Fault> found;
  xml::DocumentPtr copy = xml::read_document(path, found);
  if (copy == nullptr) {
    const xml::Fault& first = found.front();
    findings
        .add(first.line > 0 ? FindingKind("malformed") : FindingKind("unreadable"),
             {path, first.line}, first.text)
        .column = first.column;
    return nullptr;
  }
  const std::string schema = schema_path(kind, root);
  if (schema.empty()) {
    return copy;
  }
  return SchemaCheck(std::move(copy), path, schema, row_of(kind).root_element, findings).run();
}

}  // namespace qorn::inspect
