#pragma once

#include <vector>

#include <libxml/tree.h>

#include <qorn/config.h>

/// The rules document: rules that expected data is to be compared with.
namespace qorn {

/// Reads config.rules_file, validated against config.rules_xsd, into config.rule_elements and the
/// rules settings. 0 on success, 1 on failure with the reason at level 3; rules read before a
/// failure stay.
int parseRulesXML(Config& config);

/// Reads the settings below `root`; texts that are not there become empty.
void parseConfigTag(Config& config, xmlNode* root);

/// Appends the rules below `root` to config.rule_elements. False, with a line at level 3, for a
/// document without the element values, and for a bad rule.
bool parseValuesTag(Config& config, xmlNode*& root);

/// Reads the attributes of a rule. False, with a line at level 3, without a class.
bool parseRuleAttrs(xmlNode*& rule, Element& element);

/// Appends the conditions below `parent`. False, with a line at level 3, for a bad one.
bool parseBlock(std::vector<Element>& out, xmlNode* const& parent);

/// Appends one control statement. False, with a line at level 3, when the number of its operands
/// doesn't fit.
bool parseControlStatement(const CONTROL_TYPE& type, std::vector<Element>& out,
                           xmlNode* const& statement);

}  // namespace qorn
