#include <stdexcept>

#include <gtest/gtest.h>

#include "test_installation.h"
#include "test_tables.h"

namespace qorn::testing {
namespace {

/// The arguments of a line; % stands for a blank within one.
std::vector<std::string> words_of(const std::string& line) {
  std::vector<std::string> words = str::split(line, ' ', false);
  for (std::string& word : words) {
    word = str::replace(word, "%", " ");
  }
  return words;
}

std::string show(const char* name, const std::string& value) {
  return value.empty() || value == "0" ? "" : std::string(" ") + name + "=" + value;
}

std::string show(const char* name, std::uint64_t value) {
  return show(name, std::to_string(value));
}

/// What options have changed, as "name=value" each.
std::string settings(const Config& config) {
  std::string text;
  for (const Sorting& sorting : config.sort_fields) {
    text += (sorting.ascending ? " sort=+" : " sort=-") +
            std::to_string(static_cast<int>(sorting.field));
  }
  for (const ConfigParam& param : config.config_params) {
    text += " " + param.group + param.name + "=" + joined(param.values);
  }
  text +=
      show("config", config.config_file) + show("nodes", config.node_file) +
      show("fwd", joined(config.fwds->names)) + show("db", joined(config.db_names)) +
      show("groups", config.node_group_file) + show("log", config.log_file) +
      show("level", config.log_level) + show("debug", config.common_options.debug_log) +
      show("include", joined(config.node_include)) + show("permutations", config.num_permutations) +
      show("severity", std::to_string(config.min_severity)) +
      show("re_collect", config.re_collect) +
      show("no_environment", config.env_propagation ? 0U : 1U) +
      show("ignore_subclusters", config.ignore_subclusters) + show("flags", config.option_flags);
  return str::stripws(text);
}

/// Lets options read a line for the stages in `config`.
Printed parse(preproc::Options& options, const std::string& line, Config& config, bool& accepted) {
  Arguments arguments(words_of(line));
  log::OutputLog::set_out_streams("", std::ios_base::out);
  return printed(
      [&] { accepted = options.parse_args(arguments.count(), arguments.values(), config); });
}

constexpr const char* NO_COLLECT =
    "qorn-collect: invalid option -- cannot run qorn-collect on analyze only options.\n";
constexpr const char* NO_ANALYZE =
    "qorn-analyze: invalid option -- cannot run qorn-analyze on collect only options.\n";
constexpr const char* PERMUTATIONS =
    "Invalid value specified for number of nodelist permutations in the command line. Valid "
    "values are positive integers, the keyword 'all', or the number 0 to represent all.\n";
constexpr const char* LEVELS =
    "Recognized values are (in increasing order of verbosity): alert, critical, error, warning, "
    "notice, info, debug [default = error].\n";
constexpr const char* SEVERITY =
    "Recognized values are (in increasing order of severity): informational, warning, and "
    "critical [default = warning].\n";
constexpr const char* OLD_SEVERITY =
    "'-x' has been deprecated. Instead use -z <informational|warning|critical>\n";
constexpr const char* BETA = "-g/--groupfile is a beta feature currently in development.\n\n";

std::string only_one(const std::string& flag, const std::string& what) {
  return "WARNING: " + flag + " only supports one " + what +
         " at a time.\nWARNING: Only the first specified " + what + " will be used.\n\n";
}

constexpr std::uint64_t NEITHER = 0;
constexpr std::uint64_t COLLECT = 1;
constexpr std::uint64_t ANALYZE = 6;
constexpr std::uint64_t BOTH = 7;

struct OptionCase {
  std::uint64_t operations;
  const char* line;
  bool accepted;
  std::string settings;
  std::string errors;
};

const std::vector<OptionCase> OPTION_CASES = {
    // both stages
    {COLLECT, "-c x --config y", true, "config=y", ""},
    {COLLECT, "-f a --nodelist b --machinefile c", true, "nodes=a",
     only_one("-f/--nodefile", "nodefile") + only_one("-f/--nodefile", "nodefile")},
    {ANALYZE, "-F a --fwd=b --framework-definition c", true, "fwd=a,b,c flags=1", ""},
    {BOTH, "-F a -X b -F c -a --FWD_description d", true, "fwd=a,b flags=17",
     only_one("-X/--FWD_description", "Framework Definition")},
    {COLLECT, "-D a%b --db c", true, "db=a\\ b,c", ""},
    {COLLECT, "--level debug", true, "level=debug debug=1", ""},
    {COLLECT, "--log-level alert -l info", true, "level=info", ""},
    {COLLECT, "-l bogus", false, "flags=8",
     std::string("Invalid value specified for log-level: bogus\n") + LEVELS + NO_COLLECT},
    {BOTH, "-l Debug", false, "flags=8",
     std::string("Invalid value specified for log-level: Debug\n") + LEVELS},
    {BOTH, "-h -v -f n", true, "nodes=n flags=10", ""},
    {NEITHER, "-D a --help --version", true, "db=a flags=10", ""},
    {NEITHER, "-f a", false, "flags=8", ""},
    // collect
    {COLLECT, "-a", true, "fwd=health_base flags=1",
     "-a/--all has been deprecated. Please use Framework Definitions instead.\n"},
    {COLLECT, "-C -e -S -r 3", true,
     "permutations=3 re_collect=1 no_environment=1 ignore_subclusters=1", ""},
    {BOTH, "--re-collect-data --environment-propagation-off --ignore-subclusters", true,
     "re_collect=1 no_environment=1 ignore_subclusters=1", ""},
    {BOTH, "-r 7 -r 0", true, "permutations=4294967295", ""},
    // the level holds from its option on
    {BOTH, "-r 1 -l debug --permutations ALL", true, "level=debug debug=1 permutations=4294967295",
     "Over riding XML specified permutations with value: 4294967295\n"},
    {COLLECT, "-r -1", false, "flags=8", std::string(PERMUTATIONS) + NO_COLLECT},
    {BOTH, "-r 07", false, "flags=8", PERMUTATIONS},
    {BOTH, "-r +7", false, "flags=8", PERMUTATIONS},
    {BOTH, "-r 7x", false, "flags=8", PERMUTATIONS},
    {COLLECT, "-C -o x", false, "re_collect=1 flags=8", NO_COLLECT},
    // analyze
    {ANALYZE, "-r 3", false, "flags=8", NO_ANALYZE},
    {ANALYZE, "-g a%b --grouplist c --nodegroup d", true, "groups=a\\ b",
     only_one("-g/--groupfile", "set the group configuration file") +
         only_one("-g/--groupfile", "set the group configuration file")},
    {ANALYZE, "-o a --logfile b", true, "log=a", only_one("-o/--logfile", "set the logfile")},
    {ANALYZE, "-n node1 --node-include node_2", true, "include=node1,node_2", ""},
    {ANALYZE, "-n a%b", false, "flags=8",
     std::string("Invalid value specified for hostname: a\\ b\n") + NO_ANALYZE},
    {ANALYZE, "-t 7 --threshold-too-old 8days -t -1", true,
     "data-age-threshold=7 data-age-threshold=8 data-age-threshold=-1", ""},
    {ANALYZE, "-t abc -t 99999999999999999999 -t 0 -t 4294967296", true, "",
     "Invalid value specified for threshold-too-old: abc.\n"
     "Invalid value specified for threshold-too-old: 99999999999999999999.\n"},
    {ANALYZE, "-z critical --min-severity 30x", true, "severity=30", OLD_SEVERITY},
    {ANALYZE, "--fail-level warning", true, "severity=25", ""},
    {BOTH, "-z critical", true, "severity=75", ""},
    {ANALYZE, "-z critical -z informational", true, "", ""},
    {ANALYZE, "-z Warning", false, "flags=8",
     std::string("Invalid value specified for severity: Warning\n") + SEVERITY + NO_ANALYZE},
    {ANALYZE, "--sort-asc id --sort-desc severity --sort-asc node", true, "sort=+0 sort=-2 sort=+1",
     ""},
    {ANALYZE, "--sort-asc bogus", false, "flags=8",
     std::string("unsupported sort field: 'bogus', exiting.\n") + NO_ANALYZE},
    // what getopt_long says itself
    {COLLECT, "-C -Z -e", false, "re_collect=1 flags=8", "qorn: invalid option -- 'Z'\n"},
    {BOTH, "-h --bogus", false, "flags=8", "qorn: unrecognized option '--bogus'\n"},
    {BOTH, "-f", false, "flags=8", "qorn: option requires an argument -- 'f'\n"},
    {BOTH, "--all=x", false, "flags=8", "qorn: option '--all' doesn't allow an argument\n"},
    {BOTH, "--fw a --group b --sort-a id --nodef c", true, "sort=+0 nodes=c fwd=a groups=b flags=1",
     ""},
    {BOTH, "--node x", false, "flags=8",
     "qorn: option '--node' is ambiguous; possibilities: '--nodelist' '--nodegroup' "
     "'--node-include'\n"},
    // stray arguments, wherever they stand
    {COLLECT, "one -f a two%words -- -e", false, "nodes=a flags=8",
     "Invalid option flag arguments: one two words -e \n\n"},
};

TEST(CommandLine, EachOptionFillsItsFieldOrIsRefusedInItsWords) {
  const EnvironmentVariable columns("COLUMNS", "80");
  for (const OptionCase& each : OPTION_CASES) {
    SCOPED_TRACE(std::to_string(each.operations) + ": " + each.line);
    Config config;
    config.operations = each.operations;
    preproc::Options options;
    bool accepted = false;
    const Printed text = parse(options, each.line, config, accepted);
    EXPECT_EQ(accepted, each.accepted);
    EXPECT_EQ(settings(config), each.settings);
    EXPECT_EQ(text.errors, each.errors);
    const char* head = each.operations == COLLECT   ? "Usage: qorn-collect [options]\n"
                       : each.operations == ANALYZE ? "Usage: qorn-analyze [options]\n"
                                                    : "Usage: qorn [options]\n";
    for (const char* piece :
         {head, "\n[options]\n  ", "\n[keywords]\n  #:", "see the man page\n\n"}) {
      EXPECT_EQ(text.output.find(piece) != std::string::npos, !each.accepted) << piece;
    }
    EXPECT_EQ(text.output.find(BETA) != std::string::npos, !config.node_group_file.empty());
    for (const std::string& row : str::split(text.output, '\n', false)) {
      EXPECT_LE(row.size(), 80U) << row;
    }
  }
}

TEST(CommandLine, ANumberThatIsNoneEndsTheRunWithTheBareWord) {
  const Installation installation;
  for (const char* line : {"01 -r abc", "01 -r 99999999999", "01 -r %1", "10 -x abc"}) {
    RunResult result;
    EXPECT_EQ(installation.run(words_of(line), result, Cause::ARGUMENT), 1) << line;
    EXPECT_EQ(result.errors, (line[0] == '1' ? OLD_SEVERITY : "") + std::string("stoi\n")) << line;
    EXPECT_EQ(result.output, "");
  }
}

// A line that ended within a word used to leave the rest of the word to the next one.
TEST(CommandLine, SeveralLinesInOneProcessKnowNothingOfOneAnother) {
  for (const char* earlier : {"-hZ", "-hZC", "stray -f x other", "-f"}) {
    for (const char* line : {"-e -F a", "01 -e -F a"}) {
      Config config;
      config.operations = BOTH;
      preproc::Options options;
      bool accepted = true;
      parse(options, earlier, config, accepted);
      EXPECT_FALSE(accepted);
      Config next;
      next.operations = BOTH;
      options.is_command = *line == '0';
      EXPECT_EQ(parse(options, line, next, accepted).errors, "") << earlier;
      EXPECT_EQ(settings(next), "fwd=a no_environment=1 flags=1") << earlier;
    }
  }
}

TEST(CommandLine, TheFirstArgumentSelectsTheCommand) {
  struct Case {
    const char* program;
    const char* line;
    int status;
    const char* command_line;
    std::uint64_t operations;
    const char* output;  // a piece of it
  };
  const char* generate = "Usage: qorn generate_rules <expected_data_xml_file>\n";
  const std::vector<Case> cases = {
      {"/opt/qorn/bin/qorn", "01 -f nodes", 0, "qorn-collect -f nodes", 1, ""},
      {"qorn", "10 -F a%b", 0, "qorn-analyze -F a b", 6, ""},
      {"./qorn", "", 0, "qorn", 7, ""},
      {"qorn/", "-f 01", 0, " -f 01", 7, ""},
      {"qorn", "10 -h", 2, "qorn-analyze -h", 6, "Usage: qorn-analyze [options]\n"},
      {"qorn", "01 -v", 2, "qorn-collect -v", 1, "Qorn cluster diagnostics, version "},
      {"qorn", "collect", 1, "qorn collect", 7, "Usage: qorn [options]\n"},
      {"qorn", "-h 01", 1, "qorn -h 01", 7, "Usage: qorn [options]\n"},
      {"qorn", "generate_rules", 1, "qorn generate_rules", 0, generate},
      {"qorn", "generate_rules a b", 1, "qorn generate_rules a b", 0, generate},
      {"qorn", "generate_rule a", 1, "qorn generate_rule a", 7, "Usage: qorn [options]\n"},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.line);
    Arguments arguments(words_of(each.line), each.program);
    Config config;
    config.option_flags = option_flag::USAGE | option_flag::FWD_DESCRIPTION;
    preproc::Preprocessor preprocessor;
    log::OutputLog::set_out_streams("", std::ios_base::out);
    const Printed text = printed([&] {
      EXPECT_EQ(preprocessor.ProcessCommand(arguments.count(), arguments.values(), config),
                each.status);
    });
    EXPECT_EQ(config.command_line, each.command_line);
    EXPECT_EQ(config.operations, each.operations);
    EXPECT_NE(text.output.find(each.output), std::string::npos) << text.output;
    EXPECT_EQ(text.output.empty(), each.status == 0);
  }
}

TEST(CommandLine, OddCallsOfTheDispatcherEndInExceptions) {
  preproc::Preprocessor preprocessor;
  Config config;
  char* no_name[] = {nullptr};
  EXPECT_THROW(preprocessor.ProcessCommand(0, no_name, config), std::logic_error);
  preproc::Preprocessor::cmd_struct empty{"empty", {}};
  EXPECT_THROW(preprocessor.ParseCommand(&empty, 0, no_name, config), std::bad_function_call);
}

TEST(CommandLine, TheCloseDelayIsResetByBadTextAndKeptByNegativeNumbers) {
  struct Case {
    const char* variable;
    const char* argument;
    int delay;
    std::string errors;
  };
  const std::string name = "QORN_COLLECT_DATABASE_CLOSE_DELAY";
  const std::string invalid = "Invalid value of " + name + ": ";
  const std::vector<Case> cases = {{nullptr, "", 0, "Value of " + name + " pointer is NULL\n"},
                                   {" 12abc", "", 12, ""},
                                   {"12", "3", 3, ""},
                                   {"", "", 0, invalid + "\nstoi\n"},
                                   {"99999999999", "", 0, invalid + "99999999999\nstoi\n"},
                                   {"-5", "", 9, invalid + "-5\n"}};
  for (const Case& each : cases) {
    const EnvironmentVariable variable(name.c_str(), each.variable);
    Config config;
    config.db_close_delay = 9;
    preproc::Preprocessor preprocessor;
    const Printed text =
        printed([&] { preprocessor.set_db_close_delay(config, each.argument); }, 7);
    EXPECT_EQ(config.db_close_delay, each.delay);
    EXPECT_EQ(text.errors, each.errors + name + " = " + std::to_string(each.delay) + "\n");
  }
}

TEST(CommandLine, PathsWithBlanksWorkInEveryOption) {
  const Installation installation;
  const std::string directory = "with two  blanks/";
  const auto write = [&](const std::string& name, const std::string& content) {
    return installation.write(directory + name, content);
  };
  const std::string nodes = write("nodes", "node7\n");
  const std::string fwd = write("some fwd.xml", read_file(installation.path("etc/fwd/base.xml")));
  const std::string database = installation.path(directory + "new folder/data base.db");
  const std::string log = installation.path(directory + "log file");
  const std::string main =
      write("main.xml",
            "<configuration><analyzer><config><here>1</here></config></analyzer></configuration>");
  const std::string groups = write("groups.xml",
                                   "<nodegroup_config><nodegroup name='g'><nodes><node>node7</node>"
                                   "</nodes></nodegroup></nodegroup_config>");
  RunResult result;
  installation.run({"-c", main, "-f", nodes, "-g", groups, "-F", fwd, "-D", database, "-o", log},
                   result);
  ASSERT_EQ(result.status, 0) << result.errors;
  const Config& config = result.config;
  EXPECT_EQ(config.node_file, str::replace(nodes, " ", "\\ "));
  EXPECT_EQ(config.nodes.at(0).hostname, "node7");
  EXPECT_EQ(config.config_params.at(0).name, "here");
  EXPECT_EQ(config.node_groups.count("g"), 1U);
  EXPECT_EQ(config.fwds->by_path.begin()->first, fwd);
  EXPECT_TRUE(installation.has(directory + "new folder/data base.db"));
  EXPECT_EQ(log::OutputLog::set_out_streams(config.log_file, std::ios_base::out), 1);
  EXPECT_TRUE(installation.has(directory + "log file"));
  log::OutputLog::set_out_streams("", std::ios_base::out);
}

}  // namespace
}  // namespace qorn::testing
