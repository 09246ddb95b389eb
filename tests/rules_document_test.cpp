#include <gtest/gtest.h>

#include "test_installation.h"
#include "test_tables.h"

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

// A document's content, the rules, and what is wrong. SLOT is a slot, RULE a rule.
constexpr const char* DOCUMENTS = R"(
<values/>
<values> <!-- none --> </values>
<!-- --> =>  => No rules found.\n
<values><rule class='A' msg_id='m' analysis_extension='x' nodes='b,a,,b' severity='critical' list='1'><slot value_constraint='v' multislot_constraint='m' value='w'> s </slot></rule></values> => A,m,x,8,list a b{ s (v|m|w)}
<values><rule class='B' severity='Warning' list='TRUE' nodes=''/><rule class='C' severity='warning' list='true'/></values> => B,,,0{}C,,,4,list{}
<values><rule class='A'><and_statement><or_statement>SLOTSLOT</or_statement>SLOT</and_statement><not_statement>SLOT</not_statement></rule></values> => A,,,0{and{or{s(||)s(||)}s(||)}not{s(||)}}
<values>RULE<rule/></values> => A,,,0{} => Rule attribute "class" must be defined.\n
<values><rule class=''/></values> =>  => Attribute class cannot be empty.\n
<values>RULE<rule class='B'><slot/></rule></values> => A,,,0{} => Content not found for slot.\n
<values>RULE<rule class='B'><slot><?p?>s</slot></rule></values> => A,,,0{} => Content not found for slot.\n
<values><rule class='B'><and_statement>SLOT</and_statement></rule></values> =>  => Control types <and,or> need to have at least 2 elements\n
<values><rule class='B'><or_statement/></rule></values> =>  => Control types <and,or> need to have at least 2 elements\n
<values><rule class='B'><not_statement/></rule></values> =>  => Control type <not> needs to have exactly 1 element\n
<values><rule class='B'><not_statement>SLOTSLOT</not_statement></rule></values> =>  => Control type <not> needs to have exactly 1 element\n)";

TEST(RulesDocument, RulesAreReadUpToTheFirstBadOne) {
  const TemporaryDirectory directory;
  for (const auto& row : rows_of(DOCUMENTS)) {
    SCOPED_TRACE(row[0]);
    const std::string content =
        str::replace(str::replace(row[0], "SLOT", "<slot>s</slot>"), "RULE", "<rule class='A'/>");
    Config config;
    config.rules_xsd = installed("etc/rules_generator.xsd");
    config.rules_file =
        directory.write("r.xml", "<rules_document>" + content + "</rules_document>");
    const Printed text = printed([&] { EXPECT_EQ(parseRulesXML(config), row[2].empty() ? 0 : 1); });
    EXPECT_EQ(text.errors, row[2]);
    EXPECT_EQ(describe(config.rule_elements), row[1]);
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
