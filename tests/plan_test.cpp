#include "plan.h"

#include <gtest/gtest.h>

#include "example_record.h"
#include "test_installation.h"

namespace qorn::frontend {
namespace {

/// The section of `plan` under the heading that starts with `heading`.
std::string section(const std::string& plan, const std::string& heading) {
  const std::size_t start = plan.find("\n" + heading);
  return start == std::string::npos ? "" : plan.substr(start, plan.find("\n\n", start + 1) - start);
}

TEST(Plan, ShowsTheWholeRunAtAGlance) {
  using Note = RunNotes::PassedOver;
  RunNotes notes;
  notes.passed_over = {
      {Note::Kind::PROVIDER, "lost", "/q/etc/providers/lost.xml", "cpu", {}, {}},
      {Note::Kind::SILENT_RULES, "/q/gone.clp", "", "cpu", {}, {}},
      {Note::Kind::RULE_FILES, "/q/d", "", "base", {"/q/base.xml", 7}, {"a.clp", "b.clp"}},
      {Note::Kind::REPORT, "/q/r.xml", "", "", {}, {}},
      {Note::Kind::SILENT_RULES, "/q/gone.clp", "", "base", {}, {}}};
  notes.dropped.passed_over = 2;
  EXPECT_EQ(plan_text(example::Record(), notes), R"(Plan of the run
  Command line:  qorn-collect -f nodes -F base
  Stages:        collect
  Installation:  /q

Nodes: 4
  compute  3  hä")"
                                                 "\xFF"
                                                 R"(,node[1-2]
  head     1  hä")"
                                                 "\xFF"
                                                 R"(

Framework definitions: 4 (rules: 1)
  `- base
     |- cpu
     |  |  * cpu-count
     |  `- sensors
     `- memory
        `- sensors (above)

Providers: 2
  NAME   NODES  TIME LIMIT    ON            COMMAND
  imb    2-16   60 s, linear  compute,head  mpirun imb
  lscpu  1      60 s          any role      lscpu \x1b[31m-J

Option sets: 1
  IMB  small  600 s  SIZE=4

Datastores: 1
  DATA  sqlite  read only  ~/x.db

Node groups: 1
  All-except-nodegroup-gpu (implicit)  2 nodes  runs base, cpu  node[1-2]

Tables: 1
  summary  node (msg-1), value (msg-2)

Reports: 1
  r  m  a, c  when alpha=1

Solutions: 1
  kernel  expected-release[arch=x86_64] 6.1

Diagnoses: 1
  bad-memory  signs: ecc, oom  rules: mem-ecc

Signs: 1
  ecc  rules: mem-ecc

Rules to generate: 1
  CPU  slow  critical  on node1  not(speed ge 2000)

Passed over: 5
  provider lost: no usable document /q/etc/providers/lost.xml (named by cpu)
  rule file /q/gone.clp: no rule (named by cpu, base)
  rule file /q/d: can't be read (named by base, /q/base.xml:7; because of it not scanned: a.clp, b.clp)
  report /q/r.xml: not read, since a table document is named as well
  and up to 2 more
)");
}

TEST(Plan, LeavesOutWhatTheRunDoesNotHave) {
  Config config;
  config.operations = operation::ANALYZE | operation::ANALYZE_ENGINE;
  RunNotes notes;
  notes.dropped = {.opened = 7, .named = 8, .passed_over = 0, .settings = 9};
  EXPECT_EQ(plan_text(config, notes),
            "Plan of the run\n  Command line:\n  Stages:        analyze\n  Installation:\n\n"
            "Nodes: 0\n  none given: they come from the database\n");
}

TEST(Plan, StaysReadableForHugeRuns) {
  example::Record config;
  auto top = example::add_fwd(config, "bottom", {});
  for (int level = 1; level <= 100'000; ++level) {
    top = example::add_fwd(config, "f" + std::to_string(level), {top});
  }
  config.fwds->roots = {top};
  for (int i = 0; i < 1000; ++i) {
    example::add_node(config, "", "n" + std::to_string(7 * i), {"compute"});
  }
  const std::string plan = plan_text(config);
  const std::string tree = section(plan, "Framework definitions");
  EXPECT_LT(tree.size(), 100'000U * 100);
  EXPECT_NE(tree.find("   `- (level 100000) bottom"), std::string::npos);
  const std::string nodes = section(plan, "Nodes");
  EXPECT_LT(nodes.size(), 1000U);
  EXPECT_NE(nodes.find("  compute  1003  "), std::string::npos);
}

}  // namespace
}  // namespace qorn::frontend
