#include <gtest/gtest.h>

#include "test_installation.h"

namespace qorn::testing {
namespace {

/// The conditions as "name(value_constraint|multislot_constraint|value)" and "or{…}".
std::string describe(const std::vector<Element>& elements) {
  const char* const controls[] = {"or", "and", "not"};
  std::string text;
  for (const Element& element : elements) {
    if (element.type == Element::SLOT) {
      const Slot& slot = element.slot;
      text += slot.name + '(' + slot.value_constraint + '|' + slot.multislot_constraint + '|' +
              slot.value + ')';
    } else if (element.type == Element::CONTROL) {
      text += controls[static_cast<int>(element.control)];
    } else {
      const RuleBlock& block = element.block;
      text += block.class_name + ',' + block.msg_id + ',' + block.analysis_extension + ',' +
              std::to_string(block.severity) + (block.list ? ",list" : "");
      for (const std::string& node : block.nodes) {
        text += ' ' + node;
      }
    }
    text += element.type == Element::SLOT ? "" : '{' + describe(element.children) + '}';
  }
  return text;
}

TEST(RulesDocument, RulesAreReadUpToTheFirstBadOne) {
  struct Case {
    std::string values;
    std::string rules;
    std::string error;  // empty: success
  };
  const std::string good = "<rule class='A'/>";
  const std::string two = "Control types <and,or> need to have at least 2 elements";
  const std::string one = "Control type <not> needs to have exactly 1 element";
  const std::string slot = "<slot>s</slot>";
  const std::vector<Case> cases = {
      {"<values/>", "", ""},
      {"<values> <!-- none --> </values>", "", ""},
      {"", "", "No rules found."},
      {"<values><rule class='A' msg_id='m' analysis_extension='x' nodes='b,a,,b' "
       "severity='critical' list='1'><slot value_constraint='v' multislot_constraint='m' "
       "value='w'> s </slot></rule><rule class='B' severity='Warning' list='TRUE' nodes=''/>"
       "<rule class='C' severity='warning' list='true'/></values>",
       "A,m,x,8,list a b{ s (v|m|w)}B,,,0{}C,,,4,list{}", ""},
      {"<values><rule class='A'><and_statement><or_statement>" + slot + slot + "</or_statement>" +
           slot + "</and_statement><not_statement>" + slot + "</not_statement></rule></values>",
       "A,,,0{and{or{s(||)s(||)}s(||)}not{s(||)}}", ""},
      {"<values>" + good + "<rule/></values>", "A,,,0{}",
       "Rule attribute \"class\" must be defined."},
      {"<values><rule class=''/></values>", "", "Attribute class cannot be empty."},
      {"<values>" + good + "<rule class='B'><slot/></rule></values>", "A,,,0{}",
       "Content not found for slot."},
      {"<values><rule class='B'><and_statement>" + slot + "</and_statement></rule></values>", "",
       two},
      {"<values><rule class='B'><or_statement/></rule></values>", "", two},
      {"<values><rule class='B'><not_statement/></rule></values>", "", one},
      {"<values><rule class='B'><not_statement>" + slot + slot + "</not_statement></rule></values>",
       "", one},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.values);
    const TemporaryDirectory directory;
    Config config;
    config.rules_xsd = installed("etc/rules_generator.xsd");
    config.rules_file =
        directory.write("r.xml", "<rules_document>" + each.values + "</rules_document>");
    const Printed text =
        printed([&] { EXPECT_EQ(parseRulesXML(config), each.error.empty() ? 0 : 1); });
    EXPECT_EQ(text.errors, each.error.empty() ? "" : each.error + "\n");
    EXPECT_EQ(describe(config.rule_elements), each.rules);
  }
  std::vector<Element> out;
  const Printed text =
      printed([&] { EXPECT_FALSE(parseControlStatement(CONTROL_TYPE::NONE, out, nullptr)); });
  EXPECT_EQ(text.errors, "Unsupported control type\n");
}

TEST(RulesDocument, TheCommandReadsAnExpandedPathAndTheRunGoesOn) {
  const Installation installation;
  installation.fwd("health_base", "<providers><provider>probe</provider></providers>");
  installation.write("home/my rules.xml",
                     "<rules_document><config><kb_path>k</kb_path><message_file>f</message_file>"
                     "<message_prefix/></config><values><rule class='A'/></values>"
                     "</rules_document>");
  RunResult result;
  EXPECT_EQ(installation.run({"generate_rules", "$HOME/my\\ rules.xml"}, result), 0)
      << result.errors;
  const Config& config = result.config;
  EXPECT_EQ(config.rules_file, installation.path("home/my rules.xml"));
  EXPECT_EQ(config.rules_xsd, installation.path("etc/rules_generator.xsd"));
  EXPECT_EQ(config.analysis_map_xsd, installation.path("etc/analysis_map.xsd"));
  EXPECT_EQ(
      config.rules_kb_path + config.message_file + config.message_prefix + config.rules_directory,
      "kf");
  EXPECT_EQ(config.rule_elements.size(), 1U);
  EXPECT_EQ(config.operations, 0U);
}

}  // namespace
}  // namespace qorn::testing
