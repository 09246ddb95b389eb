#pragma once

#include <set>
#include <string>
#include <vector>

#include <qorn/word_table.h>

namespace qorn {

/// How the operands of a control statement are combined.
enum class CONTROL_TYPE : int { OR = 0, AND = 1, NOT = 2, NONE = 255 };

inline constexpr Word<CONTROL_TYPE> CONTROL_TYPES[] = {
    {"or", CONTROL_TYPE::OR}, {"and", CONTROL_TYPE::AND}, {"not", CONTROL_TYPE::NOT}};

/// A condition on one slot of a class of data.
struct Slot {
  int kind = -1;
  std::string name;
  std::string value_constraint;
  std::string multislot_constraint;
  std::string value;
};

struct Element;

/// The attributes of a rule.
struct RuleBlock {
  bool list = false;
  int severity = -1;  // identifier of the severity table
  std::string analysis_extension;
  std::string class_name;
  std::string msg_id;
  std::string extra;
  std::set<std::string> nodes;
  std::vector<Element> first_elements;   // the engine's
  std::vector<Element> second_elements;  // the engine's
};

/// One node of a rules document: a rule, a control statement or a slot.
struct Element {
  enum Type : int { RULE = 0, CONTROL = 1, SLOT = 2, FRESH = 255 };

  int type = FRESH;
  RuleBlock block;  // of a rule
  Slot slot;        // of a slot
  CONTROL_TYPE control = CONTROL_TYPE::NONE;
  /// The conditions of a rule, or the operands of a control statement.
  std::vector<Element> children;
};

}  // namespace qorn
