#include <cstdlib>

#include <gtest/gtest.h>

#include "test_installation.h"
#include "test_tables.h"

namespace qorn::testing {
namespace {

TEST(Wordexp, ExpandsWhatAShellWouldAndRunsNothing) {
  const TemporaryDirectory directory;
  const EnvironmentVariable home("HOME", "/home/u");
  const EnvironmentVariable value("QORN_TEST", "two  words");
  const EnvironmentVariable unset("QORN_UNSET", nullptr);
  directory.write("d/b.x", "");
  directory.write("d/a.x", "");
  const std::string files = directory.path("d/");
  const std::string marker = directory.path("ran");
  std::vector<std::pair<std::string, std::string>> cases = {
      {"", ""},
      {"plain/path.xml", "plain/path.xml"},
      {"a\\ b", "a b"},
      {"a\\\\b 'c  d' \"e  f\"", "a\\b c  d e  f"},
      {"~/x", "/home/u/x"},
      {"$QORN_TEST/x", "two words/x"},
      {"\"$QORN_TEST\"", "two  words"},
      {"${QORN_UNSET}x", "x"},
      {"${QORN_UNSET:-other}", "other"},
      {files + "*.x", files + "a.x " + files + "b.x"},
      {files + "*.y", files + "*.y"},
      // a text that can't be expanded stays, but for its escaped blanks
      {"(a\\ b)", "(a b)"},
      {"'open\\ quote", "'open quote"},
  };
  for (const std::string& text : std::vector<std::string>{
           "a;b|c&d<e>f{g}", "$(touch " + marker + ")", "`touch " + marker + "`",
           "${QORN_UNSET:-$(touch " + marker + ")}", "\"$(touch " + marker + ")\"", "$((1+1))",
           "$[1+1]", "${QORN_UNSET=x}", "${QORN_UNSET:=x}", "${QORN_UNSET?gone}",
           "${A:-${QORN_UNSET:?gone}}", "/*/*/*/*/*/*", std::string("a\0$HOME", 7)}) {
    cases.emplace_back(text, text);
  }
  for (const auto& [text, expected] : cases) {
    std::string result;
    const Printed outcome = printed([&, &in = text] { result = str::wordexp(in); });
    EXPECT_EQ(result, expected);
    EXPECT_EQ(outcome.errors + outcome.output, "") << text;
  }
  EXPECT_FALSE(directory.has("ran"));
  EXPECT_EQ(std::getenv("QORN_UNSET"), nullptr);
}

// wordexp(3) recursed over its text and overflowed the stack, or walked whole file systems.
TEST(Wordexp, TextsBeyondItsBoundsComeBackAtOnce) {
  for (const char* piece : {"$((", "${x:-", "\"$x", "a b "}) {
    const std::string text = repeated(piece, 200'000);
    EXPECT_EQ(str::wordexp(text), text);
  }
  const EnvironmentVariable home("HOME", "/h");
  const std::string longest = "~/" + std::string(4094, 'x');
  EXPECT_EQ(str::wordexp(longest), "/h" + longest.substr(1));
  EXPECT_EQ(str::wordexp(longest + "x"), longest + "x");
  const std::string words = repeated("a ", 999) + "a";
  EXPECT_EQ(str::wordexp(words + " \"\""), words + " \"\"");
  EXPECT_EQ(str::wordexp("~ " + words.substr(2)), "/h " + words.substr(2));
}

TEST(Str, SplitsStripsAndReplaces) {
  using Pieces = std::vector<std::string>;
  EXPECT_EQ(str::split(",a,,b,", ',', false), (Pieces{"a", "b"}));
  EXPECT_EQ(str::split(",a,,b,", ',', true), (Pieces{"", "a", "", "b", ""}));
  EXPECT_EQ(str::split("", ',', false), Pieces{});
  EXPECT_EQ(str::split("a,,b", ',', true), (Pieces{"a", "", "b"}));
  EXPECT_EQ(str::squeeze("  a  b ,, ", ' '), " a b ,, ");
  EXPECT_EQ(str::squeeze("", ' '), "");
  EXPECT_EQ(str::strip(" \t\n ", ""), "");
  EXPECT_EQ(str::strip("\r a b \v", ""), "a b");
  EXPECT_EQ(str::strip("xaxbx", "x"), "axb");
  EXPECT_EQ(str::replace("aaa", "aa", "b"), "ba");
  EXPECT_EQ(str::replace("a b", " ", "\\ "), "a\\ b");
  EXPECT_EQ(str::replace("abc", "", "x"), "abc");
  EXPECT_EQ(str::upper("straße ä"), "STRAßE ä");
  EXPECT_EQ(str::printable("a\x1b[1m\n\x7f\tä"), "a\\x1b[1m\\x0a\\x7f\\x09ä");
  EXPECT_EQ(str::printable("\u009b1m\u00a0\u015b\n\x9bm\xc2", "\n"),
            "\\xc2\\x9b1m\u00a0\u015b\n\\x9bm\xc2");
  EXPECT_EQ(str::unescape_blanks("a\\ b\\\\ c\\d"), "a b\\ c\\d");
}

TEST(Str, PermutationsAreANumberOrAll) {
  for (const auto& [text, number] : {std::pair("all", ALL_PERMUTATIONS),
                                     {"aLL", ALL_PERMUTATIONS},
                                     {"00", ALL_PERMUTATIONS},
                                     {"007", 7},
                                     {" \n+7", 7}}) {
    EXPECT_EQ(str::get_num_permutations_from_string(text, 9, "there"), number) << text;
  }
  for (const std::string& text :
       std::vector<std::string>{"", "4294967296", "-1", "+-1", "7x", "7 ", "all ", "0x10", "1.5"}) {
    const Printed outcome =
        printed([&] { EXPECT_EQ(str::get_num_permutations_from_string(text, 9, "there"), 9U); },
                log::level::WARNING);
    EXPECT_EQ(outcome.errors, "Invalid number of node list permutations '" + text +
                                  "' in there, using 9 instead.\n");
  }
}

TEST(Str, WrapsAtBlanks) {
  EXPECT_EQ(str::word_wrap("", 10, "p: "), "p: ");
  EXPECT_EQ(str::word_wrap("one two three", 9, ""), "one two\nthree");
  EXPECT_EQ(str::word_wrap("one two three", 10, "- "), "- one two\n  three");
  EXPECT_EQ(str::word_wrap("longerthanaline b", 6, "  "), "  longerthanaline\n  b");
  EXPECT_EQ(str::word_wrap("a  b\nc d\n", 10, ""), "a b\nc d\n");
  EXPECT_EQ(str::word_wrap("exactly ten", 11, ""), "exactly ten");
  const std::string list = "ab: one two three four five six\nabcd: x\nplain\n";
  EXPECT_EQ(str::column_wrap(list, 30, " ", ':', true),
            "ab:   one two three four five\n      six\nabcd: x\nplain\n");
  EXPECT_EQ(str::column_wrap(list, 30, " ", ':', false),
            "ab: one two three four five\n    six\nabcd: x\nplain\n");
  // no room for a column: the description goes below its head
  EXPECT_EQ(str::column_wrap("  a-long-head: some words\n", 20, " ", ':', true),
            "  a-long-head:\n      some words\n");
  EXPECT_EQ(str::clean_previous_formatting("\n a\t\tb \r\n c\n"), "a b c");
  for (const auto& [text, width] :
       {std::pair("120", 120U), {"0", 80U}, {"-5", 80U}, {"12x", 80U}, {"99999999999", 80U}}) {
    const EnvironmentVariable columns("COLUMNS", text);
    printed([&, &expected = width] { EXPECT_EQ(str::terminal_width(), expected); });
  }
}

}  // namespace
}  // namespace qorn::testing
