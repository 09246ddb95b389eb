#include <csignal>
#include <iostream>

#include <gtest/gtest.h>

#include "test_installation.h"
#include "test_tables.h"

namespace qorn::testing {
namespace {

using Lines = std::vector<std::string>;

bool contains(const std::string& text, const std::string& piece) {
  return text.find(piece) != std::string::npos;
}

// Every step from the failing one on is broken: only its own words may appear.
TEST(Run, StepsComeInOrderAndTheFirstFailureEndsTheRun) {
  const std::string none;
  const std::vector<std::pair<std::string, std::string>> steps = {
      {none, "qorn: unrecognized option '--bogus'\n"},
      {"nodes", "/nodes:1: "},
      {"etc/qorn.xml", "Could not parse configuration XML.\n\n"},
      {"etc/CLIPS_type_map.xml", "Could not parse CLIPS type map.\n\n"},
      {"etc/fwd/base.xml", "Could not load framework definitions.\n\n"},
      {"kb/data/msg_schema.xml", "Could not load message category mapping files\n"},
      {"etc/providers/probe.xml", "No providers found.\n\n"},
      {"old.db", "Database failed to initialize.\n"},
      {"groups.xml", "Error in parsing node group file: "},
  };
  for (std::size_t first = 0; first <= steps.size(); ++first) {
    const Installation installation;
    Lines arguments{"-f", installation.nodes,
                    "-F", "base",
                    "-g", installation.write("groups.xml", "<nodegroup_config/>"),
                    "-D", installation.path("new.db"),
                    "-D", installation.write("old.db", "")};
    for (std::size_t i = first; i < steps.size(); ++i) {
      if (steps[i].first == none) {
        arguments.emplace_back("--bogus");
      } else {
        installation.write(steps[i].first, "[[");  // nothing that any step can use
      }
    }
    RunResult result;
    EXPECT_EQ(installation.run(arguments, result), first < steps.size() ? 1 : 0);
    for (std::size_t i = 0; i < steps.size(); ++i) {
      EXPECT_EQ(contains(result.errors + result.output, steps[i].second), i == first)
          << first << ", " << steps[i].second << result.errors;
    }
    const bool banner = contains(result.output, util::EngineHelper::format_header() + "\n");
    EXPECT_EQ(banner, first > 0);
    EXPECT_EQ(result.config.common_options.config_parsed, first > 2);
    EXPECT_EQ(installation.has("new.db"), first > 6);
  }
}

TEST(Run, AServedRequestReadsNoDocument) {
  const Installation installation;
  installation.write("etc/qorn.xml", "<");
  const std::string header = util::EngineHelper::format_header();
  for (const std::string& option : Lines{"-h", "-v", "-vh"}) {
    RunResult result;
    EXPECT_EQ(installation.run({"01", option}, result), 2);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(contains(result.output, "Usage: "), option != "-v");  // usage wins
    EXPECT_EQ(contains(result.output, header), option == "-v");
    EXPECT_FALSE(contains(result.output, header + "\n"));
  }
}

TEST(Run, ASmallRunFillsTheRecord) {
  const Installation installation;
  installation.fwd("base",
                   "<analyzer_extension><entry>z</entry><entry>a</entry></analyzer_extension>"
                   "<providers><provider>probe</provider></providers>");
  installation.fwd("other", "<analyzer_extension><entry>a</entry></analyzer_extension>");
  installation.write("nodes", "node[1-2] role: head\n");
  RunResult result;
  const std::string database = installation.path("data/x.db");
  ASSERT_EQ(
      installation.run(
          {"01", "-f", installation.nodes, "-F", "other", "-F", "base", "-D", database}, result),
      0)
      << result.errors;
  const Config& config = result.config;
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output, util::EngineHelper::format_header() + "\n");
  EXPECT_EQ(config.command_line,
            "qorn-collect -f " + installation.nodes + " -F other -F base -D " + database);
  EXPECT_EQ(joined(Lines{config.bin_path, config.config_file, config.config_xsd,
                         config.collect_extension, config.providers.at("probe")->config_file}),
            str::replace("R/bin,R/etc/qorn.xml,R/etc/qorn.xsd,R/collect/qorn64/pdsh.so,"
                         "R/etc/providers/probe.xml",
                         "R", config.root));
  EXPECT_EQ(config.root, installation.path());
  EXPECT_EQ(config.nodes.at(1).hostname, "node2");
  EXPECT_EQ(config.providers.at("probe")->command, "uname -a");
  EXPECT_EQ(config.message_schema_files, Lines{installation.path("kb/data/msg_schema.xml")});
  EXPECT_EQ(config.database_names, Lines{database});
  EXPECT_TRUE(config.env_propagation && config.common_options.config_parsed);
  // By path, then by name; what two definitions name stands twice.
  ASSERT_EQ(config.config_params.size(), 1U);
  EXPECT_EQ(config.config_params[0].name, "qorn-checks");
  EXPECT_EQ(config.config_params[0].values, (Lines{"a", "z", "a"}));
}

TEST(Run, TheCommandLineWinsOverTheMainDocument) {
  const Installation installation;
  const std::string document_groups = installation.write("document.xml", "<nodegroup_config/>");
  const std::string line_groups = installation.write("line.xml", "<nodegroup_config/>");
  installation.fwd("more", "<providers><provider>probe</provider></providers>");
  installation.configure(
      "<plugins><framework_definitions><framework_definition>base</framework_definition>"
      "</framework_definitions></plugins>"
      "<analyzer><log_level>notice</log_level><node_group_configuration_file>" +
      document_groups +
      "</node_group_configuration_file></analyzer>"
      "<collector><re-collect>off</re-collect></collector>"
      "<datastore_extensions><datastore name='DOC' source='~/doc.db'/></datastore_extensions>");
  RunResult document;
  ASSERT_EQ(installation.run({"-f", installation.nodes}, document), 0) << document.errors;
  EXPECT_EQ(document.errors, "Database: DOC, at: ~/doc.db.\n\n");  // so the level is in force
  EXPECT_EQ(document.config.fwds->names, Lines{"base"});
  EXPECT_EQ(document.config.node_group_file, document_groups);
  EXPECT_EQ(document.config.database_names, Lines{"~/doc.db"});
  EXPECT_FALSE(document.config.re_collect);
  RunResult line;
  ASSERT_EQ(installation.run({"-f", installation.nodes, "-l", "error", "-F", "more", "-g",
                              line_groups, "-C", "-D", "~/line.db"},
                             line),
            0);
  EXPECT_EQ(line.errors, "");
  EXPECT_EQ(line.config.fwds->names, Lines{"more"});
  EXPECT_EQ(line.config.node_group_file, line_groups);
  EXPECT_EQ(line.config.database_names, Lines{"~/line.db"});
  EXPECT_TRUE(line.config.re_collect);
}

TEST(Run, TheEnvironmentNamesTheSchemaAndSwitchesPropagationOff) {
  const Installation installation;
  for (const std::string value : {"TRUE", "true"}) {
    const EnvironmentVariable variable("QORN_TURN_OFF_ENV_PROPAGATION", value.c_str());
    RunResult result;
    EXPECT_EQ(installation.run({"10", "-F", "base"}, result), 0);
    EXPECT_EQ(result.config.env_propagation, value == "TRUE");
  }
  for (const std::string& xsd : {installed("etc/fwd.xsd"), std::string()}) {
    const EnvironmentVariable variable("QORN_CONFIG_XSD", xsd.c_str());
    RunResult result;
    EXPECT_EQ(installation.run({"10", "-F", "base"}, result, Cause::VARIABLE), 1);
    EXPECT_EQ(result.config.config_xsd, xsd);
    EXPECT_TRUE(contains(result.errors, "Could not parse configuration XML."));
  }
}

TEST(Run, ARootOfTheCallerIsReplacedAfterItNamedTheMainDocument) {
  const Installation installation;
  RunResult result;
  result.config.root = "/elsewhere";
  result.config.bin_path = "/usr/bin";
  result.config.config_file = "/replaced";
  EXPECT_EQ(installation.run({"10"}, result, Cause::ARGUMENT), 1);
  EXPECT_EQ(result.config.root + result.config.bin_path, installation.path("usr/bin"));
  EXPECT_EQ(result.errors,
            "/elsewhere/etc/qorn.xml: No such file or directory\n"
            "Could not validate the xml file:/elsewhere/etc/qorn.xml\n"
            "Could not parse configuration XML.\n\n");
}

TEST(Run, WithoutCommandProcessingTheCallersRecordCounts) {
  const Installation installation;
  RunResult result;
  result.config.common_options.skip_command_processing = true;
  result.config.operations = operation::ANALYZE;
  result.config.option_flags = option_flag::FWD_GIVEN;
  result.config.fwds->names = {"base"};
  EXPECT_EQ(installation.run({"--bogus", "01"}, result), 0) << result.errors;
  EXPECT_EQ(result.output, util::EngineHelper::format_header() + "\n");
  EXPECT_EQ(result.config.command_line, "");
  EXPECT_EQ(result.config.providers.count("probe"), 1U);
}

TEST(Run, DeprecationMessagesComeTwiceForCollectAndOnceForBothStages) {
  const Installation installation;
  for (const auto& [command, times] :
       {std::pair("01", "old.older.\nold.older.\n"), {"-C", "old.older.\n"}, {"10", ""}}) {
    RunResult result;
    result.config.common_options.deprecation_messages = {"old.", "older.\n"};
    EXPECT_EQ(installation.run({command, "-f", installation.nodes, "-F", "base"}, result), 0);
    EXPECT_EQ(result.errors, times);
  }
}

TEST(Run, NodesComeFromTheFileOrFromDiscoveryAndAnalysisNeedsNone) {
  struct Case {
    const char* command;
    std::string file;  // content of the node file; empty: none is given
    const char* discovered;
    std::size_t nodes;
    std::string errors;
  };
  const std::string searching = "Nodefile not specified. Attempting automatic node discovery.\n";
  const std::string none =
      searching +
      "No nodes specified or discovered. Please refer to the Qorn User Guide for "
      "information about how to specify nodes to include in testing.\n";
  const std::vector<Case> cases = {
      {"10", "", nullptr, 0, ""},       {"10", "# none\n", nullptr, 0, ""},
      {"10", "a\na\n", nullptr, 2, ""}, {"01", "", nullptr, 0, none},
      {"01", "#\n", nullptr, 0, none},  {"01", "", "n[1-3]", 3, searching},
      {"01", "a\n", "n[1-3]", 1, ""}};
  for (const Case& each : cases) {
    const Installation installation;
    const EnvironmentVariable discovery("SLURM_JOB_NODELIST", each.discovered);
    const EnvironmentVariable delay("QORN_COLLECT_DATABASE_CLOSE_DELAY", "0");
    Lines arguments{each.command, "-lwarning", "-Fbase", "-D", installation.write("x.db", "")};
    if (!each.file.empty()) {
      arguments.insert(arguments.end(), {"-f", installation.write("nodes", each.file)});
    }
    RunResult result;
    EXPECT_EQ(installation.run(arguments, result, Cause::DISCOVERY), each.errors == none ? 1 : 0);
    EXPECT_EQ(result.config.nodes.size(), each.nodes);
    EXPECT_EQ(result.errors, each.errors);
  }
}

TEST(Run, TheDiagnosesAreReadTwiceForAnalyze) {
  const Installation installation;
  installation.write("kb/rules/diagnosis.clp", read_file(installed("kb/rules/diagnosis.clp")));
  RunResult both;
  RunResult analyze;
  ASSERT_EQ(installation.run({"-f", installation.nodes, "-F", "base"}, both), 0);
  ASSERT_EQ(installation.run({"10", "-F", "base"}, analyze), 0);
  ASSERT_FALSE(both.config.diagnosis_signs.empty());
  for (const auto& [id, signs] : both.config.diagnosis_signs) {
    Lines twice = signs;
    twice.insert(twice.end(), signs.begin(), signs.end());
    EXPECT_EQ(analyze.config.diagnosis_signs.at(id), twice);
  }
}

TEST(Run, AFailingProviderLeavesTheMapAndStaysInItsGroup) {
  const Installation installation;
  installation.write("etc/providers/broken.xml", "<");
  installation.write("elsewhere/probe.xml",
                     "<configuration><command>second</command></configuration>");
  installation.fwd("base",
                   "<providers><provider>broken</provider><provider>probe</provider>"
                   "<provider>missing</provider><provider>sub/deep</provider></providers>");
  installation.write("etc/providers/sub/deep.xml",
                     "<configuration><command>third</command></configuration>");
  installation.fwd("later",
                   "<provider_path>" + installation.path("elsewhere") +
                       "</provider_path><providers><provider>probe</provider></providers>");
  RunResult result;
  ASSERT_EQ(installation.run({"10", "-F", "base", "-F", "later"}, result), 0) << result.errors;
  const Config& config = result.config;
  ASSERT_EQ(config.providers.size(), 2U);
  EXPECT_EQ(config.providers.count("deep"), 1U);  // under the name that its file gives
  const auto& probe = config.providers.at("probe");
  EXPECT_EQ(probe->command, "uname -a");
  EXPECT_EQ(probe->fwds.size(), 2U);
  const auto& group =
      config.fwds->by_path.at(installation.path("etc/fwd/base.xml"))->provider_groups.at(0);
  ASSERT_EQ(group.members.size(), 4U);
  EXPECT_EQ(group.members[0]->name, "broken");
  EXPECT_EQ(group.members[1], probe);
  const auto& later = config.fwds->by_path.at(installation.path("etc/fwd/later.xml"));
  EXPECT_EQ(later->provider_groups.at(0).members.at(0), probe);
  EXPECT_TRUE(contains(result.errors, "missing.xml' (2): No such file or directory\n"));
}

TEST(Run, NotesThatAreNotKeptAreCountedForTheirList) {
  const Installation installation;
  const preproc::RunScope scope(1);
  constexpr fs::Readable ANY{fs::Readable::Kinds::ALL, 1000, ""};
  EXPECT_TRUE(fs::read_file(installation.nodes, ANY).was_read());
  EXPECT_FALSE(fs::read_file(installation.path("missing"), ANY).was_read());
  EXPECT_TRUE(fs::read_file(installation.path("etc/fwd/base.xml"), ANY).was_read());
  const RunNotes& notes = scope.notes();
  EXPECT_EQ(notes.opened, std::vector<std::string>{installation.nodes});
  EXPECT_EQ(notes.dropped.opened, 1U);
  EXPECT_EQ(notes.dropped.named + notes.dropped.passed_over + notes.dropped.settings, 0U);
}

TEST(Run, AnInterruptEndsTheProcessWithItsNumber) {
  const auto interrupted = [] {
    std::cout.setstate(std::ios::failbit);  // the request's own output doesn't matter
    Arguments arguments({"-v"});
    Config config;
    preproc::Preprocessor().Run(config, arguments.count(), arguments.values());
    log::OutputLog::singleton_obj->streams = {{&std::cerr, false}};
    std::raise(SIGINT);
  };
  EXPECT_EXIT(interrupted(), ::testing::ExitedWithCode(SIGINT),
              "\nPreprocessor: caught signal. Cleaning up.\n");
}

}  // namespace
}  // namespace qorn::testing
