#include <regex>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "commands.h"
#include "test_installation.h"

namespace qorn::testing {
namespace {

/// Option names without their first hyphen: "c" and "-config", as the man page has them.
using Names = std::set<std::string>;

/// The usage text has this option by tradition; no program takes it.
const Names UNKNOWN = {"A", "-async"};

Names in_option_table() {
  Names names;
  for (const option& row : preproc::Options::longopts) {
    names.insert(std::string("-") + (row.name == nullptr ? "" : row.name));
    names.emplace(row.val > 1 ? 1 : 0, static_cast<char>(row.val));  // 1 stands for no letter
  }
  names.erase("-");
  names.erase("");
  return names;
}

/// What the first group of `pattern` matches anywhere in `text`.
Names in_text(const std::string& text, const char* pattern) {
  Names names;
  const std::regex name(pattern);
  for (std::sregex_iterator each(text.begin(), text.end(), name), end; each != end; ++each) {
    names.insert((*each)[1]);
  }
  return names;
}

Names in_usage(preproc::CommonHelpers::OPERATION_TYPE stages) {
  log::OutputLog::set_out_streams("", std::ios_base::out);
  const Printed usage = printed([&] { preproc::PrintHandler().print_args(stages); });
  return in_text(usage.output, "[\\s\\[,]-(-[A-Za-z_-]+|[A-Za-z](?=,))");
}

/// Whether a run of these stages takes the option with one of the values that it may want.
bool takes(const option& row, preproc::CommonHelpers::OPERATION_TYPE stages) {
  bool is_taken = false;
  for (const char* value : {"7", "critical", "id"}) {
    std::vector<std::string> words = {std::string("--") + row.name, value};
    words.resize(row.has_arg == no_argument ? 1 : 2);
    Arguments arguments(words);
    Config config;
    config.operations = static_cast<std::uint64_t>(stages);
    printed([&] {
      is_taken =
          is_taken || preproc::Options().parse_args(arguments.count(), arguments.values(), config);
    });
  }
  return is_taken;
}

Names minus(Names names, const Names& others) {
  for (const std::string& other : others) {
    names.erase(other);
  }
  return names;
}

TEST(Manual, AndUsageNameTheOptionsThatThereAre) {
  const Names options = in_option_table();
  const Names manual = in_text(read_file(QORN_DOCS "/man/qorn.1"), "Fl (\\S+)");
  const Names usage = in_usage(preproc::CommonHelpers::BOTH);
  EXPECT_EQ(minus(manual, UNKNOWN), options);
  EXPECT_EQ(minus(usage, options), UNKNOWN);
  // Deprecated options and further long names are the manual's alone.
  EXPECT_EQ(minus(options, usage),
            (Names{"a", "-all", "x", "-min-severity", "-machinefile", "-nodelist",
                   "-framework-definition", "-grouplist", "-nodegroup", "-level"}));
}

TEST(Manual, OfQornInspectNamesTheOptionsOfItsCommands) {
  Names options = {"-root", "-color"};
  for (const inspect::Command& command : inspect::commands()) {
    for (const inspect::CommandOption& option : command.options) {
      for (const std::string& name : str::split(option.names, ',', false)) {
        if (name.starts_with('-')) {
          options.insert(name.substr(1));
        }
      }
    }
  }
  const Names manual = in_text(read_file(QORN_DOCS "/man/qorn-inspect.1"), "(?:Fl| ,) (\\S+)");
  EXPECT_EQ(minus(manual, {"-"}), options);
}

TEST(Manual, UsageOfAStageNamesTheOptionsThatItTakes) {
  using Helpers = preproc::CommonHelpers;
  const Names in_any = in_usage(Helpers::BOTH);
  for (const auto stages : {Helpers::COLLECT, Helpers::ANALYZE, Helpers::BOTH}) {
    const Names usage = in_usage(stages);
    for (const option& row : preproc::Options::longopts) {
      const std::string name = std::string("-") + (row.name == nullptr ? "" : row.name);
      if (in_any.count(name) != 0) {
        EXPECT_EQ(usage.count(name) != 0, takes(row, stages)) << stages << ": -" << name;
      }
    }
  }
}

}  // namespace
}  // namespace qorn::testing
