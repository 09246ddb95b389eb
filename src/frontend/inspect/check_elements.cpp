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

using Severity = Finding::Severity;

struct ElementRow {
  Kind kind;
  const char* elements;
  Severity severity;
  const char* id;
  const char* words;  // behind the element's name
};
constexpr ElementRow ELEMENTS[] = {
    {Kind::FRAMEWORK, "/*/framework_definition[1]/includes[1]/include[.='']", Severity::ERROR,
     "empty-element", "is empty, which ends a run"},
    {Kind::FRAMEWORK,
     "/*/framework_definition[1]/*[self::analyzer_extension or self::postproc_extensions or "
     "self::message_catalogs or self::message_schemas]/entry[.='']",
     Severity::ERROR, "empty-element", "is empty, which ends a run"},
    {Kind::MAIN, "/*/postprocessor[1]/postproc_extensions[1]/entry[.='']", Severity::ERROR,
     "empty-element", "is empty, which ends a run"},
    {Kind::MAIN, "/*/analyzer[1]/config[1]//data-age-threshold[not(*) and number()!=number()]",
     Severity::ERROR, "wrong-value", "is no number of days, which ends a run"},
    {Kind::MAIN, "/*/analyzer[1][not(config)]/suppressions[1]", Severity::WARNING,
     "element-without-effect", "has no effect: it is read beside an element <config> alone"},
    {Kind::KNOWLEDGE_BASE, "/*/*/*[.='']", Severity::ERROR, "empty-element",
     "is empty, which ends a run"},
    {Kind::REPORT, "/*/*/message_id[.='']", Severity::ERROR, "empty-element",
     "is empty, which ends a run"},
    {Kind::REPORT, "/*/*/constraints[not(*) or message_id[.='']]", Severity::WARNING,
     "element-without-effect", "is dropped: it is empty, or a message_id in it is"},
    {Kind::TABLE, "/*/*[not(@id)]", Severity::WARNING, "missing-attribute",
     "is passed over: it has no attribute 'id'"},
    {Kind::TABLE, "/*/*/*[not(@name and @msg-id)]", Severity::WARNING, "missing-attribute",
     "is passed over: it needs the attributes 'name' and 'msg-id'"},
    {Kind::TYPE_MAP, "/*/*[@type='MULTI' and not(@data_type)]", Severity::ERROR,
     "missing-attribute", "of type MULTI needs the attribute 'data_type'"},
    {Kind::GROUPS, "/*/*[not(@name)]", Severity::WARNING, "missing-attribute",
     "is passed over: it has no attribute 'name'"},
    {Kind::CUSTOM_PROVIDERS, "/*/collector/provider[1]/*/optionset[not(@id)]", Severity::WARNING,
     "missing-attribute", "is passed over: it has no attribute 'id'"}};

using Words = std::vector<std::string>;

template <typename Table>
Words words_of(const Table& table) {
  Words words;
  for (const auto& [word, value] : table) {
    words.emplace_back(word);
  }
  return words;
}

/// Types of the values of an entry of type MULTI.
Words value_type_words() {
  Words words;
  for (const auto& [word, type] : templates::DATA_POINT_TYPES) {
    if (type != templates::DataPt_TYPES::MULTI) {
      words.emplace_back(word);
    }
  }
  return words;
}

struct WordRow {
  Kind kind;
  const char* elements;
  const char* attribute;  // null: the element's text
  Words words;
  Severity severity;
};

const std::vector<WordRow>& word_rows() {
  static const std::vector<WordRow> ROWS = {
      {Kind::MAIN, "/*/analyzer[1]/log_level[1][.!='']", nullptr, words_of(LOG_LEVELS),
       Severity::ERROR},
      {Kind::MAIN, "/*/collector/timeout[@scale]", "scale", words_of(SCALE_TYPES),
       Severity::WARNING},
      {Kind::CUSTOM_PROVIDERS, "/*/collector/provider[1]/*/*/timeout[@scale]", "scale",
       words_of(SCALE_TYPES), Severity::WARNING},
      {Kind::TYPE_MAP, "/*/*", "type", words_of(templates::DATA_POINT_TYPES), Severity::ERROR},
      {Kind::TYPE_MAP, "/*/*[@type='MULTI' and @data_type]", "data_type", value_type_words(),
       Severity::ERROR}};
  return ROWS;
}

void check_word(const WordRow& row, const xmlNode* element, FaultList& faults) {
  std::string word;
  if (row.attribute == nullptr) {
    word = xml::content_of(element);
  } else {
    xml::get_attr(element, row.attribute, word);
  }
  const Place place = place_of(element);
  if (std::find(row.words.begin(), row.words.end(), word) != row.words.end() ||
      faults.has_fault_at(place)) {
    return;
  }
  const std::string message =
      "<" + std::string(xml::name_of(element)) + ">" +
      (row.attribute == nullptr ? "" : ", attribute '" + std::string(row.attribute) + "'") + ": '" +
      word + "' is no known word" + did_you_mean(word, row.words);
  if (row.severity == Severity::ERROR) {
    faults.error("wrong-word", place, message);
  } else {
    faults.warning("wrong-word", place, message);
  }
}

}  // namespace

void check_elements(Kind kind, const xml::DocumentPtr& doc, FaultList& faults) {
  const xml::XPath xpath(doc);
  for (const ElementRow& row : ELEMENTS) {
    if (row.kind != kind) {
      continue;
    }
    for (const xmlNode* element : xpath.nodes(row.elements)) {
      const std::string message =
          "<" + std::string(xml::name_of(element)) + "> " + std::string(row.words);
      if (row.severity == Severity::ERROR) {
        faults.error(row.id, place_of(element), message);
      } else {
        faults.warning(row.id, place_of(element), message);
      }
    }
  }
  for (const WordRow& row : word_rows()) {
    if (row.kind == kind) {
      for (const xmlNode* element : xpath.nodes(row.elements)) {
        check_word(row, element, faults);
      }
    }
  }
}

}  // namespace qorn::inspect
