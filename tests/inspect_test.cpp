#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include "inspect_fixture.h"

namespace qorn::testing {
namespace {

struct Exchange {
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

  void expect(const std::vector<Exchange>& exchanges) const {
    for (const Exchange& exchange : exchanges) {
      SCOPED_TRACE(exchange.words);
      const Answer answer = ask(exchange.words);
      EXPECT_EQ(answer.output, exchange.status == 2 ? "" : exchange.answer);
      EXPECT_EQ(answer.errors, exchange.status == 2 ? exchange.answer : "");
      EXPECT_EQ(answer.status, exchange.status);
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

TEST_F(Questions, PlacesInFilesWithABlankInTheirNamesAreKnown) {
  at.write("etc/fwd/a b.xml", fwd("<includes><include>fwd/base.xml</include></includes>"));
  at.write("etc/fwd/top.xml", fwd("<includes><include>fwd/a\\ b.xml</include></includes>"));
  expect({{"why n1 base -- -F top -f nodes", 0, R"(n1 (compute)
  base: runs
    top, asked for on the command line
    included by ROOT/etc/fwd/top.xml:2
    included by ROOT/etc/fwd/a b.xml:2
    group All: every node, for what no group is tied to
    provider probe: runs
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
  const std::string program = QORN_BIN_DIR "/qorn-inspect nodes b1 b2 2> errors > ";
  EXPECT_EQ(std::system((program + "out").c_str()), 0);
  EXPECT_EQ(read_file("out"), "b[1-2]\n");
  EXPECT_EQ(WEXITSTATUS(std::system((program + "/dev/full").c_str())), 2);
  EXPECT_EQ(read_file("errors"), "Could not write to standard output: No space left on device\n");
}

}  // namespace
}  // namespace qorn::testing
