#include <cstdlib>
#include <regex>
#include <set>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "finding.h"
#include "inspect_fixture.h"

namespace qorn::testing {
namespace {

struct FaultyCase {
  std::string name;
  Files files;
  std::string output;
  std::string words{};  // behind "check"
  int status = 1;
};

// Else the names of the tests end in the bytes of their fields.
void PrintTo(const FaultyCase& each, std::ostream* out) {
  *out << each.words;
}

const std::vector<FaultyCase> FAULTY_CASES = {
    {"SixFaultsOfOneDocument",
     {{"etc/fwd/base.xml",
       fwd("<fwd_desk>x</fwd_desk>\n<provders><provider>prob</provider></provders>\n"
           "<kb_mods config_fil='k.xml'>\n<foo/>\n<mods>r.clp</mods></kb_mods>\n"
           "<kb_path/><kb_path/>\n<includes>\n<include/></includes>\n")}},
     R"(ROOT/etc/fwd/base.xml:2: error: <fwd_desk> is not expected in <framework_definition>; did you mean 'fwd_desc'?
ROOT/etc/fwd/base.xml:3: error: <provders> is not expected in <framework_definition>; did you mean 'providers'?
ROOT/etc/fwd/base.xml:3: error: the provider document 'prob' is missing: ROOT/etc/providers/prob.xml; did you mean 'probe'?
ROOT/etc/fwd/base.xml:4: error: <kb_mods> has no attribute 'config_fil'; did you mean 'config_file'?
ROOT/etc/fwd/base.xml:4: error: the knowledge base document 'k.xml' is missing: ROOT/etc/kb/k.xml
ROOT/etc/fwd/base.xml:5: error: <foo> is not expected in <kb_mods>, expected mod
ROOT/etc/fwd/base.xml:6: error: <mods> is not expected in <kb_mods>; did you mean 'mod'?
ROOT/etc/fwd/base.xml:6: error: the rule file 'r.clp' is missing: /r.clp
ROOT/etc/fwd/base.xml:7: error: <kb_path> is not expected in <framework_definition>, which has it already
ROOT/etc/fwd/base.xml:9: error: <include> is empty, which ends a run
ROOT/etc/providers/probe.xml: warning: no framework definition names this provider
6 documents, 0 rule files, 0 node files read: 10 errors, 1 warning
)"},
    {"FollowUpsAreHidden",
     {{"etc/fwd/base.xml", "<configuration>\n<framework_definition></fwd></configuration>"},
      {"etc/providers/probe.xml", "<configuration>\n<comand>x</comand></configuration>"},
      {"etc/postprocessor/table.xml", "<postproc_table>\n<tabel id='a'/></postproc_table>"}},
     R"(ROOT/etc/fwd/base.xml:2:29: error: WORDS
ROOT/etc/postprocessor/table.xml:1: error: the root element is <postproc_table>, expected <postproc_tables>
ROOT/etc/postprocessor/table.xml:2: error: <tabel> is not expected in <postproc_tables>; did you mean 'table'?
ROOT/etc/providers/probe.xml:2: error: <comand> is not expected in <configuration>; did you mean 'command'?
6 documents, 0 rule files, 0 node files read: 4 errors, 0 warnings, 2 follow-ups hidden (-v shows them)
)"},
    {"FollowUpsAreMarked",
     {{"etc/providers/probe.xml", "<configuration>\n<comand>x</comand></configuration>"}},
     R"(ROOT/etc/providers/probe.xml:1: error: (follow-up) <configuration>: one command is required
ROOT/etc/providers/probe.xml:2: error: <comand> is not expected in <configuration>; did you mean 'command'?
6 documents, 0 rule files, 0 node files read: 1 error, 0 warnings, 1 follow-up
)",
     "-v"},
    {"CycleNamesEveryDocument",
     {{"etc/fwd/base.xml", fwd("<includes><include>fwd/b.xml</include></includes>")},
      {"etc/fwd/b.xml", fwd("<includes>\n<include>fwd/c.xml</include></includes>")},
      {"etc/fwd/c.xml", fwd(USES_PROBE + "<includes><include>fwd/base.xml</include>\n"
                                         "<include>fwd/bse.xml</include></includes>")},
      {"etc/fwd/idle.xml", fwd("")}},
     R"(ROOT/etc/fwd/base.xml:2: error: includes come back to their start: etc/fwd/b.xml -> etc/fwd/c.xml -> etc/fwd/base.xml -> etc/fwd/b.xml
ROOT/etc/fwd/c.xml:4: error: the framework definition 'fwd/bse.xml' is missing: ROOT/etc/fwd/bse.xml; did you mean 'fwd/base.xml'?
ROOT/etc/fwd/idle.xml: warning: the framework definition has neither provider, rule nor include
9 documents, 0 rule files, 0 node files read: 2 errors, 1 warning
)"},
    {"MainDocument",
     {{"etc/qorn.xml",
       "<configuration>\n<plugins><framework_definitions>"
       "<framework_definition>bse</framework_definition></framework_definitions></plugins>\n"
       "<analyser/>\n<analyzer><log_level>eror</log_level>\n"
       "<node_group_configuration_file>no.xml</node_group_configuration_file>\n"
       "<config><data-age-threshold>x</data-age-threshold></config>\n"
       "<suppressions><suppress><id>cpu-count-difers</id></suppress></suppressions>"
       "</analyzer>\n<collector><timeout scale='Linear'>1</timeout></collector>"
       "</configuration>"},
      {"kb/data/msg_schema.xml",
       "<message_schema><category>"
       "<message_id>cpu-count-differs</message_id></category>"
       "</message_schema>"}},
     R"(ROOT/etc/qorn.xml:2: error: the framework definition 'bse' is missing: ROOT/etc/fwd/bse.xml; did you mean 'base'?
ROOT/etc/qorn.xml:3: error: <analyser> is not expected in <configuration>; did you mean 'analyzer'?
ROOT/etc/qorn.xml:4: error: <log_level>: 'eror' is no known word; did you mean 'error'?
ROOT/etc/qorn.xml:5: error: the node group document 'no.xml' is missing: no.xml
ROOT/etc/qorn.xml:6: error: <data-age-threshold> is no number of days, which ends a run
ROOT/etc/qorn.xml:7: warning: nothing gives the message id 'cpu-count-difers'; did you mean 'cpu-count-differs'?
ROOT/etc/qorn.xml:8: warning: <timeout>, attribute 'scale': 'Linear' is no known word; did you mean 'linear'?
6 documents, 0 rule files, 0 node files read: 5 errors, 2 warnings
)"},
    {"Providers",
     {{"etc/providers/probe.xml",
       provider("<encoding>bse64</encoding>\n<min_nodes>3</min_nodes>\n<command>" +
                std::string(300, 'b') + "</command>")},
      {"etc/providers/pair.xml", provider("<min_nodes>3</min_nodes>")},
      {"etc/providers/long.xml",
       "<configuration>\n<command>" + std::string(257, 'b') + "</command></configuration>"},
      {"etc/providers/custom/sets.xml",
       "<configuration><collector><provider><probe>\n<optionset><a>1</a></optionset>"
       "</probe></provider></collector></configuration>"}},
     R"(ROOT/etc/providers/custom/sets.xml:2: warning: <optionset> is passed over: it has no attribute 'id'
ROOT/etc/providers/long.xml: warning: no framework definition names this provider
ROOT/etc/providers/long.xml:2: error: <command> has 257 characters; a run cuts it at 256
ROOT/etc/providers/pair.xml: error: Can not create cluster with a minimum of 3 and maximum of 1 nodes
ROOT/etc/providers/pair.xml: warning: no framework definition names this provider
ROOT/etc/providers/probe.xml:3: error: <encoding>: 'bse64' is none of none, base64, raw; did you mean 'base64'?
ROOT/etc/providers/probe.xml:5: error: <command>: one command is required
4 documents, 0 rule files, 0 node files read: 4 errors, 3 warnings
)",
     "etc/providers/probe.xml etc/providers/pair.xml etc/providers/long.xml "
     "etc/providers/custom/sets.xml"},
    {"RuleFiles",
     {{"etc/fwd/base.xml", fwd(USES_PROBE + "<kb_mods><mod>a.clp</mod>\n<mod>none.clp</mod>\n"
                                            "<mod>self.clp</mod></kb_mods>")},
      {"kb/a.clp",
       "(defrule a\n (x (id ?id))\n (bind ?id \"one\")\n (y (id ?id))\n"
       " (not (id ?other))\n; (id ?comment)\n)\n(load b.clp)\n(batch* n0ne.clp)\n"},
      {"kb/b.clp", ""},
      {"kb/none.clp", "(deftemplate t)\n"},
      {"kb/self.clp", "(batch* self.clp)\n(defrule s\n"},
      {"kb/rules/diagnosis.clp",
       "(defrule d\n (sign (id \"onne\"))\n (sign (id \"one\"))\n"
       " (sign (id \"cause\"))\n =>\n (assert (x (id \"cause\"))))\n"}},
     R"(ROOT/etc/fwd/base.xml:4: warning: 'none.clp' and what it loads hold no rule
ROOT/etc/fwd/base.xml:5: error: The rule file ROOT/kb/self.clp loads itself, directly or through others: not scanned again.
ROOT/kb/a.clp:2: warning: the id '?id' is bound to no text up to here, so no id is noted
ROOT/kb/a.clp:8: error: this load line leads nowhere: only the form (batch* NAME) is followed
ROOT/kb/a.clp:9: error: this load line leads nowhere: ROOT/kb/n0ne.clp is missing; did you mean 'none.clp'?
ROOT/kb/rules/diagnosis.clp:2: warning: no rule file mentions the sign 'onne'; did you mean 'one'?
6 documents, 5 rule files, 0 node files read: 3 errors, 3 warnings
)"},
    {"TablesAndMaps",
     {{"etc/CLIPS_type_map.xml",
       "<type_map>\n<entry type='STRNG'>a</entry>\n<entry type='MULTI'>b</entry></type_map>"},
      {"etc/postprocessor/table.xml",
       "<postproc_tables>\n<table/>\n<table id='a'><column name='x'/></table>"
       "</postproc_tables>"},
      {"etc/postprocessor/reports.xml",
       "<postproc_reports>\n<r><message_id/></r>\n<s><constraints a='1'/></s>"
       "</postproc_reports>"},
      {"etc/kb/kb.xml", "<kb_config>\n<a><b/></a></kb_config>"},
      {"etc/other.xml", "<other/>"}},
     R"(ROOT/etc/CLIPS_type_map.xml:2: error: <entry>, attribute 'type': 'STRNG' is no known word; did you mean 'STRING'?
ROOT/etc/CLIPS_type_map.xml:3: error: <entry> of type MULTI needs the attribute 'data_type'
ROOT/etc/kb/kb.xml:2: error: <b> is empty, which ends a run
ROOT/etc/other.xml: warning: no kind of document of an installation: its root element is <other>
ROOT/etc/postprocessor/reports.xml:2: error: <message_id> is empty, which ends a run
ROOT/etc/postprocessor/reports.xml:3: warning: <constraints> is dropped: it is empty, or a message_id in it is
ROOT/etc/postprocessor/table.xml:2: warning: <table> is passed over: it has no attribute 'id'
ROOT/etc/postprocessor/table.xml:3: warning: <column> is passed over: it needs the attributes 'name' and 'msg-id'
9 documents, 0 rule files, 0 node files read: 4 errors, 4 warnings
)"},
    {"ReportBesideTable",
     {{"etc/fwd/base.xml", fwd(USES_PROBE + "<postproc_extensions config_file='reports.xml'/>"
                                            "<includes><include>fwd/b.xml</include></includes>")},
      {"etc/fwd/b.xml", fwd(USES_PROBE + "<postproc_extensions config_file='t.xml'/>")},
      {"etc/postprocessor/reports.xml", "<postproc_reports><r/></postproc_reports>"},
      {"etc/postprocessor/t.xml", "<postproc_tables><table id='a'/></postproc_tables>"}},
     R"(ROOT/etc/fwd/base.xml:3: warning: the report document 'reports.xml' is not read in a run that has a table document as well: ROOT/etc/postprocessor/t.xml is named at ROOT/etc/fwd/b.xml:3
9 documents, 0 rule files, 0 node files read: 0 errors, 1 warning
)",
     "",
     0},
    {"NodesAndGroups",
     {{"nodes", "n[1-3] role: compte # typo\nn2,n3 subcluster: default-subcluster role: head\n"},
      {"etc/providers/probe.xml", provider("<timeout>5</timeout><role>storage</role>")},
      {"groups.xml",
       "<nodegroup_config>\n<nodegroup name='a'><nodes><node>n1</node></nodes>"
       "</nodegroup>\n<nodegroup name='empty'/>\n<nodegroup name='a'/>\n"
       "<fwd name='base'><nodegroups><group>aa</group></nodegroups></fwd>\n"
       "<fwd name='bas'/>\n<fwd name='base'/></nodegroup_config>"}},
     R"(ROOT/etc/providers/probe.xml:3: warning: no node has the role 'storage'
ROOT/groups.xml:3: warning: the group 'empty' has no node, so a run drops it
ROOT/groups.xml:4: warning: the group 'a' has no node, so a run drops it
ROOT/groups.xml:4: warning: the group 'a' stood before, at line 2, which counts
ROOT/groups.xml:5: error: no group has the name 'aa'; did you mean 'a'?
ROOT/groups.xml:6: error: the framework definition 'bas' is missing: ROOT/etc/fwd/bas.xml; did you mean 'base'?
ROOT/groups.xml:7: error: the framework definition 'base' stood before, at line 5: a run ends here
ROOT/nodes:1: warning: 'compte' is no known role; did you mean 'compute'?
ROOT/nodes:2: warning: the host 'n2' and 1 more stood before, at line 1
7 documents, 0 rule files, 1 node file read: 3 errors, 6 warnings
)",
     "-f nodes -g groups.xml"},
    // A line was taken for an element, which ended the program or lost faults.
    {"FaultsOfElementsOnOneLine",
     {{"groups.xml",
       "<nodegroup_config><nodegroup name='a'><nodegrops/></nodegroup>"
       "<nodegroup name='b'><p:nodegrops xmlns:p='u'/></nodegroup>\n"
       "<nodegroup name='c'><nods><node>n</node></nods></nodegroup>"
       "<nodegroup name='d'><p:nods xmlns:p='u'/></nodegroup></nodegroup_config>"},
      {"etc/CLIPS_type_map.xml",
       "<type_map><entry type='MULTY'>a</entry><entry type='MULTI'>b</entry></type_map>"}},
     R"(ROOT/etc/CLIPS_type_map.xml:1: error: <entry> of type MULTI needs the attribute 'data_type'
ROOT/etc/CLIPS_type_map.xml:1: error: <entry>, attribute 'type': 'MULTY' is no known word; did you mean 'MULTI'?
ROOT/groups.xml:1: error: <nodegrops> is not expected in <nodegroup>
ROOT/groups.xml:2: error: <nods> is not expected in <nodegroup>
ROOT/groups.xml:2: error: <nods> is not expected in <nodegroup>; did you mean 'nodes'?
2 documents, 0 rule files, 0 node files read: 5 errors, 0 warnings
)",
     "etc/CLIPS_type_map.xml groups.xml -g groups.xml"},
    {"NodeFileThatIsRefused",
     {{"nodes", "n[3-1]\n\nn1 role:\n"}},
     R"(ROOT/missing.xml: error: No such file or directory
ROOT/nodes:1: error: expected the lower end of a range first, found '3-1' in 'n[3-1]'
ROOT/nodes:3: error: expected a word behind 'role:', found the end of the line
1 document, 0 rule files, 1 node file read: 3 errors, 0 warnings
)",
     "nodes missing.xml"},
    {"WarningsAreNoErrors",
     {{"etc/providers/other.xml", provider("")}},
     R"(ROOT/etc/providers/other.xml: warning: no framework definition names this provider
7 documents, 0 rule files, 0 node files read: 0 errors, 1 warning
)",
     "",
     0},
    {"WarningsAreTwoWithStrict",
     {{"etc/providers/other.xml", provider("")}},
     "ROOT/etc/providers/other.xml: \x1b[33mwarning\x1b[0m: no framework definition names this "
     "provider\n"
     "1 document, 0 rule files, 0 node files read: 0 errors, 1 warning\n",
     "--strict --color=always etc/providers/other.xml",
     3}};

class FaultyInstallation : public Inspect, public ::testing::WithParamInterface<FaultyCase> {};

std::size_t count(const std::string& text, const std::string& word) {
  std::size_t found = 0;
  for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
    ++found;
  }
  return found;
}

TEST_P(FaultyInstallation, IsReportedWhole) {
  write(GetParam().files);
  const Answer answer = ask("check " + GetParam().words);
  EXPECT_EQ(answer.output, with_words(GetParam().output, GetParam().files.begin()->second));
  EXPECT_EQ(answer.errors, "");
  EXPECT_EQ(answer.status, GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(Check, FaultyInstallation, ::testing::ValuesIn(FAULTY_CASES),
                         [](const auto& test) { return test.param.name; });

TEST_F(Inspect, CheckAcceptsTheInstalledDocumentsWithoutAWarning) {
  const std::string root = installed("");
  const Answer answer = ask("check --strict --root " + root + " -f " + root +
                            "/etc/examples/nodes -g " + root + "/etc/examples/groups.xml");
  EXPECT_NE(answer.output.find("1 node file read: 0 errors, 0 warnings\n"), std::string::npos)
      << answer.output;
  EXPECT_EQ(answer.status, 0);
  EXPECT_EQ(std::getenv("QORN_ROOT"), at.path());  // as before
}

TEST_F(Inspect, CheckSaysThatMoreMayFollow) {
  std::string body;
  for (int i = 0; i < 150; ++i) {
    body += "<x" + std::to_string(i) + "/>\n";
  }
  at.write("etc/fwd/base.xml", fwd("<kb_mods>" + body + "</kb_mods>" + USES_PROBE));
  const Answer answer = ask("check");
  EXPECT_EQ(count(answer.output, "is not expected in <kb_mods>"), 100U);
  EXPECT_EQ(count(answer.output, "after 100 rounds of validation more faults may follow"), 1U);
}

TEST_F(Inspect, CheckAsJsonFollowsTheInstalledSchema) {
  write(FAULTY_CASES[3].files);  // with related places
  const Answer answer = ask("check --format=json");
  EXPECT_EQ(answer.status, 1);
  const std::string script =
      "import json, jsonschema, sys; d = json.load(open(sys.argv[1])); "
      "jsonschema.validate(d, json.load(open(sys.argv[2]))); "
      "assert (d['errors'], d['warnings'], len(d['findings'])) == (2, 1, 3); "
      "assert len(d['findings'][0]['related']) == 3";
  EXPECT_EQ(
      std::system(("/usr/bin/python3 -c \"" + script + "\" " + at.write("answer", answer.output) +
                   " " + installed("etc/inspect.schema.json"))
                      .c_str()),
      0);
}

using Words = std::multiset<std::string>;

/// ID, severity and sentence of each kind in the JSON schema.
Words kinds_in_schema() {
  Words kinds;
  const auto schema = nlohmann::json::parse(read_file(installed("etc/inspect.schema.json")));
  for (const std::string severity : {"error", "warning"}) {
    for (const auto& kind : schema["definitions"][severity]["properties"]["id"]["oneOf"]) {
      kinds.insert(kind["const"].get<std::string>() + " " + severity + " " +
                   kind["description"].get<std::string>());
    }
  }
  return kinds;
}

Words kinds_in_manual() {
  Words kinds;
  const std::string page = read_file(QORN_DOCS "/man/qorn-inspect.1");
  const std::regex item("\\.It Cm (\\S+) Pq (\\S+)\\n(.*)");
  for (std::sregex_iterator each(page.begin(), page.end(), item), end; each != end; ++each) {
    kinds.insert((*each)[1].str() + " " + (*each)[2].str() + " " + (*each)[3].str());
  }
  return kinds;
}

TEST(FindingKinds, AreThoseOfTheSchemaAndOfTheManual) {
  Words kinds;
  for (const inspect::FindingKindRow& row : inspect::FINDING_KINDS) {
    kinds.insert(std::string(row.id) + " " + row.severity + " " + row.sentence);
  }
  EXPECT_EQ(kinds_in_schema(), kinds);
  EXPECT_EQ(kinds_in_manual(), kinds);
}

TEST(Findings, OfOnePlaceHideNeitherAnotherKindNorAFault) {
  inspect::Findings findings;
  const Place place{"f", 1};
  findings.add("wrong-word", place, "a").follow_up = true;
  findings.add("wrong-word", place, "a");
  findings.add("wrong-value", place, "a");
  findings.settle({});
  EXPECT_EQ(findings.count().errors, 2U);
  EXPECT_EQ(findings.count().follow_ups, 0U);
}

}  // namespace
}  // namespace qorn::testing
