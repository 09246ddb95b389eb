#include <filesystem>
#include <set>

#include <gtest/gtest.h>

#include "check.h"
#include "question.h"
#include "test_installation.h"

namespace qorn::testing {
namespace {

/// Where the seeds of a fuzz target stand in an installation.
struct SeedPlace {
  const char* target;
  const char* place;
};
constexpr SeedPlace SEED_PLACES[] = {{"custom_provider_document", "etc/providers/custom.xml"},
                                     {"diagnosis_file", "kb/rules/diagnosis.clp"},
                                     {"framework_definition", "etc/fwd/base.xml"},
                                     {"knowledge_base", "etc/kb/kb.xml"},
                                     {"main_document", "etc/qorn.xml"},
                                     {"message_schema", "kb/data/msg_schema.xml"},
                                     {"node_file", "nodes"},
                                     {"node_groups", "groups.xml"},
                                     {"postprocessor", "etc/postprocessor/table.xml"},
                                     {"provider_document", "etc/providers/probe.xml"},
                                     {"rule_file", "kb/a.clp"},
                                     {"type_map", "etc/CLIPS_type_map.xml"}};

/// Seeds of faults that end a run and that the check doesn't know yet.
const std::set<std::string> NOT_KNOWN_YET = {};

/// A definition that names a document of each kind.
void name_everything(const Installation& at) {
  at.fwd("base",
         "<providers config_file='custom.xml'><provider>probe</provider></providers>"
         "<kb_mods config_file='kb.xml'><mod>a.clp</mod></kb_mods>");
  at.write("etc/providers/custom.xml",
           "<configuration><collector><provider><probe><optionset id='a'><variables><v>1</v>"
           "</variables></optionset></probe></provider></collector></configuration>");
  at.write("etc/kb/kb.xml", "<kb_config><a><b>c</b></a></kb_config>");
  at.write("kb/a.clp", "(defrule a\n");
  at.write("groups.xml", "<nodegroup_config/>");
}

struct Verdicts {
  int run = -1;
  int check = -1;
  std::string words;
};

Verdicts ask_both(const Installation& at) {
  const std::string groups = at.path("groups.xml");
  Verdicts verdicts;
  RunResult result;
  result.config.common_options.parse_node_groups = true;
  verdicts.run = at.run({"-F", "base", "-f", at.nodes, "-g", groups}, result);
  inspect::Question question;
  question.node_file = at.nodes;
  question.node_group_file = groups;
  const Printed said = printed([&] { verdicts.check = inspect::check_installation(question); });
  verdicts.words = result.errors + said.output;
  return verdicts;
}

TEST(Agreement, OfTheCheckWithARunThatFails) {
  {
    const Installation at;
    name_everything(at);
    const Verdicts verdicts = ask_both(at);
    ASSERT_EQ(verdicts.run, 0) << verdicts.words;
    ASSERT_EQ(verdicts.check, 0) << verdicts.words;
  }
  std::size_t failed_runs = 0;
  const auto seeds = std::filesystem::path(QORN_SOURCES).parent_path() / "fuzz/seeds";
  for (const auto& [target, place] : SEED_PLACES) {
    for (const auto& seed : std::filesystem::directory_iterator(seeds / target)) {
      const std::string name = std::string(target) + "/" + seed.path().filename().string();
      const Installation at;
      name_everything(at);
      at.write(place, read_file(seed.path()));
      const Verdicts verdicts = ask_both(at);
      failed_runs += verdicts.run == 1 ? 1 : 0;
      if (verdicts.run == 1 && NOT_KNOWN_YET.count(name) == 0) {
        EXPECT_EQ(verdicts.check, 1) << name << "\n" << verdicts.words;
      }
    }
  }
  EXPECT_GT(failed_runs, 0U);
}

}  // namespace
}  // namespace qorn::testing
