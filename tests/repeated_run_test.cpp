#include <cctype>
#include <sstream>

#include <gtest/gtest.h>

#include "record_json.h"
#include "test_installation.h"

namespace qorn::testing {
namespace {

/// Runs on the definitions base1 to base3, and gives what was logged and what the groups and rules
/// of the definitions came to, without the installation's own name and without numbers.
std::string outcome(const Installation& at) {
  RunResult result;
  at.run({"-f", at.nodes, "-l", "debug", "-F", "base1", "-F", "base2", "-F", "base3"}, result);
  EXPECT_EQ(result.status, 0);
  std::ostringstream text;
  text << result.errors;
  for (const auto& [path, fwd] : result.config.fwds->by_path) {
    for (const Rule& rule : fwd->rules) {
      text << path << ' ' << rule.name << ' ' << rule.file << ' ' << rule.description << '\n';
    }
    for (const auto& provider : fwd->provider_groups.at(0)) {
      text << provider->config_file << ' ' << provider->command << ' ' << provider->max_nodes
           << '\n';
    }
  }
  for (const auto& [id, rules] : result.config.diagnosis_rules) {
    text << id << std::string(rules.size(), '+') << '\n';
  }
  std::string comparable = at.without_root(text.str());
  std::erase_if(comparable, [](unsigned char c) { return std::isdigit(c) != 0; });
  return comparable;
}

/// Definitions with faults, whose providers and rule files are the same three times, or copies.
void write_definitions(const Installation& at, bool shared) {
  for (const std::string number : {"1", "2", "3"}) {
    const std::string own = shared ? "" : number;
    at.fwd("base" + number, str::replace("<providers><provider>two#</provider><provider>bad#"
                                         "</provider><provider>gone#</provider></providers>"
                                         "<kb_mods><mod>rule#.clp</mod></kb_mods>",
                                         "#", own));
    at.write("etc/providers/two" + own + ".xml",
             "<configuration><command>a</command><command>b</command><version>x</version>"
             "<max_nodes>x</max_nodes><nodelist number='many'/></configuration>");
    at.write("etc/providers/bad" + own + ".xml", "<configuration>\n<command></configuration>");
    at.write("kb/rule" + own + ".clp",
             "(defrule rule\n  \"Text.\"\n(bind ?x \"B\")\n(id \"A\")\n"
             "(id ?x)\n(batch* more" +
                 own + ".clp)\n(id ?x)\n");
    at.write("kb/more" + own + ".clp", "(defrule more\n(id \"A\")\n(batch* rule" + own + ".clp)\n");
  }
}

TEST(RepeatedRun, NamesSharedByDefinitionsCountEachTimeLikeCopies) {
  const auto last_of = [](bool shared, int runs) {
    const Installation at;  // the environment knows one at a time
    write_definitions(at, shared);
    std::string text;
    for (int i = 0; i < runs; ++i) {
      text = outcome(at);
    }
    return text;
  };
  const std::string copied = last_of(false, 1);
  EXPECT_EQ(last_of(true, 1), copied);
  EXPECT_EQ(last_of(true, 3), copied);
}

// Neither size nor time of a file says that it is still the same.
TEST(RepeatedRun, SeesADocumentThatWasRewrittenAtOnceWithTheSameSize) {
  const Installation at;
  for (const std::string word : {"one", "two"}) {
    at.fwd("base", "<fwd_desc>fwd-" + word +
                       "</fwd_desc><kb_mods><mod>a.clp</mod></kb_mods>"
                       "<providers><provider>probe</provider></providers>");
    at.write("etc/providers/probe.xml",
             "<configuration><command>run-" + word + "</command></configuration>");
    at.write("kb/a.clp", str::replace("(defrule rule-#\n(id \"id-#\")\n", "#", word));
    RunResult result;
    ASSERT_EQ(at.run({"-f", at.write("nodes", "node-" + word), "-F", "base"}, result), 0);
    std::ostringstream record;
    frontend::write_record(result.config, record);
    for (const char* stem : {"fwd-", "run-", "rule-", "id-", "node-"}) {
      EXPECT_NE(record.str().find(stem + word), std::string::npos) << stem << word;
    }
  }
  at.write("etc/fwd.xsd",
           str::replace(read_file(installed("etc/fwd.xsd")), "fwd_desc", "fwd_dosc"));
  RunResult refused;
  EXPECT_EQ(at.run({"-f", at.nodes, "-F", "base"}, refused), 1);
}

}  // namespace
}  // namespace qorn::testing
