#include <functional>

#include <gtest/gtest.h>
#include <pthread.h>

#include "test_installation.h"
#include "test_tables.h"

namespace qorn {
namespace {

using preproc::FWDParser;
using testing::joined;
using testing::members_of;
using testing::names_of;
using testing::rows_of;
using testing::RunResult;

const std::string PROBE = "<providers><provider>probe</provider></providers>";

std::string includes(const std::string& names) {
  std::string element = "<includes>";
  for (const std::string& name : str::split(names, ' ', false)) {
    element += "<include>fwd/" + name + ".xml</include>";
  }
  return element + "</includes>";
}

class FwdParserTest : public ::testing::Test {
 protected:
  /// Writes a graph: "a: b c;b:" is two definitions, of which the first includes two.
  void write(const std::string& graph) const {
    for (const std::string& definition : str::split(graph, ';', false)) {
      const std::size_t colon = definition.find(':');
      const std::string names = definition.substr(colon + 1);
      installation.fwd(definition.substr(0, colon), PROBE + includes(names));
    }
  }

  /// Collects with the definitions of these names.
  int run(const std::string& names, RunResult& result) const {
    std::vector<std::string> arguments{"01", "-f", installation.nodes};
    for (const std::string& name : str::split(names, ' ', false)) {
      arguments.insert(arguments.end(), {"-F", name});
    }
    installation.run(arguments, result);
    result.errors = installation.without_root(result.errors);
    return result.status;
  }

  /// Loads one definition without the rest of a run.
  int load(const std::string& name, RunResult& result) const {
    result.config.root = installation.path();
    const auto call = [&] {
      const preproc::RunScope scope;
      FWDParser parser;
      parser.update_defaults(result.config);
      result.status =
          parser.recurse_fwd(installation.path("etc/fwd/" + name + ".xml"), result.config);
    };
    result.errors = installation.without_root(testing::printed(call).errors);
    return result.status;
  }

  const Fwd& fwd(const RunResult& result, const std::string& name) const {
    return *result.config.fwds->by_path.at(installation.path("etc/fwd/" + name + ".xml"));
  }

  testing::Installation installation;
};

// Asked for, and the path of its document.
constexpr const char* ASKED_FOR = R"(
foo => /r/etc/fwd/foo.xml
a/b => /r/etc/fwd/a/b.xml
xml => /r/etc/fwd/xml.xml
.xml => /r/etc/fwd/.xml.xml
foo.xml.old => /r/etc/fwd/foo.xml.old.xml
/x/foo => /r/etc/fwd//x/foo.xml
a.xml => HERE/a.xml
/x/foo.xml => /x/foo.xml)";

// Written in an include, the bare name, the path. What goes behind ".xml" grows with the stem.
constexpr const char* WRITTEN = R"(
fwd/foo.xml => foo => /r/etc/fwd/foo.xml
/x/y/foo.xml => foo => /x/y/foo.xml
/x//y/../foo.xml => foo => /x/foo.xml
$FWD_DIR/foo.xml => foo => /r/etc/v/foo.xml
/x$FWD_DIR/$FWD_DIR.xml => $FWD_DIR => /x/v/v.xml
a.xml => a => /r/etc/a.xml
/x/.xml => l => /x/.xml
/x/a.xmlxx => axx => /x/a.xmlxx
/x/foo.xml.old => foold => /x/foo.xml.old
/x/a.xml.xml => a.xml => /x/a.xml.xml)";

TEST_F(FwdParserTest, NamesBecomePathsAndBareNames) {
  const testing::EnvironmentVariable variable("FWD_DIR", "/v");
  Config config;
  config.root = "/r";
  FWDParser parser;
  for (const auto& row : rows_of(ASKED_FOR)) {
    std::string path;
    EXPECT_EQ(parser.process_fwd(row[0], path, config, false), 0);
    EXPECT_EQ(path, str::replace(row[1], "HERE", fs::abspath("."))) << row[0];
  }
  parser.update_defaults(config);
  for (const auto& row : rows_of(WRITTEN)) {
    Fwd fwd;
    fwd.name = row[0];
    EXPECT_EQ(parser.compute_name_and_path(fwd), 0);
    EXPECT_EQ(fwd.name + " " + fwd.path, row[1] + " " + row[2]) << row[0];
  }
  Fwd unnamed;
  EXPECT_THROW(parser.compute_name_and_path(unnamed), std::out_of_range);
}

TEST_F(FwdParserTest, EveryElementOfADocumentReachesItsRecord) {
  const testing::EnvironmentVariable variable("FWD_DIR", "/v");
  installation.write("k/rules/one.clp", "(defrule one\n");
  installation.fwd("default", "<kb_path/><provider_path/><kb_mods config_file='d.xml'/>");
  installation.fwd("none", "<kb_mods config_path='/x/'/>");
  const std::string full_body = R"(<fwd_desc> All
 of it </fwd_desc><custom_result>fine</custom_result>
<kb_mods config_file='c.xml' config_path='$FWD_DIR/b'><mod>rules/one.clp</mod></kb_mods>
<provider_path>$FWD_DIR/p</provider_path><kb_path>ROOT/k</kb_path>
<provider_auxiliary_path>$FWD_DIR/a</provider_auxiliary_path>
<providers><provider>q</provider><provider>probe</provider></providers>
<analyzer_extension><entry>z</entry><entry>a</entry><entry>z</entry></analyzer_extension>
<postproc_extensions config_file='t.xml'><entry>z</entry><entry>a</entry></postproc_extensions>
<message_catalogs><entry>m</entry><entry>m</entry></message_catalogs>
<message_schemas><entry>s.xml</entry><entry>$FWD_DIR/s.xml</entry></message_schemas>)";
  installation.fwd("full", str::replace(full_body, "ROOT", installation.path()));
  RunResult result;
  for (const char* name : {"full", "default", "none"}) {
    ASSERT_EQ(load(name, result), 0) << result.errors;
  }
  const auto directories = [&](const char* name) {
    const Fwd& of = fwd(result, name);
    return installation.without_root(of.kb_path + " " + of.provider_path + " " +
                                     of.provider_aux_path);
  };
  EXPECT_EQ(directories("full"), "ROOT/k /v/p /v/a");
  EXPECT_EQ(directories("default"), "ROOT/kb ROOT/etc/providers ROOT/provider/share");
  EXPECT_EQ(directories("none"), directories("default"));
  const Fwd& full = fwd(result, "full");
  EXPECT_EQ(full.name + full.description + full.custom_result, "full All\n of it fine");
  EXPECT_EQ(full.state, 2);
  ASSERT_EQ(full.rules.size(), 1U);
  EXPECT_EQ(full.rules.begin()->name, "one");
  EXPECT_EQ(full.rules.begin()->file, installation.path("k/rules/one.clp"));
  EXPECT_EQ(full.kb_mods, (std::vector<std::string>{full.rules.begin()->file}));
  ASSERT_EQ(full.provider_groups.size(), 1U);
  using Attributes = std::unordered_map<std::string, std::string>;
  EXPECT_EQ(full.provider_groups[0].attributes, (Attributes{{"dependency_type", "non-blocking"}}));
  const provider_config& q = *full.provider_groups[0].members[0];
  EXPECT_EQ(q.name + q.config_dir + q.aux_path + q.config_file, "q/v/p/v/a") << "not read yet";
  EXPECT_EQ(full.provider_groups[0].members[1], result.config.providers.at("probe"));
  std::string names;
  const auto add = [&](const auto& extensions) {
    for (const auto& each : extensions) {
      names += each.name + " ";
    }
  };
  add(full.analyzer_extensions);
  add(full.postproc_extensions);
  add(full.message_catalogs);
  EXPECT_EQ(names, "a z z a m m ");
  const Config& config = result.config;
  EXPECT_EQ(installation.without_root(joined(config.kb_config_files, ";")),
            "/v/bc.xml;ROOT/etc/kb/d.xml")
      << "config_path ends in its slash";
  EXPECT_EQ(installation.without_root(joined(config.postproc_config_files, ";")),
            "ROOT/etc/postprocessor/t.xml");
  EXPECT_EQ(installation.without_root(joined(config.message_schema_files, ";")),
            "ROOT/kb/data/s.xml;/v/s.xml");
}

// Rule files, those listed (below ROOT/kb), the rules found, what is written, and what is passed
// over because of it. A name is stripped for the list alone; an empty one finds nothing.
constexpr const char* RULE_FILES = R"(
<mod>2.clp</mod><mod>1.clp</mod><mod>2.clp</mod> => /2.clp /1.clp => one two
<mod> 1.clp </mod><mod>  </mod><mod/><mod>2.clp</mod> => /1.clp /health.clp /health.clp /2.clp => two =>  => 1 ROOT/kb/ 1.clp rules ROOT/etc/fwd/rules.xml:2 ;
<mod>${NO_SUCH_DIR}1.clp</mod><mod>ROOT/kb/2.clp</mod> => /1.clp /2.clp => one =>  => 1 ROOT/kb/ROOT/kb/2.clp rules ROOT/etc/fwd/rules.xml:2 ;
<mod>none.clp</mod><mod>1.clp</mod><mod>loader.clp</mod> => /none.clp /1.clp /loader.clp => one =>  => 1 ROOT/kb/none.clp rules ROOT/etc/fwd/rules.xml:2 ;
<mod>1.clp</mod><mod>d</mod><mod>2.clp</mod><mod>1.clp</mod><mod>3.clp</mod> => /1.clp /d => one => Exception closing file ROOT/kb/d\n => 2 ROOT/kb/d rules ROOT/etc/fwd/rules.xml:2 2.clp 3.clp;)";

TEST_F(FwdParserTest, RuleFilesAreScannedOnceAndListedAsAbsolutePaths) {
  installation.write("kb/1.clp", "(defrule one (id \"A\")\n");
  installation.write("kb/2.clp", "(defrule two\n");
  installation.write("kb/loader.clp", "(batch* 1.clp)\n");
  installation.write("kb/d/x", "");
  for (const auto& row : rows_of(RULE_FILES)) {
    SCOPED_TRACE(row[0]);
    installation.fwd("rules", PROBE + "\n<kb_mods>" +
                                  str::replace(row[0], "ROOT", installation.path()) + "</kb_mods>");
    RunResult result;
    ASSERT_EQ(run("rules", result), 0) << result.errors;
    EXPECT_EQ(str::replace(joined(fwd(result, "rules").kb_mods, " "), installation.path("kb"), ""),
              row[1]);
    std::set<std::string> rules;
    for (const Rule& rule : fwd(result, "rules").rules) {
      rules.insert(rule.name);
    }
    EXPECT_EQ(joined(rules, " "), row[2]);
    EXPECT_EQ(result.errors, row[3]);
    std::string notes;
    for (const auto& note : result.notes.passed_over) {
      notes += std::to_string(static_cast<int>(note.kind)) + " " + note.what + " " + note.named_by +
               " " + to_string(note.place) + " " + joined(note.together, " ") + ";";
    }
    EXPECT_EQ(installation.without_root(notes), row[4]);
  }
  installation.fwd("first", PROBE + "<kb_mods><mod>1.clp</mod></kb_mods>");
  installation.fwd("second", PROBE + "<kb_mods><mod>1.clp</mod></kb_mods>");
  RunResult result;
  run("first second", result);
  EXPECT_EQ(result.config.diagnosis_rules.at("A").size(), 2U) << "once for each definition";
}

// The body of ROOT/etc/fwd/bad.xml (F), the words of its fault, and the tag that the line behind
// them names. Schemas fail with the words for catalogs.
constexpr const char* FAILURES = R"(
<analyzer_extension><entry/></analyzer_extension> => F:1: an entry of the element <analyzer_extension> is empty\n => analyzer extension
<postproc_extensions><entry/></postproc_extensions> => F:1: an entry of the element <postproc_extensions> is empty\nFailed to parse postproc_extensions tag from framework\n => postprocessor extension
<message_catalogs><entry/></message_catalogs> => F:1: an entry of the element <message_catalogs> is empty\n => message catalog
<message_schemas><entry/></message_schemas> => F:1: an entry of the element <message_schemas> is empty\n => message catalog
<providers config_file='x.xml'/> => ROOT/etc/providers/x.xml:1: WORDS\nCould not validate the xml file\n:ROOT/etc/providers/x.xml\n => provider
<providers config_file='custom.xml'/><includes><include>fwd/other.xml</include></includes> => Only one provider configuration file supported. Merge the custom provider configuration files into one file and re-run the analysis.\n => provider
<includes><include/></includes> => F:1: an <include> of this element is empty\n
<kb_mods><mod>$NO_SUCH_NAME</mod></kb_mods> => Exception closing file ROOT/kb/\nF: a <mod> of <kb_mods> expands to nothing\n)";

TEST_F(FwdParserTest, FailuresOfElementsEndTheRunWithBothMessages) {
  installation.write("etc/providers/custom.xml", "<configuration/>");
  installation.write("etc/providers/x.xml", "<x/>");
  installation.fwd("other", "<providers config_file='custom.xml'/>");
  for (const auto& row : rows_of(FAILURES)) {
    installation.fwd("bad", row[0]);
    RunResult result;
    EXPECT_EQ(run("base bad", result), 1);
    const std::string general = "Failed to parse " + row[2] +
                                " tag in framework definition\n"
                                "Could not load framework definitions.\n\n";
    EXPECT_EQ(str::replace(result.errors, "ROOT/etc/fwd/bad.xml", "F"),
              testing::with_words(row[1], "<x/>") + (row[2].empty() ? "" : general));
  }
  RunResult result;
  installation.fwd("one", "<providers config_file='custom.xml'/>" + includes("base"));
  EXPECT_EQ(run("one base", result), 0) << "definitions without a document don't count";
  EXPECT_EQ(installation.without_root(result.config.custom_provider_file),
            "ROOT/etc/providers/custom.xml");
  EXPECT_EQ(result.config.option_flags & option_flag::CUSTOM_PROVIDERS, 32U);
}

// A graph, the names asked for, roots, ready nodes, and every node with its parents.
constexpr const char* GRAPHS = R"(
a: => a => a => a => a()
a: b c;b: d;c: d;d: => a => a => d b c a => a() b(a) c(a) d(b c)
a: b;b: => a a => a a => b a => a() b(a)
a: b;b: => b a => b a => b a => a() b(a)
a: b;b: => a b => a b => b a => a() b(a)
a: b c b;b:;c: => a => a => b c a => a() b(a a) c(a)
a: c;b: c d;c:;d: => b a => b a => c d b a => a() b() c(b a) d(b)
a: b d;b: c;c: d;d: => a => a => d c b a => a() b(a) c(b) d(c a))";

TEST_F(FwdParserTest, GraphsAreWalkedDepthFirstInDocumentOrder) {
  for (const auto& row : rows_of(GRAPHS)) {
    SCOPED_TRACE(row[0]);
    write(row[0]);
    RunResult result;
    ASSERT_EQ(run(row[1], result), 0) << result.errors;
    EXPECT_EQ(names_of(result.config.fwds->roots), row[2]);
    EXPECT_EQ(names_of(result.config.fwds->ready_nodes), row[3]);
    std::string graph;
    std::string parents;
    for (const auto& [key, fwd] : result.config.fwds->by_path) {
      const std::string members = members_of(*fwd->node);
      graph += (graph.empty() ? "" : ";") + fwd->name + (members.empty() ? ":" : ": ") + members;
      parents +=
          (parents.empty() ? "" : " ") + fwd->name + "(" + names_of(fwd->node->parents) + ")";
      EXPECT_EQ(fwd->node->fwd, fwd);
      EXPECT_TRUE(fwd->node->visited);
      for (const auto& group : fwd->node->groups) {
        EXPECT_EQ(group.attributes.at("dependency_type"), "non-blocking");
        EXPECT_EQ(group.attributes.at("passing_constraint"), "0");
      }
    }
    EXPECT_EQ(graph, row[0]);
    EXPECT_EQ(parents, row[4]);
  }
}

// A graph, the definition that is met again, where, and what was finished before.
constexpr const char* CYCLES = R"(
a: a => a => a
a: b;b: a => a => b
a: b c;b: d;c: d a;d: => a => c => d b
a: b;b: c;c: d;d: b => b => d)";

TEST_F(FwdParserTest, ACycleIsNamedAndEndsTheRun) {
  for (const auto& row : rows_of(CYCLES)) {
    write(row[0]);
    RunResult result;
    EXPECT_EQ(run("a", result), 1);
    EXPECT_EQ(result.errors, "\n Circular depedency detected for ROOT/etc/fwd/" + row[1] +
                                 ".xml in ROOT/etc/fwd/" + row[2] +
                                 ".xml\n\nCould not load framework definitions.\n\n");
    EXPECT_EQ(names_of(result.config.fwds->ready_nodes), row[3]);
  }
}

TEST_F(FwdParserTest, TheCycleCheckLooksForTheDependencyItself) {
  testing::HandMadeGraph graph;
  graph.group("a", {"b"});
  graph.group("b", {"c"});
  graph.group("b", {"d"});
  graph.group("d", {"b"});
  Config config;
  FWDParser parser;
  const auto cycle = [&](const char* dependency, const std::shared_ptr<FwdNode>& current) {
    return parser.check_circ_dependency(config, graph.node(dependency), current);
  };
  EXPECT_TRUE(cycle("c", graph.node("c")));
  EXPECT_FALSE(cycle("c", graph.node("a")));
  EXPECT_FALSE(cycle("a", graph.node("c"))) << "a cycle below it isn't its own";
  EXPECT_TRUE(cycle("b", nullptr));
  EXPECT_TRUE(cycle("d", graph.node("a")));
}

// An engine may hand over a graph that it began itself.
TEST_F(FwdParserTest, ACycleThatClosesAboveTheParentIsFound) {
  write("x: y;y: z;z: w;w: x");
  for (const char* closing : {"w", "z"}) {
    installation.fwd(closing, includes("x"));
    testing::HandMadeGraph graph;
    Config config;
    config.root = installation.path();
    FWDParser parser;
    parser.update_defaults(config);
    for (const char* name : {"x", "y"}) {
      const auto node = graph.node(name);
      node->fwd->path = installation.path("etc/fwd/" + std::string(name) + ".xml");
      config.fwds->by_path[node->fwd->path] = node->fwd;
    }
    graph.group("x", {"y"});
    const auto x = graph.node("x");
    auto y = graph.node("y");
    y->parents.clear();
    x->visited = y->visited = true;
    int status = 0;
    const auto call = [&] { status = parser.recurse_fwd_impl(y, config, x, false); };
    const std::string errors = testing::printed(call).errors;
    EXPECT_EQ(status, 1);
    EXPECT_EQ(installation.without_root(errors),
              "\n Circular depedency detected for ROOT/etc/fwd/x.xml in ROOT/etc/fwd/" +
                  std::string(closing) + ".xml\n\n");
    config.fwds->release();
  }
}

TEST_F(FwdParserTest, AMissingIncludeFailsOnceTheWalkReachesIt) {
  installation.fwd("a", includes("b none c"));
  installation.fwd("b", "<fwd_desc>read</fwd_desc>");
  installation.fwd("c", "<fwd_desc>never read</fwd_desc>");
  RunResult result;
  EXPECT_EQ(run("a base", result), 1);
  EXPECT_EQ(result.errors.find("ROOT/etc/fwd/none.xml: No such file or directory\n"), 0U);
  EXPECT_EQ(fwd(result, "b").description + fwd(result, "c").description, "read");
  EXPECT_EQ(names_of(result.config.fwds->ready_nodes), "b");
}

// Each level of a recursive walk takes at least 300 bytes, which this stack doesn't have.
TEST_F(FwdParserTest, ALongChainNeedsNoLargeStack) {
  constexpr std::size_t DEPTH = 4000;
  for (std::size_t i = 0; i < DEPTH; ++i) {
    installation.fwd("c" + std::to_string(i), includes("c" + std::to_string(i + 1)));
  }
  installation.fwd("c" + std::to_string(DEPTH), "");
  RunResult result;
  std::function<void()> load_chain = [&] { load("c0", result); };
  const auto call = [](void* action) -> void* {
    (*static_cast<std::function<void()>*>(action))();
    return nullptr;
  };
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 1'000'000);
  pthread_t thread{};
  ASSERT_EQ(pthread_create(&thread, &attributes, call, &load_chain), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.config.fwds->ready_nodes.size(), DEPTH + 1);
  EXPECT_EQ(result.config.fwds->ready_nodes.back()->fwd->name, "c0");
}

}  // namespace
}  // namespace qorn
