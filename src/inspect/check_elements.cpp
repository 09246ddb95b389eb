#include "check_elements.h"

#include <algorithm>
#include <string>
#include <vector>

#include <qorn/constants.h>
#include <qorn/str.h>
#include <qorn/xml.h>
#include <qorn/xml/xpath.h>

#include "suggestion.h"

namespace qorn::inspect {
namespace {

/// Elements of a kind of document that are faults as they stand.
struct ElementRow {
  Kind in;
  const char* elements;
  FindingKind kind;
  const char* words;  // behind the element's name
};
constexpr ElementRow ELEMENTS[] = {
    {Kind::FRAMEWORK, "/*/framework_definition[1]/includes[1]/include[.='']",
     FindingKind::EMPTY_ELEMENT, "is empty, which ends a run"},
    {Kind::FRAMEWORK,
     "/*/framework_definition[1]/*[self::analyzer_extension or self::postproc_extensions or "
     "self::message_catalogs or self::message_schemas]/entry[.='']",
     FindingKind::EMPTY_ELEMENT, "is empty, which ends a run"},
    {Kind::MAIN, "/*/postprocessor[1]/postproc_extensions[1]/entry[.='']",
     FindingKind::EMPTY_ELEMENT, "is empty, which ends a run"},
    {Kind::MAIN, "/*/analyzer[1]/config[1]//data-age-threshold[not(*) and number()!=number()]",
     FindingKind::WRONG_VALUE, "is no number of days, which ends a run"},
    {Kind::MAIN, "/*/analyzer[1][not(config)]/suppressions[1]", FindingKind::ELEMENT_WITHOUT_EFFECT,
     "has no effect: it is read beside an element <config> alone"},
    {Kind::KNOWLEDGE_BASE, "/*/*/*[.='']", FindingKind::EMPTY_ELEMENT,
     "is empty, which ends a run"},
    {Kind::REPORT, "/*/*/message_id[.='']", FindingKind::EMPTY_ELEMENT,
     "is empty, which ends a run"},
    {Kind::REPORT, "/*/*/constraints[not(*) or message_id[.='']]",
     FindingKind::ELEMENT_WITHOUT_EFFECT, "is dropped: it is empty, or a message_id in it is"},
    {Kind::TABLE, "/*/*[not(@id)]", FindingKind::ELEMENT_WITHOUT_EFFECT,
     "is passed over: it has no attribute 'id'"},
    {Kind::TABLE, "/*/*/*[not(@name and @msg-id)]", FindingKind::ELEMENT_WITHOUT_EFFECT,
     "is passed over: it needs the attributes 'name' and 'msg-id'"},
    {Kind::TYPE_MAP, "/*/*[@type='MULTI' and not(@data_type)]", FindingKind::MISSING_ATTRIBUTE,
     "of type MULTI needs the attribute 'data_type'"},
    {Kind::GROUPS, "/*/*[not(@name)]", FindingKind::ELEMENT_WITHOUT_EFFECT,
     "is passed over: it has no attribute 'name'"},
    {Kind::CUSTOM_PROVIDERS, "/*/collector/provider[1]/*/optionset[not(@id)]",
     FindingKind::ELEMENT_WITHOUT_EFFECT, "is passed over: it has no attribute 'id'"}};

using Words = std::vector<std::string>;

template <typename Value>
Words words_of(const WordTable<Value>& table) {
  Words words;
  for (const auto& [word, value] : table) {
    words.push_back(word);
  }
  return words;
}

/// Elements of a kind of document with one of a few words.
struct WordRow {
  Kind in;
  const char* elements;
  const char* attribute;  // null: the element's text
  Words words;
  FindingKind kind;  // of another word
};

/// The type words of the type map are known in upper and in lower case.
const std::vector<WordRow>& word_rows() {
  static const Words TYPES = {"LONG", "DOUBLE", "STRING", "SYMBOL", "MULTI",
                              "long", "double", "string", "symbol", "multi"};
  static const Words VALUE_TYPES = {"LONG", "DOUBLE", "STRING", "SYMBOL",
                                    "long", "double", "string", "symbol"};
  static const std::vector<WordRow> ROWS = {
      {Kind::MAIN, "/*/analyzer[1]/log_level[1][.!='']", nullptr, words_of(LOG_LEVELS),
       FindingKind::WRONG_WORD},
      {Kind::MAIN, "/*/collector/timeout[@scale]", "scale", words_of(SCALE_TYPES),
       FindingKind::WORD_WITHOUT_EFFECT},
      {Kind::CUSTOM_PROVIDERS, "/*/collector/provider[1]/*/*/timeout[@scale]", "scale",
       words_of(SCALE_TYPES), FindingKind::WORD_WITHOUT_EFFECT},
      {Kind::TYPE_MAP, "/*/*", "type", TYPES, FindingKind::WRONG_WORD},
      {Kind::TYPE_MAP, "/*/*[@type='MULTI' and @data_type]", "data_type", VALUE_TYPES,
       FindingKind::WRONG_WORD}};
  return ROWS;
}

void check_word(const WordRow& row, const xmlNode* element, Findings& findings) {
  std::string word;
  if (row.attribute == nullptr) {
    word = xml::content_of(element);
  } else {
    xml::get_attr(element, row.attribute, word);
  }
  if (std::find(row.words.begin(), row.words.end(), word) != row.words.end()) {
    return;
  }
  findings.add(
      row.kind, Place::of(element),
      "<" + std::string(xml::name_of(element)) + ">" +
          (row.attribute == nullptr ? "" : ", attribute '" + std::string(row.attribute) + "'") +
          ": '" + word + "' is no known word" + did_you_mean(word, row.words));
}

}  // namespace

void check_elements(Kind kind, const xml::DocumentPtr& doc, Findings& findings) {
  const xml::XPath xpath(doc);
  for (const ElementRow& row : ELEMENTS) {
    if (row.in != kind) {
      continue;
    }
    for (const xmlNode* element : xpath.nodes(row.elements)) {
      findings.add(row.kind, Place::of(element),
                   "<" + std::string(xml::name_of(element)) + "> " + row.words);
    }
  }
  for (const WordRow& row : word_rows()) {
    if (row.in == kind) {
      for (const xmlNode* element : xpath.nodes(row.elements)) {
        check_word(row, element, findings);
      }
    }
  }
}

}  // namespace qorn::inspect
