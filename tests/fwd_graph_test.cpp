#include <gtest/gtest.h>

#include "test_installation.h"
#include "test_tables.h"

namespace qorn {
namespace {

using testing::HandMadeGraph;
using testing::members_of;
using testing::names_of;
using testing::what_is_thrown;

/// A includes B and C, both include D.
void make_diamond(HandMadeGraph& graph) {
  graph.group("A", {"B", "C"});
  graph.group("B", {"D"});
  graph.group("C", {"D"});
}

TEST(FwdNode, FindGivesACopyThatSharesItsMembers) {
  HandMadeGraph graph;
  make_diamond(graph);
  const auto a = graph.node("A");
  for (const char* path : {"", "/E", "/a", "/AA", "A"}) {
    EXPECT_EQ(a->find(path), nullptr) << path;
  }
  for (const char* name : {"A", "B", "C", "D"}) {
    const auto found = a->find(std::string("/") + name);
    ASSERT_NE(found, nullptr) << name;
    EXPECT_NE(found, graph.node(name));
    EXPECT_EQ(found->shared_from_this(), found);
    EXPECT_EQ(found->fwd, graph.node(name)->fwd);
    EXPECT_EQ(found->parents, graph.node(name)->parents);
    EXPECT_EQ(members_of(*found), members_of(*graph.node(name)));
  }
  const auto copy = a->find("/A");
  EXPECT_EQ(copy->groups[0].members[0], graph.node("B"));
  copy->insert(graph.node("C")->groups);
  EXPECT_EQ(members_of(*copy), "B C | D");
  EXPECT_EQ(members_of(*a), "B C");
  graph.node("C")->fwd->path = "/same";
  graph.node("D")->fwd->path = "/same";
  EXPECT_EQ(a->find("/same")->fwd->name, "D") << "depth first";
}

TEST(FwdNode, CloneIsATreeWithOneGroupANode) {
  HandMadeGraph graph;
  make_diamond(graph);
  graph.group("A", {"E", "B"});
  const auto clone = graph.node("A")->clone();
  EXPECT_TRUE(clone->visited);
  EXPECT_TRUE(clone->parents.empty());
  EXPECT_EQ(members_of(*clone), "B C E B");
  EXPECT_TRUE(clone->groups[0].attributes.empty());
  const auto& members = clone->groups[0].members;
  EXPECT_TRUE(members[2]->visited);
  EXPECT_TRUE(members[2]->groups.empty());
  EXPECT_NE(members[0], members[3]);
  for (const std::size_t way : {0U, 1U}) {
    const auto& d = members[way]->groups[0].members[0];
    EXPECT_EQ(d->fwd, graph.node("D")->fwd);
    EXPECT_EQ(d->parents, (std::vector<std::shared_ptr<FwdNode>>{members[way]}));
  }
  EXPECT_EQ(names_of(graph.node("D")->parents), "B C") << "the graph itself stays as it was";

  const auto below = graph.node("B")->clone_impl(clone);
  EXPECT_EQ(below->parents, (std::vector<std::shared_ptr<FwdNode>>{clone}));
  EXPECT_EQ(members_of(*clone), "B C E B") << "the parent doesn't learn of it";
  release_tree(below);
}

TEST(FwdNode, TreeLinesSayWhichLevelsHaveEnded) {
  HandMadeGraph graph;
  graph.group("A", {"B"});
  graph.group("A", {"C", "D"});
  graph.group("C", {"E"});
  EXPECT_EQ(graph.node("A")->create_tree({false}, true),
            (std::vector<FwdNode::TreeLine>{{"A", {false, true}},
                                            {"B", {false, true, false}},
                                            {"C", {false, true, false}},
                                            {"E", {false, true, false, true}},
                                            {"D", {false, true, true}}}));
}

// 20 layers of 50, each including all of the next: without the bound the memory is not enough.
TEST(TreeBudget, AnExplodingTreeIsRefusedBeforeItIsMade) {
  HandMadeGraph graph;
  std::vector<std::string> above{"top"};
  for (int layer = 0; layer < 20; ++layer) {
    std::vector<std::string> names(50);
    for (std::size_t i = 0; i < names.size(); ++i) {
      names[i] = std::to_string(layer) + "-" + std::to_string(i);
    }
    for (const std::string& each : above) {
      graph.group(each, names);
    }
    above = names;
  }
  const auto top = graph.node("top");
  const std::string words =
      "The framework definition /top unfolds into a tree of more than 1,000,000 definitions: its "
      "includes lead to the same definitions on too many ways.";
  EXPECT_EQ(what_is_thrown([&] { top->clone(); }), words);
  EXPECT_EQ(what_is_thrown([&] { top->clone_impl(graph.node("0-0")); }), words);
  EXPECT_EQ(what_is_thrown([&] { top->create_tree({}, true); }), words);
  EXPECT_EQ(top->find("/19-49")->fwd->name, "19-49") << "found without walking every way";
  EXPECT_EQ(top->find("/missing"), nullptr);
  EXPECT_EQ(graph.node("18-0")->create_tree({}, true).size(), 51U) << "a small part is shown";
  graph.group("19-0", {"18-0"});
  EXPECT_THROW(graph.node("18-0")->clone(), std::runtime_error) << "a cycle has no tree";
}

TEST(TreeBudget, HoldsForAllTreesOfARunElseForEachCall) {
  HandMadeGraph graph;  // 1 + 999 * (1 + 1000) nodes: the budget to the last one
  graph.group("top", std::vector<std::string>(999, "middle"));
  graph.group("middle", std::vector<std::string>(1000, "leaf"));
  const auto top = graph.node("top");
  const auto leaf = graph.node("leaf");
  {
    const preproc::RunScope run;
    EXPECT_EQ(leaf->create_tree({}, true).size(), 1U);
    EXPECT_THROW(top->create_tree({}, true), std::runtime_error);
    const preproc::RunScope another;
    EXPECT_EQ(top->create_tree({}, true).size(), 1'000'000U);
    EXPECT_THROW(leaf->clone(), std::runtime_error);
    EXPECT_THROW(leaf->create_tree({}, true), std::runtime_error);
  }
  EXPECT_EQ(leaf->create_tree({}, true).size() + top->create_tree({}, true).size(), 1'000'001U);

  Config config;  // an engine's call, outside of a run
  config.fwds->roots = {top, leaf};
  preproc::NodeGroupParser parser;
  EXPECT_THROW(parser.create_all_group(config), std::runtime_error);
  config.fwds->roots = {leaf, leaf};
  EXPECT_EQ(parser.create_all_group(config), 0);
  release_frameworks(config);
}

// Recursion over 100,000 levels overflows the stack of 8 MB.
TEST(FwdRegistry, ADeepChainIsFoundClonedAndReleased) {
  constexpr int DEPTH = 100'000;
  const std::string last = std::to_string(DEPTH);
  std::weak_ptr<FwdNode> last_node;
  {
    HandMadeGraph graph;
    for (int i = 0; i < DEPTH; ++i) {
      graph.group(std::to_string(i), {std::to_string(i + 1)});
    }
    last_node = graph.node(last);
    EXPECT_EQ(graph.node("0")->find("/" + last)->fwd, graph.node(last)->fwd);
    EXPECT_EQ(what_is_thrown([&] { graph.node("0")->create_tree({}, true); }),
              "The tree of the framework definition /0 is too deep to be shown.");
    const auto clone = graph.node("0")->clone();
    std::weak_ptr<FwdNode> end = clone;
    while (!end.lock()->groups.empty()) {
      end = end.lock()->groups[0].members[0];
    }
    EXPECT_EQ(end.lock()->fwd, graph.node(last)->fwd);
    release_tree(clone);
    EXPECT_TRUE(end.expired());
    EXPECT_FALSE(last_node.expired()) << "the graph isn't touched";
  }
  EXPECT_TRUE(last_node.expired());
}

}  // namespace
}  // namespace qorn
