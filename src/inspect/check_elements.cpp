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

using enum DocumentKind;

/// Elements of a kind of document that are faults as they stand.
struct ElementRow {
  DocumentKind in;
  const char* elements;
  FindingKind kind;
  const char* words;  // behind the element's name
};
constexpr ElementRow ELEMENTS[] = {
    {FRAMEWORK, "/*/framework_definition[1]/includes[1]/include[.='']", "empty-element",
     "is empty, which ends a run"},
    {FRAMEWORK,
     "/*/framework_definition[1]/*[self::analyzer_extension or self::postproc_extensions or "
     "self::message_catalogs or self::message_schemas]/entry[.='']",
     "empty-element", "is empty, which ends a run"},
    {MAIN, "/*/postprocessor[1]/postproc_extensions[1]/entry[.='']", "empty-element",
     "is empty, which ends a run"},
    {MAIN,
     "/*/analyzer[1]/config[1]//data-age-threshold[not(*) and (number()!=number() or "
     "number()>=18446744073709551616)]",
     "wrong-value", "is no number of days, which ends a run"},
    {MAIN, "/*/analyzer[1][not(config)]/suppressions[1]", "element-without-effect",
     "has no effect: it is read beside an element <config> alone"},
    {KNOWLEDGE_BASE, "/*/*/*[.='']", "empty-element", "is empty, which ends a run"},
    {REPORT, "/*/*/message_id[.='']", "empty-element", "is empty, which ends a run"},
    {REPORT, "/*/*/constraints[not(*) or message_id[.='']]", "element-without-effect",
     "is dropped: it is empty, or a message_id in it is"},
    {TABLE, "/*/*[not(@id)]", "element-without-effect", "is passed over: it has no attribute 'id'"},
    {TABLE, "/*/*/*[not(@name and @msg-id)]", "element-without-effect",
     "is passed over: it needs the attributes 'name' and 'msg-id'"},
    {TYPE_MAP, "/*/*[@type='MULTI' and not(@data_type)]", "missing-attribute",
     "of type MULTI needs the attribute 'data_type'"},
    {GROUPS, "/*/*[not(@name)]", "element-without-effect",
     "is passed over: it has no attribute 'name'"},
    {CUSTOM_PROVIDERS, "/*/collector/provider[1]/*/optionset[not(@id)]", "element-without-effect",
     "is passed over: it has no attribute 'id'"}};

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
  DocumentKind in;
  const char* elements;
  const char* attribute;  // null: the element's text
  Words words;
  FindingKind kind;  // of another word
};

const std::vector<WordRow>& word_rows() {
  static const std::vector<WordRow> ROWS = {
      {MAIN, "/*/analyzer[1]/log_level[1][.!='']", nullptr, words_of(LOG_LEVELS), "wrong-word"},
      {MAIN, "/*/collector/timeout[@scale]", "scale", words_of(SCALE_TYPES), "word-without-effect"},
      {MAIN,
       "/*/datastore_extensions[1]/datastore[@read_only]",
       "read_only",
       {"true", "false"},
       "word-without-effect"},
      {CUSTOM_PROVIDERS, "/*/collector/provider[1]/*/*/timeout[@scale]", "scale",
       words_of(SCALE_TYPES), "word-without-effect"},
      {TYPE_MAP, "/*/*", "type", words_of(templates::DATA_POINT_TYPES), "wrong-word"},
      {TYPE_MAP, "/*/*[@type='MULTI' and @data_type]", "data_type", value_type_words(),
       "wrong-word"}};
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
      row.kind, xml::place_of(element),
      "<" + std::string(xml::name_of(element)) + ">" +
          (row.attribute == nullptr ? "" : ", attribute '" + std::string(row.attribute) + "'") +
          ": '" + word + "' is no known word" + did_you_mean(word, row.words));
}

}  // namespace

void check_elements(DocumentKind kind, const xml::DocumentPtr& doc, Findings& findings) {
  const xml::XPath xpath(doc);
  for (const ElementRow& row : ELEMENTS) {
    if (row.in != kind) {
      continue;
    }
    for (const xmlNode* element : xpath.nodes(row.elements)) {
      findings.add(row.kind, xml::place_of(element),
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
