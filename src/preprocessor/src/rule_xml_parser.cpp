#include <exception>
#include <string_view>

#include <qorn/log/error_log.h>
#include <qorn/rule_xml_parser.h>
#include <qorn/str.h>
#include <qorn/xml.h>

namespace qorn {
namespace {

void log_error(const std::string& text) {
  log::ErrorLog(log::level::ERROR).stream() << text;
}

/// Reads a slot. False, with a line, when it has no content.
bool parse_slot(const xmlNode* node, Element& element) {
  element.type = Element::SLOT;
  xml::get_attr(node, "value_constraint", element.slot.value_constraint);
  xml::get_attr(node, "multislot_constraint", element.slot.multislot_constraint);
  xml::get_attr(node, "value", element.slot.value);
  if (node->children != nullptr) {
    element.slot.name = xml::content_of(node->children);
  }
  if (element.slot.name.empty()) {
    log_error("Content not found for slot.");
    return false;
  }
  return true;
}

/// Whether an element of that name is a control statement, such as or_statement, and of which type.
bool is_statement(std::string_view name, CONTROL_TYPE& type) {
  constexpr std::string_view BEHIND = "_statement";
  return name.ends_with(BEHIND) &&
         look_up(CONTROL_TYPES, name.substr(0, name.size() - BEHIND.size()), type);
}

bool has_valid_operands(const CONTROL_TYPE& type, std::size_t operands) {
  if (type == CONTROL_TYPE::OR || type == CONTROL_TYPE::AND) {
    if (operands < 2) {
      log_error("Control types <and,or> need to have at least 2 elements");
    }
    return operands >= 2;
  }
  if (type == CONTROL_TYPE::NOT) {
    if (operands != 1) {
      log_error("Control type <not> needs to have exactly 1 element");
    }
    return operands == 1;
  }
  log_error("Unsupported control type");
  return false;
}

}  // namespace

int parseRulesXML(Config& config) {
  try {
    const xml::DocumentPtr doc = xml::open_valid_document(config.rules_file, config.rules_xsd);
    if (doc == nullptr) {
      log_error("Could not validate the xml file:" + config.rules_file);
      return 1;
    }
    xmlNode* root = xml::root_of(doc);
    if (root == nullptr) {
      log_error("Should have one or more rules defined.  None are defined in " + config.rules_file);
      return 1;
    }
    parseConfigTag(config, root);
    return parseValuesTag(config, root) ? 0 : 1;
  } catch (const std::exception&) {
    log_error("Could not parse xml file " + config.rules_file);
    return 1;
  }
}

void parseConfigTag(Config& config, xmlNode* root) {
  const xmlNode* settings = xml::get_child_node(root, "config");
  if (settings == nullptr) {
    return;
  }
  config.rules_kb_path = xml::get_str(settings, "kb_path", "");
  config.message_file = xml::get_str(settings, "message_file", "");
  config.message_prefix = xml::get_str(settings, "message_prefix", "");
  config.rules_directory = xml::get_str(settings, "rules_directory", "");
}

bool parseValuesTag(Config& config, xmlNode*& root) {
  const xmlNode* values = xml::get_child_node(root, "values");
  if (values == nullptr) {
    log_error("No rules found.");
    return false;
  }
  for (xmlNode* rule : xml::get_child_nodes(values, "rule")) {
    Element element;
    element.type = Element::RULE;
    if (!parseRuleAttrs(rule, element) || !parseBlock(element.children, rule)) {
      return false;
    }
    config.rule_elements.push_back(std::move(element));
  }
  return true;
}

bool parseRuleAttrs(xmlNode*& rule, Element& element) {
  RuleBlock& block = element.block;
  if (!xml::get_attr(rule, "class", block.class_name)) {
    log_error("Rule attribute \"class\" must be defined.");
    return false;
  }
  if (block.class_name.empty()) {
    log_error("Attribute class cannot be empty.");
    return false;
  }
  xml::get_attr(rule, "msg_id", block.msg_id);
  xml::get_attr(rule, "analysis_extension", block.analysis_extension);
  std::string text;
  xml::get_attr(rule, "nodes", text);
  const std::vector<std::string> nodes = str::split(text, ',', false);
  block.nodes.insert(nodes.begin(), nodes.end());
  text.clear();
  xml::get_attr(rule, "severity", text);
  Severity severity{};
  look_up(SEVERITIES, text, severity);
  block.severity = severity.identifier;  // 0 for an unknown word
  text.clear();
  xml::get_attr(rule, "list", text);
  block.list = text == "1" || text == "true";
  return true;
}

// The parser bounds the depth of a document, and with it the recursion of statements.
bool parseBlock(std::vector<Element>& out, xmlNode* const& parent) {
  for (xmlNode* child : xml::Elements(parent)) {
    auto type = CONTROL_TYPE::NONE;
    if (is_statement(xml::name_of(child), type)) {
      if (!parseControlStatement(type, out, child)) {
        return false;
      }
    } else if (xml::name_of(child) == "slot") {
      Element element;
      if (!parse_slot(child, element)) {
        return false;
      }
      out.push_back(std::move(element));
    }
  }
  return true;
}

bool parseControlStatement(const CONTROL_TYPE& type, std::vector<Element>& out,
                           xmlNode* const& statement) {
  Element element;
  element.type = Element::CONTROL;
  element.control = type;
  if (!parseBlock(element.children, statement) ||
      !has_valid_operands(type, element.children.size())) {
    return false;
  }
  out.push_back(std::move(element));
  return true;
}

}  // namespace qorn
