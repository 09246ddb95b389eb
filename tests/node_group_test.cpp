#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include "test_installation.h"
#include "test_tables.h"

namespace qorn {
namespace {

using preproc::NodeGroupParser;
using testing::elements;
using testing::joined;
using testing::members_of;
using testing::names_of;
using testing::rows_of;
using testing::RunResult;

std::string bare(const std::string& path) {
  return std::filesystem::path(path).stem();
}

std::string bare_names(const std::set<std::string>& paths) {
  std::set<std::string> names;
  for (const std::string& path : paths) {
    names.insert(bare(path));
  }
  return joined(names, " ");
}

/// Name, nodes and framework definitions; "*" marks an implicit group, "-" what it leaves out.
std::string to_text(const std::string& key, const ClusterDefinition& group) {
  std::vector<std::string> hosts;
  for (const auto& node : group.get_default_node_list()) {
    hosts.push_back(node->hostname);
  }
  EXPECT_EQ(group.name, key);
  return key + (group.implicit ? "*: " : ": ") + joined(hosts, " ") + " [" +
         bare_names(group.get_root_fwd_path()) + "]" +
         (group.excluded_groups.empty() ? "" : " - " + joined(group.excluded_groups, " "));
}

std::string to_text(const Config& config) {
  std::vector<std::string> groups;
  for (const auto& [key, group] : config.node_groups) {
    groups.push_back(to_text(key, *group));
  }
  return joined(groups, "; ");
}

/// A tree, as "top (b (d)) (c (d))".
std::string tree_of(const FwdNode& node) {
  std::string text = node.fwd->name;
  for (const auto& group : node.groups) {
    for (const auto& member : group) {
      text += " (" + tree_of(*member) + ")";
    }
  }
  return text;
}

/// The body of a document: "a=n1 n2" is a group with two nodes, "top:a" a framework definition
/// that runs on it; what begins with "<" stands as it is.
std::string body_of(const std::string& short_form) {
  std::string body;
  for (const std::string& text : str::split(short_form, ';', false)) {
    const std::size_t end = text.find_first_of("=:");
    const std::string name = text.substr(0, end);
    if (text[0] == '<') {
      body += text;
    } else if (text[end] == '=') {
      body += "<nodegroup name='" + name + "'><nodes>" + elements("node", text.substr(end + 1)) +
              "</nodes></nodegroup>";
    } else {
      body += "<fwd name='" + name + "'><nodegroups>" + elements("group", text.substr(end + 1)) +
              "</nodegroups></fwd>";
    }
  }
  return body;
}

std::shared_ptr<Node> host(const std::string& name) {
  auto node = std::make_shared<Node>();
  node->hostname = name;
  return node;
}

/// Two roots: "top", a diamond over b, c and d, and "solo". Nodes n1 to n5, n5 twice.
class NodeGroupTest : public ::testing::Test {
 protected:
  NodeGroupTest() {
    const std::string d = "<includes><include>fwd/d.xml</include></includes>";
    installation.fwd("top",
                     "<providers><provider>probe</provider></providers><includes><include>fwd/b.xml"
                     "</include><include>fwd/c.xml</include></includes>");
    installation.fwd("b", d);
    installation.fwd("c", d);
    installation.fwd("d", "");
    installation.fwd("solo", "");
    installation.write("hosts", "n3\nn[1-2] role: head\nn5 role: login\nn4\nn5\n");
    installation.write("empty", "# nobody\n");
    installation.write("bad", "n1 n2\n");
  }

  /// A run over both roots with this group document; without nodes an analysis of a database that
  /// holds m1 to m3.
  int run(const std::string& short_form, RunResult& result, bool with_nodes = true) const {
    const std::string body = str::replace(body_of(short_form), "ROOT", installation.path());
    const std::string file =
        installation.write("groups.xml", "<nodegroup_config>" + body + "</nodegroup_config>");
    std::vector<std::string> arguments{"10", "-F", "top", "-F", "solo", "-g", file};
    if (with_nodes) {
      arguments.insert(arguments.end(), {"-f", installation.path("hosts")});
    }
    installation.run(arguments, result);
    const std::string banner = "-g/--groupfile is a beta feature currently in development.\n\n" +
                               util::EngineHelper::format_header() + "\n";
    EXPECT_EQ(result.output.find(banner), 0U);
    result.output = installation.without_root(result.output.substr(banner.size()));
    result.errors = installation.without_root(result.errors);
    result.config.cluster_definition = std::make_shared<ClusterDefinition>();
    for (const char* name : {"m1", "m2", "m3"}) {
      result.config.cluster_definition->insert_node_instance(host(name));
    }
    return result.status;
  }

  testing::Installation installation;
  NodeGroupParser parser;
};

TEST_F(NodeGroupTest, FilesComeBeforeNodesAndTheFirstOfANameStays) {
  installation.write("first", "y role: zz head\nx\n");
  installation.write("second", "x role: login\nw role: boot\n");
  const std::string group = "<nodegroup name='g'><nodes>" + elements("node", "w a a") +
                            "</nodes><nodefiles>" + elements("path", "ROOT/first ROOT/second") +
                            "</nodefiles></nodegroup>";
  RunResult result;
  ASSERT_EQ(run(group, result), 0) << result.errors;
  std::string roles;
  for (const auto& node : result.config.node_groups.at("g")->get_default_node_list()) {
    roles += node->hostname + "(" + joined(node->roles, " ") + ")";
  }
  EXPECT_EQ(roles, "a()w(boot)x()y(zz head)") << "group nodes don't get the role compute";
}

// A document, its groups, and the lines about it: one group and several, an order that doesn't
// matter, definitions that share or divide groups, that are named by path, that are not in the
// run (".xml" anywhere makes a path); groups that are unknown, empty, nameless, double; no group
// at all, where definitions aren't looked at; an implicit group whose name is taken.
constexpr const char* DOCUMENTS = R"(
a=n1;b=n2 => a: n1 []; b: n2 []
top:a;a=n1 => All-except-nodegroup-a*: n2 n3 n4 n5 [top] - a; a: n1 [top]
a=n1;b=n2;top:b a => All-except-nodegroups-a-b*: n3 n4 n5 [top] - a b; a: n1 [top]; b: n2 [top]
a=n1;top:a;d:a => All-except-nodegroup-a*: n2 n3 n4 n5 [d top] - a; a: n1 [d top]
a=n1;b=n2;top:a;d:a b => All-except-nodegroup-a*: n2 n3 n4 n5 [top] - a; All-except-nodegroups-a-b*: n3 n4 n5 [d] - a b; a: n1 [d top]; b: n2 [d]
x=n1 n2 n3 n4 n5;top:x => All-except-nodegroup-x*:  [top] - x; x: n1 n2 n3 n4 n5 [top]
a=n1;ROOT/etc/fwd/top.xml:a => All-except-nodegroup-a*: n2 n3 n4 n5 [top] - a; a: n1 [top]
a=n1;base:a;none:a;to.xmlp:a => a: n1 []
a=n1;top:z => a: n1 []
a=n1;top:e;<nodegroup name='e'><nodefiles><path>ROOT/empty</path></nodefiles></nodegroup> => a: n1 []
a=n1;<nodegroup><nodefiles><path>/none</path></nodefiles></nodegroup> => a: n1 []
a=n1;a=n2 => a: n1 [] => Failed to add ato list of groups\n\n
top:;top:;<fwd/>
a=n1;<fwd/> => a: n1 [] => The framework definition: was not found for this run. No filtering done.\n\n
a=n1;All-except-nodegroup-a=n9;top:a => All-except-nodegroup-a: n9 []; a: n1 [top] => Failed to add All-except-nodegroup-ato list of groups\n)";

TEST_F(NodeGroupTest, WhatADocumentMeans) {
  for (const auto& row : rows_of(DOCUMENTS)) {
    SCOPED_TRACE(row[0]);
    RunResult result;
    ASSERT_EQ(run(row[0], result), 0) << result.errors;
    EXPECT_EQ(to_text(result.config), row[1]);
    EXPECT_EQ(result.errors, row[2]);
    EXPECT_EQ(result.output, "");
  }
}

// A document, the groups that are left, how the errors begin, and the output. "twice NAME" stands
// for the words about a definition that is declared twice.
constexpr const char* FAILURES = R"(
a=n1;<nodegroup name='b'><nodefiles><path>ROOT/bad</path></nodefiles></nodegroup> => a: n1 [] => ROOT/bad:1:  => Please check the hostfile included by the <nodefiles> tag in: ROOT/groups.xml\n
a=n1;<nodegroup name='b'><nodefiles><path>/none</path></nodefiles></nodegroup> => a: n1 [] => /none: No such file or directory\n => Please check the hostfile included by the <nodefiles> tag in: ROOT/groups.xml\n
a=n1;top:a;top: =>  =>  => twice top
a=n1;top:a;ROOT/etc/fwd/top.xml:a =>  =>  => twice ROOT/etc/fwd/top.xml
a=n1;none:;none: =>  =>  => twice none)";

TEST_F(NodeGroupTest, FailuresEndTheRunWithTheirWords) {
  for (const auto& row : rows_of(FAILURES)) {
    SCOPED_TRACE(row[0]);
    RunResult result;
    EXPECT_EQ(run(row[0], result), 1);
    EXPECT_EQ(to_text(result.config), row[1]);
    EXPECT_EQ(result.errors.substr(0, row[2].size()), row[2]);
    EXPECT_EQ(result.errors.empty(), row[2].empty()) << result.errors;
    std::string words = row[3];
    if (words.rfind("twice ", 0) == 0) {
      words = "ERROR: The framework definition " + words.substr(6) +
              " has been declared multiple times in the node group file.\n"
              "Please correct the node group file framework definition groups and try again. For "
              "assistance please refer to either the User's Guide or the sample node group file "
              "provided.\n\n";
    }
    EXPECT_EQ(result.output, words + "Error in parsing node group file: ROOT/groups.xml\n");
  }
}

TEST_F(NodeGroupTest, ASubclusterTurnsTheDocumentOff) {
  for (const bool historic : {false, true}) {
    installation.write("hosts", "n1\nn2 subcluster: " +
                                    std::string(historic ? "west" : "default-subcluster") + "\n");
    RunResult result;
    const std::string unread =
        "<nodegroup name='b'><nodefiles><path>/none</path></nodefiles>"
        "</nodegroup>";
    ASSERT_EQ(run("a=n1;top:a;" + (historic ? unread + ";top:a" : ""), result), 0);
    EXPECT_EQ(parser.create_node_groups(result.config), 0);
    EXPECT_EQ(
        to_text(result.config),
        historic ? "" : "All*: n1 n2 [solo]; All-except-nodegroup-a*: n2 [top] - a; a: n1 [top]");
  }
}

TEST_F(NodeGroupTest, GroupsShareTreesAndNodes) {
  RunResult result;
  ASSERT_EQ(run("a=n1;b=n2;top:a b;b:a", result), 0) << result.errors;
  const auto& groups = result.config.node_groups;
  const auto shared = *groups.at("b")->fwd_nodes.begin();
  EXPECT_EQ(groups.at("a")->fwd_nodes.count(shared), 1U);
  EXPECT_EQ(tree_of(*shared), "top (b (d)) (c (d))");
  EXPECT_NE(shared, result.config.fwds->roots[0]) << "a copy";
  EXPECT_EQ(shared->fwd, result.config.fwds->roots[0]->fwd);
  const auto& rest = *groups.at("All-except-nodegroup-a");
  const auto& smaller_rest = *groups.at("All-except-nodegroups-a-b");
  EXPECT_EQ(tree_of(**rest.fwd_nodes.begin()), "b (d)");
  EXPECT_NE(*smaller_rest.fwd_nodes.begin(), shared) << "an implicit group has a copy of its own";
  EXPECT_EQ(rest.get_default_node_list().back(), smaller_rest.get_default_node_list().back());
  EXPECT_EQ(joined(rest.get_default_node_list().back()->roles, " "), "login")
      << "of a host that the node file names twice, the first";
}

// A document, the roots that "All" runs, the tree of "top" in it, and what was cut out of each
// root. A shared definition is cut where the copy has it first; each group cuts, but the cuts of
// the first group alone are recorded, though it has none.
constexpr const char* ALL = R"(
<!-- --> => solo top => top (b (d)) (c (d))
a=n1 => solo top => top (b (d)) (c (d)) => solo() top()
a=n1;b:a => solo top => top (c (d)) => solo() top(b)
a=n1;d:a => solo top => top (b) (c (d)) => solo() top(d)
a=n1;b:a;d:a => solo top => top (c) => solo() top(b d)
a=n1;b=n2;b:a;c:b => solo top => top => solo() top(b)
a=n1;b=n2;c:b => solo top => top (b (d)) => solo() top()
a=n1;solo:a => top => top (b (d)) (c (d)) => solo() top()
a=n1;b=n2;b:a;top:b => solo =>  => solo() top(b)
All=n1;solo:All => top => top (b (d)) (c (d)) => solo() top())";

TEST_F(NodeGroupTest, AllRunsWhatNoGroupClaims) {
  for (const auto& row : rows_of(ALL)) {
    SCOPED_TRACE(row[0]);
    RunResult result;
    ASSERT_EQ(run(row[0], result), 0) << result.errors;
    EXPECT_EQ(parser.create_node_groups(result.config), 0);
    const ClusterDefinition& all = *result.config.node_groups.at("All");
    EXPECT_EQ(to_text("All", all), "All*: n1 n2 n3 n4 n5 [" + row[1] + "]");
    std::string top;
    for (const auto& tree : all.fwd_nodes) {
      top = tree->fwd->name == "top" ? tree_of(*tree) : top;
      EXPECT_TRUE(tree->parents.empty());
    }
    EXPECT_EQ(top, row[2]);
    std::vector<std::string> removed;
    for (const auto& [root, paths] : all.removed_fwds) {
      removed.push_back(bare(root) + "(" + bare_names(paths) + ")");
    }
    EXPECT_EQ(joined(removed, " "), row[3]);
    EXPECT_EQ(tree_of(*result.config.fwds->roots[0]), "top (b (d)) (c (d))") << "stays whole";
    EXPECT_EQ(parser.create_node_groups(result.config), 0) << "an earlier \"All\" is replaced";
  }
}

TEST_F(NodeGroupTest, WithoutANodeFileTheDatabaseFillsTheImplicitGroups) {
  RunResult result;
  ASSERT_EQ(run("a=m1 other;b=m2 m3;top:a;b:a b", result, false), 0) << result.errors;
  EXPECT_EQ(to_text(result.config),
            "All-except-nodegroup-a*:  [top] - a; All-except-nodegroups-a-b*:  [b] - a b; "
            "a: m1 other [b top]; b: m2 m3 [b]");
  EXPECT_EQ(parser.create_node_groups(result.config), 0);
  EXPECT_EQ(to_text(result.config),
            "All*: m1 m2 m3 [solo]; All-except-nodegroup-a*: m2 m3 [top] - a; "
            "a: m1 other [b top]; b: m2 m3 [b]")
      << "a group that nobody is left for goes";
}

TEST_F(NodeGroupTest, TheDatabaseTouchesOnlyEmptyImplicitGroups) {
  Config config;
  EXPECT_EQ(parser.update_nodes_from_db(config), 1);
  const auto add = [&](const std::string& name, bool implicit, const char* node) {
    auto group = std::make_shared<ClusterDefinition>();
    group->name = name;
    group->implicit = implicit;
    group->excluded_groups = {"gone", "e"};
    if (node != nullptr) {
      group->insert_node_instance(host(node));
    }
    config.node_groups[name] = group;
    return group;
  };
  config.cluster_definition = add("e", false, "m1");
  config.cluster_definition = std::make_shared<ClusterDefinition>(*config.cluster_definition);
  config.cluster_definition->insert_node_instance(host("m2"));
  add("", false, "m1");
  add("empty", false, nullptr);
  add("filled", true, "z");
  add("rest", true, nullptr);
  config.node_groups["null"] = nullptr;
  EXPECT_EQ(parser.create_node_groups(config), 0) << "no group document, nothing to do";
  EXPECT_EQ(config.node_groups.size(), 6U);
  config.node_group_file = "/any";
  EXPECT_EQ(parser.create_node_groups(config), 0);
  EXPECT_EQ(to_text(config),
            "All*: m1 m2 []; e: m1 [] - e gone; filled*: z [] - e gone; rest*: m2 [] - e gone");
}

// What an engine put into the record: a null group, a definition that no root leads to, two trees
// of one path.
TEST_F(NodeGroupTest, AnEnginesOwnGroupsAreTakenAsTheyAre) {
  RunResult result;
  ASSERT_EQ(run("a=n1;b:a", result), 0) << result.errors;
  testing::HandMadeGraph graph;
  Config& config = result.config;
  config.node_groups["null"] = nullptr;
  auto& a = config.node_groups.at("a")->fwd_nodes;
  const auto clones = a;
  a.insert({graph.node("lost"), graph.node("found")});
  const auto parse = [&](const std::string& path) { parser.create_implicit_groups(path, config); };
  parse("/lost");
  EXPECT_EQ(to_text("All-except-nodegroup-a", *config.node_groups.at("All-except-nodegroup-a")),
            "All-except-nodegroup-a*: n2 n3 n4 n5 [b] - a")
      << "stays as it is";
  const auto release = [](const auto& trees) {
    std::for_each(trees.begin(), trees.end(), release_tree);
  };
  release(config.node_groups.at("All-except-nodegroup-a")->fwd_nodes);
  config.node_groups.erase("All-except-nodegroup-a");
  const std::string errors = testing::printed([&] {
                               parse("/lost");
                               parse("/found");
                             }).errors;
  EXPECT_EQ(errors, "Failed to add All-except-nodegroup-ato list of groups\n");
  EXPECT_EQ(to_text("All-except-nodegroup-a", *config.node_groups.at("All-except-nodegroup-a")),
            "All-except-nodegroup-a*: n2 n3 n4 n5 [] - a");
  a.clear();
  release(clones);
  const auto top = config.fwds->roots[0];
  const std::string d = installation.path("etc/fwd/d.xml");
  a.insert({top->find(d), top->find(d)});
  EXPECT_EQ(parser.create_all_group(config), 0);
  for (const auto& tree : config.node_groups.at("All")->fwd_nodes) {
    EXPECT_EQ(tree_of(*tree), tree->fwd->name == "top" ? "top (b) (c)" : "solo");
  }
  installation.write("groups.xml",
                     "<nodegroup_config><nodegroup name='null'><nodes><node>n1</node></nodes>"
                     "</nodegroup>" +
                         body_of("solo:null;solo:null") + "</nodegroup_config>");
  testing::printed([&] { EXPECT_EQ(parser.parse_group_file(config), 1); });
  EXPECT_TRUE(config.node_groups.empty());
}

TEST_F(NodeGroupTest, OnlyTreesThatNobodyElseHoldsAreTakenApart) {
  RunResult result;
  ASSERT_EQ(run("a=n1;b:a", result), 0) << result.errors;
  Config& config = result.config;
  const auto top = config.fwds->roots[0];
  const std::string whole = tree_of(*top);
  const auto add = [&](const std::string& group, const std::shared_ptr<FwdNode>& tree) {
    auto& entry = config.node_groups[group];
    entry = entry == nullptr ? std::make_shared<ClusterDefinition>() : entry;
    entry->fwd_nodes.insert(tree);
  };
  const std::vector<std::pair<const char*, std::function<void()>>> operations = {
      {"All", [&] { parser.create_all_group(config); }},
      {"empty", [&] { parser.update_nodes_from_db(config); }},
      {"empty", [&] { EXPECT_EQ(parser.parse_group_file(config), 1); }}};
  installation.write("groups.xml",
                     "<nodegroup_config>" + body_of("g=n1;b:g;b:g") + "</nodegroup_config>");
  for (const auto& [group, operation] : operations) {
    const auto held_inside = top->clone();
    const auto leaf = held_inside->groups[0].members[0]->groups[0].members[0];
    const auto held = top->clone();
    std::weak_ptr<FwdNode> free = top->clone();
    for (const auto& tree : {top, held, held_inside, free.lock()}) {
      add(group, tree);
    }
    std::weak_ptr<FwdNode> inside = held_inside;
    const_cast<std::shared_ptr<FwdNode>&>(held_inside).reset();
    testing::printed(operation);
    EXPECT_TRUE(free.expired());
    EXPECT_EQ(tree_of(*top), whole);
    EXPECT_EQ(tree_of(*held), whole);
    ASSERT_FALSE(inside.expired());
    EXPECT_EQ(tree_of(*inside.lock()), whole);
    release_tree(held);
    release_tree(leaf);
  }
}

// Only a hand-made node has several parents in one tree.
TEST_F(NodeGroupTest, CuttingGoesByTheParentsThatTheNodeLists) {
  testing::HandMadeGraph graph;
  graph.group("top", {"p1", "p2", "p3", "p4"});
  graph.group("p1", {"a"});
  graph.group("p1", {"x", "b", "x"});
  graph.group("p1", {"x"});
  graph.group("p2", {"c"});
  graph.group("p2", {"x"});
  graph.group("p3", {"x", "d"});
  graph.group("p3", {"x"});
  const auto top = graph.node("top");
  graph.node("x")->parents = {top, graph.node("p1"), graph.node("p2"), graph.node("p4"),
                              graph.node("p3")};
  EXPECT_TRUE(NodeGroupParser::cut_fwd(top, "/x"));
  EXPECT_EQ(members_of(*graph.node("p1")), "a | b x | x") << "the first in the first group with it";
  EXPECT_EQ(members_of(*graph.node("p2")), "c | x") << "later parents: the first group alone";
  EXPECT_EQ(members_of(*graph.node("p3")), "d | x");
  EXPECT_EQ(members_of(*top), "p1 p2 p3 p4");
  EXPECT_EQ(names_of(graph.node("x")->parents), "top p1 p2 p4 p3");
  EXPECT_FALSE(NodeGroupParser::cut_fwd(top, "/none"));
  EXPECT_TRUE(NodeGroupParser::cut_fwd(top, "/top")) << "found, with no parent to lose it";
}

}  // namespace
}  // namespace qorn
