#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <qorn/preproc/clips_parser.h>

#include "test_installation.h"
#include "test_tables.h"

namespace qorn::testing {
namespace {

using preproc::RunScope;
using preproc::clips_parser::parse_clips_rules;
using namespace std::string_literals;

/// A directory of rule files, and what was found in them so far.
class RuleFiles : public TemporaryDirectory {
 public:
  RuleFiles() = default;
  explicit RuleFiles(const std::string& text) { write("r", text); }

  /// Scans a file: "STATUS NAME{DESCRIPTION}… ID=RULE,RULE,…", then the words that were written,
  /// those of an exception with the status -1.
  std::string scan(const std::string& name) {
    int status = -1;
    const std::string errors = printed([&] { status = status_of(name); }).errors;
    return found(status) + errors;
  }

  std::string found(int status) const {
    std::string text = std::to_string(status);
    for (const Rule& rule : rules) {
      text += " " + rule.name + "{" + rule.description + "}";
    }
    for (const auto& [id, names] : config.diagnosis_rules) {
      text += " " + id + "=" + joined(names) + ",";
    }
    return text;
  }

  int status_of(const std::string& name) {
    try {
      return parse_clips_rules(path(name), rules, config, path());
    } catch (const std::runtime_error& error) {
      std::cerr << error.what();
      return -1;
    }
  }

  std::set<Rule> rules;
  Config config;
};

TEST(RuleScan, FindsNameTextAndIdsOfAFile) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", "0"},
      // the name: the last defrule's; blanks in front are squeezed after its place is taken
      {"(defrule check-x ; why\n", "0 check-x{}"},
      {"(defrule a\n(defrule b (defrule c", "0 b{}"},
      {"(defrule\n(defrulex y\n( defrule y\n;(defrule z\n", "0"},
      {" ; (defrule a\n", "0 a{}"},
      {"  (defrule check-x\n", "0 heck-x{}"},
      {"\t\t(defrule  check-x\n", "0 check-x{}"},
      {"                    (defrule x\n", "0"},
      {"(defrule a\0b c"s, "0 a\0b{}"s},
      // the text
      {"(defrule r\n  \"One\n\n   two\"\n  (x)\n; no\n  \"three\"",
       "0 r{  One\n\n   two\n  three\n}"},
      {"(defrule r\n  \"a\" and \"b\"\n(x)\n \"c\n(y \"d\"\n", "0 r{  a and b\n(y d\n}"},
      {"(defrule r\n  \"a\"\r\n(x)\r\n", "0 r{  a\r\n(x)\r\n}"},
      {"  \"without a rule\"\n", "0"},
      // the ids, under the name seen so far
      {"(id \"A\")\n(defrule r (id \"A\")\n(id \"A\")\n", "0 r{} A=,r,r,"},
      {"((\tid\v\"A\"\f)\n(id \"B\") (id \"C\")\n(cid \"D\")\n(id \"E\"", "0 A=, B=,"},
      {"(id \"\")\n(id \"a\"b)(\"\0\")"s, "0 =, a\"b)(\"\0=,"s},
      {"; (id \"A\")\n ; (id \"B\")\n(id ?)\n(id C)\n(id ?x)\n", "0 B=,"},
      {"(not (id \"A\"))\n(knot)(id \"B\")\n((not (id \"C\")\n", "0 B=,"},
      {"(not\r(id \"A\"))\n(not\x85(id \"B\"))", "0 A=,"},
  };
  for (const auto& [text, found] : cases) {
    EXPECT_EQ(RuleFiles(text).scan("r"), found) << text;
  }
}

TEST(RuleScan, AVariableIdMeetsEveryBindUpToItsLine) {
  RuleFiles files(
      "(bind ?x \"B\")\n(defrule r\n;(bind ?x \"D\")\n(id ?x)\n( bind\t?x  \"A\" )(id ?x)\n"
      "(bind ?x \"\")(bind ?x C)\n(not (id ?x))\n(bind ?x \"later\")\n");
  EXPECT_EQ(files.scan("r"), "0 r{} A=r, B=r,r,");
  // the first variable of the process stays the one that is looked up
  EXPECT_EQ(RuleFiles("(bind ?y \"A\")\n(bind ?x \"B\")\n(id ?y)\n").scan("r"), "0 B=,");
}

// A process has one pattern for binds: each case runs in a child, which prints what it found. Tests
// of this name run ahead of those that make the pattern.
TEST(RuleScanDeathTest, AVariableIsAPattern) {
  const std::string invalid = "^.*/r:2: the variable '.*' gives no valid search pattern.*-1$";
  const std::vector<std::vector<std::string>> cases = {
      {"?x", "(bind ?x \"A\")", "^0 A=,$"},
      {"?x", "(bind ??x \"A\")", "^0$"},
      {"?x.", "(bind ?x- \"A\")", "^0 A=,$"},
      {"?x.", "(bind ?x\r \"A\")", "^0$"},
      {"?*id*", "(bind ??iddd \"A\")", "^0 A=,$"},
      {"?[^x]+", "(bind ?abc \"A\")", "^0 A=,$"},
      {"?x{2}", "(bind ?xx \"A\")", "^0 A=,$"},
      {"?x\\", "(bind ?x{1} \"A\")", "^0 A=,$"},
      {"?\\x41", "(bind ?A \"A\")", "^0 A=,$"},
      {"?\\1", "(bind ?bind \"A\")", "^0 A=,$"},
      {"?x&~\"y\"", "(bind ?x&~\"y\" \"A\")", "^0 y=,$"},
      {"?x|\"A\"", "(foo \"A\"  \"B\")", "^0 A=,$"},  // the second alternative needs no bind
      {"?(y", "", invalid},
      {"?x|?y", "", invalid},
      {"?[y", "", invalid},
      {"?x{3,2}", "", invalid},
      {"?x{2000}", "", invalid},
  };
  for (const auto& each : cases) {
    RuleFiles files(each[1] + "\n(id " + each[0] + ")\n");
    const auto scan_and_print = [&] {
      const int status = files.status_of("r");
      std::cerr << files.found(status);
      std::_Exit(0);
    };
    EXPECT_EXIT(scan_and_print(), ::testing::ExitedWithCode(0), each[2]) << each[0];
  }
}

TEST(RuleScan, ALoadedFileIsScannedAtThePlaceOfItsLine) {
  RuleFiles files(
      "(defrule same\n(id \"A\")\n(batch* in)\n(defrule two\n(load* in ) x\n(id \"A\")\n"
      "(defrule same\n  \"outer\"\n");
  files.write("in", "(id \"A\")\n(defrule same\n  \"inner\"\n");
  EXPECT_EQ(files.scan("r"), "0 same{  inner\n} A=same,,,two,");
  const std::vector<std::pair<std::string, bool>> forms = {
      {"(batch* in)", true},      {"(load*  in", true},     {"(loads \"* ./in) x", true},
      {"(batch in)", false},      {"(load \"in\")", false}, {" (batch* in)", false},
      {"(batch* \"in\")", false}, {"(batch*)", false},      {"(batch* )in", false},
      {"(load", false},           {"(batch* none)", false}};
  for (const auto& [line, leads] : forms) {
    files.rules.clear();
    files.config = Config();
    files.write("r", line);
    EXPECT_EQ(files.scan("r"), leads ? "0 same{  inner\n} A=," : "0") << line;
  }
}

TEST(RuleScan, AFileOnItsOwnChainIsNamedAndNotScannedAgain) {
  RuleFiles files("(defrule r\n(batch* b)\n(id \"A\")\n(batch* ./r)\n(batch* ./r)\n");
  files.write("b", "(defrule b\n(batch* r)\n");
  const std::string words = " loads itself, directly or through others: not scanned again.\n";
  const std::string both =
      "The rule file " + files.path("r") + words + "The rule file " + files.path("./r") + words;
  const RunScope scope;
  EXPECT_EQ(files.scan("r"), "0 b{} r{} A=r," + both);
  EXPECT_EQ(files.scan("r"), "0 b{} r{} A=r,r," + both);
}

TEST(RuleScan, WhatCantBeReadEndsTheScanAndWhatCantBeOpenedDoesNot) {
  RuleFiles files;
  std::filesystem::create_directory(files.path("folder"));
  ASSERT_EQ(mkfifo(files.path("pipe").c_str(), 0600), 0);
  std::filesystem::resize_file(files.write("large", ""), 100'000'001);
  for (const std::string name : {"folder", "pipe", "large"}) {
    files.write("r", "(defrule r\n(id \"A\")\n(load* " + name + ")\n(id \"B\")\n");
    files.config = Config();
    const std::string file = files.path(name);
    std::string words = name == "large" ? file + ": larger than 100 MB\n" : "";
    words.append("Exception closing file ").append(file).append("\n");
    EXPECT_EQ(files.scan("r"), "1 A=r," + words);
  }
  files.config = Config();
  EXPECT_EQ(files.scan("missing"), "0");
}

TEST(RuleScan, LongLinesAndDeepChainsCostNeitherStackNorOpenFiles) {
  RuleFiles files;
  const rlimit few{32, 32};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  constexpr int DEPTH = 10'000;
  for (int i = 0; i < DEPTH; ++i) {
    std::ofstream(files.path(std::to_string(i))) << "(batch* " << i + 1 << ")\n";
  }
  std::string blanks;
  blanks.resize(10'000'000, ' ');
  files.write(std::to_string(DEPTH), "(id \"A\")" + blanks + "(not" + blanks + "(id \"" + blanks);
  EXPECT_EQ(files.scan("0"), "0 A=,");
}

TEST(RuleScan, OneFileIsGivenWithTheLineOfEachThing) {
  RuleFiles files(
      "; (id \"no\")\n(defrule r\n(id \"A\")\n(id ?x)\n(bind ?x \"V\")\n(id ?x)\n"
      "(batch* in)\n(load in)\n");
  files.write("in", "(defrule in\n");
  std::filesystem::create_directory(files.path("folder"));
  const auto scanned = [&](const char* name) {
    return preproc::clips_parser::scan_rule_file(files.path(name), files.path("."));
  };
  std::string text;
  const auto file = scanned("r");
  for (const auto& step : file->steps) {
    text += std::to_string(step.line) + " " + files.without_root(step.text) + " " + step.rule +
            std::to_string(step.values) + (step.is_starred ? "*" : "") + ";";
  }
  EXPECT_EQ(text, "3 A r0;4 ?x r0;6 ?x r1;7 ROOT/./in 0*;8 ROOT/./oad in 0;");
  EXPECT_EQ(file->rule.name, "r");
  using State = preproc::clips_parser::RuleFile::State;
  EXPECT_EQ(scanned("missing")->state, State::NOT_OPENED);
  EXPECT_EQ(scanned("folder")->state, State::FAILED);
  const RunScope scope;
  files.scan("r");
  files.write("in", "");
  EXPECT_EQ(scanned("in")->rule.name, "");
  EXPECT_EQ(preproc::clips_parser::scan_rule_file(files.path("in"), files.path())->rule.name, "in")
      << "as the run has scanned it";
}

TEST(RuleScan, WhatMultipliesEndsInAMessage) {
  RuleFiles files;
  std::string binds;
  std::string variables;
  for (int i = 0; i < 1000; ++i) {
    const std::string load = "(batch* " + std::to_string(i + 1) + ")\n";
    files.write(std::to_string(i), load + load);
    binds += "(bind ?x \"A\")\n";
    variables += "(id ?x)\n";
  }
  files.write("full", binds + variables);
  EXPECT_EQ(files.status_of("full"), 0);
  const RunScope scope;  // with an allowance of its own
  EXPECT_EQ(files.status_of("full"), 0);
  EXPECT_EQ(files.config.diagnosis_rules["A"].size(), 2'000'000U);
  files.config = Config();
  files.write("more", "(bind ?x \"A\")\n(id ?x)\n");
  EXPECT_EQ(files.scan("more"),
            "-1The rule file " + files.path("more") +
                " brings the ids registered by variables to more than 1,000,000: each variable of "
                "an id slot meets each bind ahead of it.");
  EXPECT_EQ(files.scan("0"), "-1The rule file " + files.path("0") +
                                 " loads more than 256 MB or 1,000,000 files, each counted as "
                                 "often as it is loaded.");
}

TEST(RuleScan, WithinARunAFileIsScannedOnceAndBringsTheSameEachTime) {
  RuleFiles files("(defrule r\n  \"text\"\n(id \"A\")\n(batch* in)\n(id \"B\")\n");
  files.write("in", "(bind ?x \"V\")\n(id ?x)\n");
  {
    const RunScope scope;
    EXPECT_EQ(files.scan("r"), "0 r{  text\n} A=r, B=r, V=,");
    files.rules.clear();
    files.write("in", "");
    files.write("r", "");
    { const RunScope nested; }
    EXPECT_EQ(files.scan("r"), "0 r{  text\n} A=r,r, B=r,r, V=,,");
  }
  files.config = Config();
  const RunScope next;
  files.rules.clear();
  EXPECT_EQ(files.scan("r"), "0");
}

}  // namespace
}  // namespace qorn::testing
