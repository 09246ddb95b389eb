#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "test_installation.h"

namespace qorn::testing {
namespace {

using log::ErrorLog;
using log::OutputLog;

constexpr auto TRUNCATE = std::ios_base::out | std::ios_base::trunc;

TEST(ErrorLog, LevelsUpToTheOneInForceAreDelivered) {
  for (int in_force = 0; in_force <= 7; ++in_force) {
    for (int level = 1; level <= 7; ++level) {
      const Printed text = printed([&] { ErrorLog(level).stream() << "words"; }, in_force);
      EXPECT_EQ(text.errors, level <= in_force ? "words\n" : "") << level << " at " << in_force;
      EXPECT_EQ(text.output, "");
    }
  }
}

TEST(ErrorLog, TheTextStandsAloneAndTheSystemLogTakesItsPlace) {
  const Printed text = printed([] {
    ErrorLog("file.cpp", "function", 7, 3).stream() << "with a line end\n";
    ErrorLog(3).stream() << "";
    ErrorLog(3).stream() << "a percent %s sign";
    log::LOG_OUTPUT = 1;
    ErrorLog(3).stream() << "a test of the system log, %s";
  });
  EXPECT_EQ(text.errors, "with a line end\n\n\na percent %s sign\n");
  log::LOG_OUTPUT = 0;
}

/// The destinations of the process, put back at the end.
class OutputLogTest : public ::testing::Test {
 protected:
  OutputLogTest() { OutputLog::singleton_obj = nullptr; }
  ~OutputLogTest() override {
    delete OutputLog::singleton_obj;
    OutputLog::singleton_obj = earlier_;
  }

  Installation installation_;

 private:
  OutputLog::OutputLogStream* earlier_ = OutputLog::singleton_obj;
};

TEST_F(OutputLogTest, NothingIsWrittenBeforeADestinationIsSet) {
  const Printed text = printed([] { OutputLog().stream() << "lost"; });
  EXPECT_EQ(text.output + text.errors, "");
  ASSERT_NE(OutputLog::singleton_obj, nullptr);
  EXPECT_TRUE(OutputLog::singleton_obj->streams.empty());
}

TEST_F(OutputLogTest, ADestinationIsOneFileOrTheConsole) {
  struct Case {
    std::string name;
    int result;
    std::string file;  // where the output lands; empty: the console
    bool complains;
  };
  const std::string& root = installation_.path();
  installation_.write("home/there", "");
  const auto mode = std::filesystem::status(root).permissions();
  const std::vector<Case> cases = {
      {"", 1, "", false},
      {" \t ", 0, "", false},  // a name was given, and nothing is left of it
      {root + "/missing/log", 0, "", true},
      {root, 0, "", true},
      {root + "/plain", 1, "plain", false},
      {"  " + root + "/stripped ", 1, "stripped", false},
      {root + "/with\\ blank", 1, "with blank", false},
      {"~/log", 1, "home/log", false},
      {"$QORN_ROOT/variable", 1, "variable", false},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.name);
    const Printed text = printed([&] {
      EXPECT_EQ(OutputLog::set_out_streams(each.name, TRUNCATE), each.result);
      OutputLog().stream() << "output";
    });
    EXPECT_EQ(text.output, each.file.empty() ? "output" : "");
    EXPECT_EQ(text.errors, each.complains ? "Error opening output file " + each.name + ".\n" : "");
    if (!each.file.empty()) {
      EXPECT_EQ(read_file(installation_.path(each.file)), "output");
      struct stat status {};
      ASSERT_EQ(stat(installation_.path(each.file).c_str(), &status), 0);
      EXPECT_EQ(status.st_mode & 07777U, 0660U);
    }
  }
  EXPECT_EQ(std::filesystem::status(root).permissions(), mode);  // a directory's is left alone
}

TEST_F(OutputLogTest, EachCallReplacesTheDestinationAndClosesTheFile) {
  const std::string first = installation_.path("first");
  const std::string second = installation_.path("second");
  const Printed text = printed([&] {
    OutputLog::set_out_streams(first, TRUNCATE);
    OutputLog().stream() << "one";
    const std::weak_ptr<log::StreamFileType> file = OutputLog::singleton_obj->files.at(0);
    OutputLog::set_out_streams(second, TRUNCATE);
    EXPECT_TRUE(file.expired());
    OutputLog().stream() << "two";
    OutputLog::set_out_streams(first, std::ios_base::out | std::ios_base::app);
    OutputLog().stream() << "three";
    OutputLog::set_out_streams("", TRUNCATE);
    OutputLog().stream() << "four";
  });
  EXPECT_EQ(read_file(first), "onethree");
  EXPECT_EQ(read_file(second), "two");
  EXPECT_EQ(text.output, "four");
}

TEST_F(OutputLogTest, ColoursReachTheStreamsThatUseThem) {
  std::ostringstream coloured;
  std::ostringstream plain;
  OutputLog::createInstance();
  OutputLog::singleton_obj->streams = {{&coloured, true}, {&plain, false}};
  OutputLog(OutputLog::RED).stream() << "a";
  OutputLog(OutputLog::YELLOW).stream() << "b";
  OutputLog(OutputLog::GREEN).stream() << "c";
  OutputLog().stream() << "d";
  EXPECT_EQ(coloured.str(),
            "\x1b[0;31ma\x1b[0m\x1b[0;33mb\x1b[0m\x1b[0;32m"
            "c\x1b[0md");
  EXPECT_EQ(plain.str(), "abcd");
  const Printed text =
      printed([] { EXPECT_THROW(OutputLog(static_cast<OutputLog::Colors>(3)), std::exception); });
  EXPECT_EQ(text.errors, "invalid color 3\n");
}

}  // namespace
}  // namespace qorn::testing
