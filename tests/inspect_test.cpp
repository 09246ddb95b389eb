#include <cstdlib>
#include <filesystem>
#include <regex>
#include <set>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/wait.h>

#include <qorn/str.h>

#include "command_line.h"
#include "finding.h"
#include "test_installation.h"

namespace qorn::testing {
namespace {

using Files = std::vector<std::pair<std::string, std::string>>;

struct Answer : Printed {
  int status = 0;
};

/// Asks qorn-inspect about an installation of its own, in this process. In answers "ROOT" stands
/// for the installation's root.
class Inspect : public ::testing::Test {
 protected:
  Inspect() { std::filesystem::current_path(at.path()); }
  ~Inspect() override { std::filesystem::current_path("/"); }

  Answer ask(const std::string& words) const {
    Arguments line(str::split(words, ' ', false), "qorn-inspect");
    Answer answer;
    const auto run = [&] { answer.status = inspect::run(line.count(), line.values()); };
    static_cast<Printed&>(answer) = printed(run);
    answer.output = at.without_root(answer.output);
    answer.errors = at.without_root(answer.errors);
    return answer;
  }

  void write(const Files& files) const {
    for (const auto& [name, content] : files) {
      at.write(name, content);
    }
  }

  Installation at;
};

std::string fwd(const std::string& body) {
  return "<configuration><framework_definition>\n" + body +
         "</framework_definition></configuration>";
}

std::string provider(const std::string& body) {
  return "<configuration>\n<command>a</command>\n" + body + "</configuration>";
}

const std::string USES_PROBE = "<providers><provider>probe</provider></providers>\n";

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

struct Question {
  std::string words;
  int status;
  std::string answer;  // with status 2 on standard error, else on standard output
};

/// An installation with two definitions, groups and a provider that needs two storage nodes.
class Questions : public Inspect {
 protected:
  Questions() {
    write({{"etc/qorn.xml",
            "<configuration><analyzer>\n<log_level>error</log_level>\n"
            "<node_group_configuration_file>groups.xml"
            "</node_group_configuration_file></analyzer>\n"
            "<collector><re-collect>on</re-collect></collector></configuration>"},
           {"etc/fwd/base.xml", fwd(USES_PROBE + "<kb_mods><mod>a.clp</mod></kb_mods>\n"
                                                 "<includes><include>fwd/disk.xml</include>"
                                                 "</includes>")},
           {"etc/fwd/disk.xml", fwd("<providers><provider>pair</provider>"
                                    "<provider>gone</provider></providers>")},
           {"etc/fwd/other.xml", fwd(USES_PROBE)},
           {"etc/providers/pair.xml", provider("<role>storage</role><max_nodes>2</max_nodes>"
                                               "<min_nodes>2</min_nodes>")},
           {"kb/a.clp", "(batch* b.clp)\n(defrule a\n"},
           {"kb/b.clp", "(defrule b\n"},
           {"groups.xml",
            "<nodegroup_config>\n<nodegroup name='disks'><nodes><node>s1</node>"
            "<node>s2</node></nodes></nodegroup>\n<nodegroup name='none'/>\n"
            "<fwd name='disk'><nodegroups>\n<group>disks</group></nodegroups></fwd>"
            "</nodegroup_config>"},
           {"nodes", "n[1-3]\ns1 role: storage\n"}});
  }

  void expect(const std::vector<Question>& questions) const {
    for (const Question& question : questions) {
      SCOPED_TRACE(question.words);
      const Answer answer = ask(question.words);
      EXPECT_EQ(answer.output, question.status == 2 ? "" : question.answer);
      EXPECT_EQ(answer.errors, question.status == 2 ? question.answer : "");
      EXPECT_EQ(answer.status, question.status);
    }
  }
};

TEST_F(Questions, WhyNamesTheChainOrTheFirstConditionThatFails) {
  const std::string gone =
      "    provider gone: does not run: provider readable: Error reading provider configuration "
      "'ROOT/etc/providers/gone.xml' (2): No such file or directory\n";
  expect({{"why n1 -- -F base -f nodes", 0, R"(n1 (compute)
  base: runs
    base, asked for on the command line
    group All: every node, for what no group is tied to
    provider probe: runs
  disk: does not run: none of its providers does
    base, asked for on the command line
    included by ROOT/etc/fwd/base.xml:4
    group All-except-nodegroup-disks: the nodes outside disks, tied at groups.xml:5
    provider pair: does not run: role: it needs storage, the node has compute
)" + gone},
          {"why s1 disk -- -F base -f nodes -F disk", 1, R"(s1 (storage)
  disk: does not run: none of its providers does
    base, asked for on the command line
    included by ROOT/etc/fwd/base.xml:4 (and 1 more way)
    group disks, tied at groups.xml:5
    provider pair: does not run: number of nodes: it needs 2, there are 1 of its roles in group disks
)" + gone},
          {"why s1 other -- -F base -f nodes", 1, R"(s1 (storage)
  other: does not run: framework reached: nothing that is asked for includes ROOT/etc/fwd/other.xml
)"},
          {"why s3 -- -F base -f nodes", 1,
           "s3: node known: the run has 4 nodes, not this one; did you mean 'n3'?\n"},
          {"why n1 -- -F bas -f nodes", 2, R"(ROOT/etc/fwd/bas.xml: No such file or directory
Failed to open and validate framework definition ROOT/etc/fwd/bas.xml
Please use the -X list option to print list of valid frameworks.
)"}});
}

TEST_F(Questions, ShowTellsWhereASettingComesFromAndWhatDidNotCount) {
  const EnvironmentVariable off("QORN_TURN_OFF_ENV_PROPAGATION", "true");
  const Answer answer = ask("show --origin -- collect -f a -f b -F x -l debug");
  EXPECT_EQ(answer.status, 0);
  for (const char* line :
       {"operations = collect  (command line collect)", "re_collect = true  (etc/qorn.xml:4)",
        "env_propagation = false  (environment QORN_TURN_OFF_ENV_PROPAGATION)",
        "log_level = debug  (command line -l; not etc/qorn.xml:2: error)",
        "node_file = a  (command line -f; not command line -f: b)",
        "node_group_file = groups.xml  (etc/qorn.xml:3)", "fwds.names = x  (command line -F)",
        "config_file = ROOT/etc/qorn.xml  (default)", "root = ROOT  (environment QORN_ROOT)",
        "min_severity = 0  (default)"}) {
    EXPECT_NE(("\n" + answer.output).find("\n" + std::string(line) + "\n"), std::string::npos)
        << line << "\n"
        << answer.output;
  }
}

TEST_F(Questions, ListsNamesAndEverythingThatARunReads) {
  expect({{"list frameworks", 0, "base\ndisk\nother\n"},
          {"list providers", 0, "pair\nprobe\n"},
          {"list groups", 0, "disks\nnone\n"},
          {"list nodes -- -f nodes", 0, "n1\nn2\nn3\ns1\n"},
          {"list files -- collect -f nodes -F base", 0,
           "nodes\tnode file, command line -f\n"
           "ROOT/etc/qorn.xml\tmain document\n"
           "ROOT/etc/qorn.xsd\tschema of the main document\n"
           "ROOT/etc/CLIPS_type_map.xml\ttype map\n"
           "ROOT/etc/type_map.xsd\tschema\n"
           "ROOT/etc/fwd/base.xml\tframework definition, command line -F\n"
           "ROOT/etc/fwd.xsd\tschema of each framework definition\n"
           "ROOT/kb/a.clp\trule file, named at ROOT/etc/fwd/base.xml:3\n"
           "ROOT/kb/b.clp\trule file, named at ROOT/kb/a.clp:1\n"
           "ROOT/etc/fwd/disk.xml\tframework definition, named at ROOT/etc/fwd/base.xml:4\n"
           "ROOT/etc/postprocessor/table.xml\tpostprocessor document, the default\n"
           "ROOT/etc/postprocessor/table.xsd\tschema of each postprocessor document\n"
           "ROOT/kb/data/msg_schema.xml\tmessage schema, the default\n"
           "ROOT/etc/schema_map.xsd\tschema of each message schema\n"
           "ROOT/etc/providers/probe.xml\tprovider document, named at ROOT/etc/fwd/base.xml:2\n"
           "ROOT/etc/providers/pair.xml\tprovider document, named at ROOT/etc/fwd/disk.xml:2\n"
           "ROOT/home/.qorn/qorn.db\tdatastore DATA\n"
           "groups.xml\tnode group document\n"
           "ROOT/etc/nodegroup.xsd\tschema of each node group document\n"}});
}

TEST_F(Questions, NodeExpressionsFoldAndUnfold) {
  expect({{"nodes n[1-3],n4!n2&n[2-9]", 0, "n[3-4]\n"},
          {"nodes b a2 a10 a01", 0, "a[2,01,10],b\n"},
          {"nodes --expand n[1-2]x[8-9]", 0, "n1x8\nn1x9\nn2x8\nn2x9\n"},
          {"nodes --count @disks,n1", 0, "3\n"},
          {"nodes a!a", 0, ""},
          {"nodes @disk\x1b", 2,
           "qorn-inspect: groups.xml has no group 'disk\\x1b'; did you mean 'disks'?\n"},
          {"nodes a,", 2, "qorn-inspect: 'a,': a name is missing beside an operator\n"}});
}

TEST_F(Questions, GraphHasOneNodeForEachDocument) {
  const std::string head =
      "digraph frameworks {\n  rankdir=LR;\n  node [shape=box fontname=\"sans-serif\"];\n";
  at.write("etc/fwd/a\"&\\.xml", fwd("<includes><include>fwd/base.xml</include>"
                                     "<include>fwd/base.xml</include></includes>"));
  expect(
      {{"graph --from base --providers", 0,
        head + "  n0 [label=\"base\"];\n  n1 [label=\"disk\"];\n"
               "  n2 [label=\"gone\" shape=ellipse style=dashed color=red];\n"
               "  n3 [label=\"pair\" shape=ellipse];\n  n4 [label=\"probe\" shape=ellipse];\n"
               "  n0 -> n1;\n  n0 -> n4;\n  n1 -> n2;\n  n1 -> n3;\n}\n"},
       {"graph --from base --reverse --depth 1", 0,
        head + "  n0 [label=\"a\\\"&amp;\\\\\"];\n  n1 [label=\"base\"];\n  n0 -> n1;\n}\n"},
       {"graph --from bse", 2,
        "qorn-inspect: ROOT/etc/fwd/bse.xml: No such file or directory; did you mean 'base'?\n"}});
}

TEST_F(Questions, DiffComparesRootsAndRecords) {
  const TemporaryDirectory other;
  std::filesystem::copy(at.path(), other.path(), std::filesystem::copy_options::recursive);
  const std::string roots = "diff --root " + at.path() + " --root " + other.path() + " -- -F base";
  expect({{roots + " -f nodes", 0, ""}});
  other.write("etc/fwd/disk.xml", fwd("<kb_mods><mod>b.clp</mod></kb_mods><message_catalogs>"
                                      "<entry>/elsewhere</entry></message_catalogs>"));
  other.write("etc/providers/probe.xml", provider("<timeout>7</timeout>"));
  other.write("kb/a.clp", "(defrule c\n");
  expect({{roots + " -f nodes", 1, R"(framework definitions
  + $QORN_ROOT/etc/fwd/disk.xml.kb_mods: $QORN_ROOT/kb/b.clp
  + $QORN_ROOT/etc/fwd/disk.xml.message_catalogs./elsewhere
  - $QORN_ROOT/etc/fwd/disk.xml.provider_groups: {"attributes":{"dependency_type":"non-blocking"},"members":["pair","gone"]}
rules
  - a
  + c
providers
  - pair
  ~ probe.command: uname -a -> a
  ~ probe.timeout: 5 -> 7
)"},
          {"diff nodes nodes", 2,
           "qorn-inspect: nodes: not the record of a run, as QORN_RECORD writes it\n"}});
}

TEST_F(Questions, WrongUseEndsWithTwo) {
  for (const char* words :
       {"", "chek", "check --format=xml", "why", "list all", "nodes --expand --count a", "diff a",
        "check -- -f nodes", "show -- -l loud", "show -- --help", "graph --root /nowhere",
        "list groups -- -Q"}) {
    const Answer answer = ask(words);
    EXPECT_EQ(answer.status, 2) << words;
    EXPECT_NE(answer.errors, "") << words;
    EXPECT_EQ(answer.output, "") << words;
  }
}

TEST_F(Questions, TheProgramSaysWhenItsAnswerCannotBeWritten) {
  const std::string program = std::string(QORN_BIN_DIR) + "/qorn-inspect nodes b1 b2 2> errors > ";
  EXPECT_EQ(std::system((program + "out").c_str()), 0);
  EXPECT_EQ(read_file("out"), "b[1-2]\n");
  EXPECT_EQ(WEXITSTATUS(std::system((program + "/dev/full").c_str())), 2);
  EXPECT_EQ(read_file("errors"), "Could not write to standard output: No space left on device\n");
}

}  // namespace
}  // namespace qorn::testing
