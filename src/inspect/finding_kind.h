#pragma once

#include <span>

#include <qorn/xml/document.h>

namespace qorn::inspect {

/// The kinds of faults that a check tells apart; the table of finding_kinds() says what each is.
enum class FindingKind {
  COMMAND_CUT,
  DEAD_LOAD,
  ELEMENT_WITHOUT_EFFECT,
  EMPTY_ELEMENT,
  EMPTY_GROUP,
  GROUP_FILE,
  IDLE_FRAMEWORK,
  INCLUDE_CYCLE,
  MALFORMED,
  MISSING_ATTRIBUTE,
  MISSING_ELEMENT,
  MISSING_FILE,
  MORE_MAY_FOLLOW,
  NO_RULE,
  NODE_FILE,
  PROVIDER_UNUSABLE,
  REPEATED_FRAMEWORK,
  REPEATED_GROUP,
  REPEATED_HOST,
  ROLE_WITHOUT_NODE,
  RULE_FILE_UNUSABLE,
  SCHEMA,
  UNBOUND_ID,
  UNEXPECTED_ATTRIBUTE,
  UNEXPECTED_ELEMENT,
  UNKNOWN_GROUP,
  UNKNOWN_ID,
  UNKNOWN_KIND,
  UNKNOWN_ROLE,
  UNKNOWN_SIGN,
  UNNAMED_PROVIDER,
  UNREADABLE,
  WORD_WITHOUT_EFFECT,
  WRONG_ROOT,
  WRONG_VALUE,
  WRONG_WORD
};

/// What is fixed for a kind, and promised to scripts.
struct FindingKindRow {
  FindingKind kind;
  const char* id;
  xml::Fault::Severity severity;
  const char* sentence;  // of the manual page and of the JSON schema
};

/// All kinds, by id.
std::span<const FindingKindRow> finding_kinds();

const FindingKindRow& row_of(FindingKind kind);

/// "error" or "warning".
const char* severity_word(FindingKind kind);

}  // namespace qorn::inspect
