#include <algorithm>
#include <cctype>
#include <sstream>

#include <gtest/gtest.h>

#include "record_json.h"
#include "test_installation.h"

namespace qorn::testing {
namespace {

std::string record_of(const RunResult& result) {
  std::ostringstream text;
  frontend::write_record(result.config, text);
  return text.str();
}

/// Three definitions with faults, whose providers and rule files are the same three times, or are
/// copies with a number of their own.
void write_definitions(const Installation& at, bool shared) {
  for (const std::string number : {"1", "2", "3"}) {
    const std::string copy = shared ? "" : number;
    at.fwd("base" + number, "<providers><provider>two" + copy + "</provider><provider>bad" + copy +
                                "</provider><provider>gone" + copy + "</provider></providers>" +
                                "<kb_mods><mod>rule" + copy + ".clp</mod></kb_mods>");
    at.write("etc/providers/two" + copy + ".xml",
             "<configuration><command>a</command><command>b</command><version>x</version>"
             "<timeout scale='linear'>7</timeout><nodelist number='many'/></configuration>");
    at.write("etc/providers/bad" + copy + ".xml", "<configuration>\n<command></configuration>");
    at.write("kb/rule" + copy + ".clp",
             "(defrule rule\n  \"Text.\"\n(bind ?x \"B\")\n(id \"A\")\n"
             "(id ?x)\n(batch* more" +
                 copy + ".clp)\n(id ?x)\n");
    at.write("kb/more" + copy + ".clp",
             "(defrule more\n(id \"A\")\n(batch* rule" + copy + ".clp)\n");
  }
}

const std::vector<std::string> ARGUMENTS = {"-f",    "nodes", "-l",    "debug", "-F",
                                            "base1", "-F",    "base2", "-F",    "base3"};

void run(const Installation& at, RunResult& result) {
  std::vector<std::string> arguments = ARGUMENTS;
  arguments[1] = at.nodes;
  ASSERT_EQ(at.run(arguments, result), 0) << result.errors;
}

/// Without the name of the installation and without numbers.
std::string comparable(const std::string& text, const Installation& at) {
  std::string result = str::replace(text, at.path(), "ROOT");
  std::erase_if(result, [](unsigned char c) { return std::isdigit(c) != 0; });
  return result;
}

TEST(RepeatedRun, GivesTheSameRecordAndMessages) {
  const Installation installation;
  write_definitions(installation, true);
  RunResult first;
  run(installation, first);
  for (int i = 0; i < 2; ++i) {
    RunResult again;
    run(installation, again);
    EXPECT_EQ(again.errors, first.errors);
    EXPECT_EQ(record_of(again), record_of(first));
  }
}

TEST(RepeatedRun, NamesSharedByDefinitionsCountEachTimeLikeCopies) {
  const Installation together;
  write_definitions(together, true);
  RunResult shared;
  run(together, shared);
  const Installation apart;
  write_definitions(apart, false);
  RunResult copied;
  run(apart, copied);
  EXPECT_EQ(comparable(shared.errors, together), comparable(copied.errors, apart));
  EXPECT_EQ(shared.config.diagnosis_rules, copied.config.diagnosis_rules);
  EXPECT_EQ(shared.config.diagnosis_rules.at("B").size(), 6U);
  for (const auto& [path, fwd] : shared.config.fwds->by_path) {
    const std::string name = str::replace(path, together.path(), apart.path());
    const auto& same = *copied.config.fwds->by_path.at(name);
    EXPECT_TRUE(std::equal(fwd->rules.begin(), fwd->rules.end(), same.rules.begin(),
                           same.rules.end(), [](const Rule& a, const Rule& b) {
                             return a.name == b.name && a.description == b.description;
                           }));
  }
  EXPECT_EQ(shared.config.providers.size(), 1U);
  for (const auto& [name, provider] : copied.config.providers) {
    EXPECT_EQ(shared.config.providers.at("two")->command, provider->command) << name;
    EXPECT_EQ(shared.config.providers.at("two")->timeout, provider->timeout) << name;
  }
}

// Neither size nor time of a file says that it is still the same.
TEST(RepeatedRun, SeesADocumentThatWasRewrittenAtOnceWithTheSameSize) {
  const Installation installation;
  const auto write_all = [&](const std::string& word) {
    installation.fwd("base1", "<fwd_desc>fwd-" + word +
                                  "</fwd_desc><kb_mods><mod>a.clp</mod></kb_mods>"
                                  "<providers><provider>probe</provider></providers>");
    installation.write("etc/providers/probe.xml",
                       "<configuration><command>run-" + word + "</command></configuration>");
    installation.write("kb/a.clp", "(defrule rule-" + word + "\n(id \"id-" + word + "\")\n");
    installation.write("nodes", "node-" + word + "\n");
  };
  for (const std::string word : {"one", "two"}) {
    write_all(word);
    RunResult result;
    ASSERT_EQ(installation.run({"-f", installation.nodes, "-F", "base1"}, result), 0);
    for (const char* stem : {"fwd-", "run-", "rule-", "id-", "node-"}) {
      EXPECT_NE(record_of(result).find(stem + word), std::string::npos) << stem << word;
    }
  }
  installation.write("etc/fwd.xsd", str::replace(read_file(installed("etc/fwd.xsd")),
                                                 "\"fwd_desc\"", "\"fwd_dosc\""));
  RunResult refused;
  EXPECT_EQ(installation.run({"-f", installation.nodes, "-F", "base1"}, refused), 1);
}

}  // namespace
}  // namespace qorn::testing
