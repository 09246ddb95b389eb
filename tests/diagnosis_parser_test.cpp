#include <filesystem>
#include <iostream>
#include <stdexcept>

#include <gtest/gtest.h>

#include <qorn/preproc/clips_parser.h>

#include "test_installation.h"

namespace qorn::testing {
namespace {

using preproc::clips_parser::parse_diagnoses;

/// Reads a diagnosis file and gives its "DIAGNOSIS=SIGN,SIGN,…" and the words that were written.
std::string signs_of(const std::string& file) {
  Config config;
  std::string errors = printed([&] {
                         try {
                           parse_diagnoses(file, config);
                         } catch (const std::runtime_error& error) {
                           std::cerr << error.what();
                         }
                       }).errors;
  std::string result;
  for (const auto& [id, signs] : config.diagnosis_signs) {
    result += id + "=";
    for (const std::string& sign : signs) {
      result += sign + ",";
    }
  }
  return errors.empty() ? result : errors;
}

TEST(DiagnosisScan, EachIdBehindTheArrowTakesTheIdsOfTheConditions) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", ""},
      {"(defrule a\n(id \"A\")\n(id \"B\")\n =>\n(id \"X\")\n(y)\n(id \"Y\")", "X=A,B,Y=A,B,"},
      {"(id \"A\")\n=>\n(id \"X\")\n(defrule b\n(id \"B\")\n=>\n(id \"X\")\n", "X=A,B,"},
      {"(defrule a\n=>\n(id \"X\")\n", "X="},
      // neither the line of a defrule nor that of an arrow is looked at
      {"(defrule a (id \"A\")\n(id \"B\") => (id \"Y\")\n(id \"X\")\n", "X="},
      {"x (defrule a\n(id \"A\")\n=>\n(id \"X\")\n( defrule\tb\n=>\n(id \"Y\")", "X=A,Y="},
      {"(id \"A\" |\n\"B\" |\n\"C\")\n\"D\"\n=>\n(id \"X\")\n", "X=A,B,C,"},
      {"(id \"A\"|\n(not (id \"B\"))\n(not (id \"C\"))\n=>\n(id \"X\")\n", "X=A,B,"},
      {"(id \"A\" |\n(defrule b\n\"B\")\n=>\n(id \"X\")\n", "X=B,"},
      {"(id \"A\" |\n;\"B\" |\n\n\"C\")\n=>\n(id \"X\")\n", "X=A,"},
      {"; (id \"A\")\n ; (id \"B\")\n=>\n(id \"\")\n(id \"X\" |\n\"Y\")\n", "X=B,"},
  };
  const TemporaryDirectory directory;
  for (const auto& [text, signs] : cases) {
    EXPECT_EQ(signs_of(directory.write("d.clp", text)), signs) << text;
  }
}

TEST(DiagnosisScan, IdsAndQuotesAreFoundInALine) {
  const std::vector<std::vector<std::string>> cases = {
      // line, quoted text, id
      {"(id \"A\") (id \"B\")", "A", "A"}, {"(x \"A\") (id \"B\")", "A", "B"},
      {"(\vid\t\"A\"", "A", "A"},          {"(id \"\")", "", ""},
      {"(id \"a b\" \"c\")", "c", ""},     {"(id \"a\"b\")", "a\"b", "a\"b"},
      {"(not (id \"A\"))", "A", ""},       {"(not\r(id \"A\"))", "A", "A"},
      {"(nothing) (id \"A\")", "A", ""},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(preproc::clips_parser::match_quotes(each[0]), each[1]) << each[0];
    EXPECT_EQ(preproc::clips_parser::find_id(each[0]), each[2]) << each[0];
  }
}

TEST(DiagnosisScan, WhatIsTooMuchEndsInAMessage) {
  const TemporaryDirectory directory;
  std::string text;
  for (int i = 0; i <= 1000; ++i) {
    text = "(id \"A\")\n" + (i == 0 ? "=>\n" : text) + "(id \"X\")\n";
  }
  const std::string file = directory.write("d.clp", text);
  EXPECT_EQ(signs_of(file), "The diagnosis file " + file +
                                " has more than 1,000,000 signs: each id that a rule asserts "
                                "takes all ids of its conditions.");
  std::filesystem::resize_file(file, 100'000'001);
  EXPECT_EQ(signs_of(file), file + ": larger than 100 MB\nError closing file " + file + "\n");
}

}  // namespace
}  // namespace qorn::testing
