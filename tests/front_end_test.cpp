#include "front_end.h"

#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/wait.h>

#include "test_installation.h"

namespace qorn::frontend {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;
using testing::read_file;

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

/// Runs the built programs in a folder of its own, on the installation of the source tree.
class Programs : public ::testing::Test {
 protected:
  Programs() { directory_.write("nodes", "node[1-3]\nhead1 role: head\n"); }

  /// `line` is a shell's: variables, the program, its arguments and redirections.
  Outcome run(const std::string& line) const {
    const std::string script = "cd '" + directory_.path() +
                               "' && PATH='" QORN_BIN_DIR "':$PATH QORN_ROOT='" QORN_INSTALLATION
                               "' && export QORN_ROOT && { " +
                               line + "; } >out 2>err";
    const int status = std::system(script.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read_file(folder_ / "out"),
            read_file(folder_ / "err")};
  }

  testing::TemporaryDirectory directory_;
  const fs::path folder_ = directory_.path();
};

constexpr const char* COLLECT = "qorn-collect -f nodes -F health_base -D x.db";
constexpr const char* BOTH = "qorn -f nodes -F health_base -D x.db";

TEST(RunArguments, SayTheStageThatTheNameMeans) {
  using Arguments = std::vector<std::string>;
  const std::pair<std::vector<const char*>, Arguments> cases[] = {
      {{"./bin/qorn-collect", "-h"}, {"./bin/qorn", "01", "-h"}},
      {{"qorn-analyze"}, {"qorn", "10"}},
      {{"/qorn-collect/qorn", "01"}, {"/qorn-collect/qorn", "01"}},
      {{"/b/my-qorn-collect", ""}, {"/b/my-qorn-collect", ""}},
      {{}, {"qorn"}}};
  for (const auto& [given, expected] : cases) {
    EXPECT_EQ(run_arguments(static_cast<int>(given.size()), given.data()), expected);
  }
}

TEST_F(Programs, PrintThePlanOrWhatWasAskedForAndSayHowItEnded) {
  const Outcome plan = run(COLLECT);
  EXPECT_EQ(plan.status, 0) << plan.err;
  EXPECT_NE(plan.out.find("  qorn-collect -f nodes -F health_base"), std::string::npos);
  EXPECT_NE(plan.out.find("\n  compute  3  node[1-3]\n"), std::string::npos) << plan.out;
  EXPECT_EQ(run("qorn-analyze -h").status, 0);
  EXPECT_NE(run("qorn-analyze -h").out.find("Usage: qorn-analyze"), std::string::npos);
  EXPECT_EQ(run("qorn-collect --nonsense").status, 1);
  EXPECT_EQ(run("qorn-collect -f missing").status, 1);
}

TEST_F(Programs, NeverTakeLostOutputForSuccess) {
  struct Case {
    std::string line;
    const char* reason;
  };
  const std::string collect = COLLECT;
  const Case cases[] = {
      {collect + " >/dev/full", "standard output: No space left on device\n"},
      {collect + " >&-", "standard output: Bad file descriptor\n"},
      {"qorn -h >/dev/full", "standard output: No space left on device\n"},
      {"qorn -h >&-", "standard output: Bad file descriptor\n"},
      {std::string(BOTH) + " -o /dev/full", "log file /dev/full: No space left on device\n"},
      {"QORN_RECORD=- " + collect + " >/dev/full", "output: No space left on device\n"},
      {"QORN_RECORD=- " + collect + " >&-", "record to standard output: Bad file descriptor\n"},
      {"QORN_RECORD=/dev/full " + collect, "write /dev/full: No space left on device\n"},
      {"QORN_RECORD=. " + collect, "write .: Is a directory\n"},
      {"QORN_RECORD=no/r " + collect, "write no/r: No such file or directory\n"},
      {"QORN_RECORD=/proc/r " + collect, "write /proc/r: "},
      {"(ulimit -f 1; trap '' XFSZ; QORN_RECORD=r " + collect + ")", "write r: File too large\n"}};
  for (const auto& [line, reason] : cases) {
    const Outcome outcome = run(line);
    EXPECT_EQ(outcome.status, 1) << line;
    EXPECT_NE(outcome.err.find(reason), std::string::npos) << line << '\n' << outcome.err;
  }
  for (const auto& entry : fs::directory_iterator(folder_)) {
    const std::string name = entry.path().filename();
    EXPECT_TRUE(name != "r" && name.find(".qorn-record") == std::string::npos) << name;
  }
}

TEST_F(Programs, KeepTheRecordApartFromThePlan) {
  const std::string collect = COLLECT;
  const Outcome outcome = run("QORN_RECORD=- " + collect);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(Json::parse(outcome.out).at("nodes").size(), 4U);
  EXPECT_NE(outcome.err.find("Qorn cluster diagnostics"), std::string::npos);
  EXPECT_NE(outcome.err.find("Plan of the run"), std::string::npos);
  EXPECT_EQ(run("QORN_RECORD=/dev/stdout " + collect).out, outcome.out);
  EXPECT_EQ(run("QORN_RECORD=/dev/fd/1 " + collect).err, outcome.err);

  directory_.write("old", "old");
  fs::permissions(folder_ / "old", fs::perms(0640));
  fs::create_symlink("old", folder_ / "link");
  fs::create_symlink("new", folder_ / "dangling");
  for (const char* name : {"link", "dangling", "plain"}) {
    EXPECT_EQ(run(std::string("QORN_RECORD=") + name + " " + collect).status, 0) << name;
    EXPECT_EQ(read_file(folder_ / name), outcome.out) << name;
  }
  EXPECT_TRUE(fs::is_symlink(folder_ / "link") && fs::is_symlink(folder_ / "dangling"));
  EXPECT_EQ(fs::status(folder_ / "old").permissions(), fs::perms(0640));
  EXPECT_EQ(run("umask 027; QORN_RECORD=masked " + collect).status, 0);
  EXPECT_EQ(fs::status(folder_ / "masked").permissions(), fs::perms(0640));
  EXPECT_EQ(run("QORN_RECORD=/dev/null " + collect).status, 0);
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(Programs, PutThePlanIntoTheLogFileAlone) {
  directory_.write("log", std::string(100'000, 'x'));
  const Outcome outcome = run(std::string(BOTH) + " -o log");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out.find("Plan of the run"), std::string::npos);
  EXPECT_EQ(read_file(folder_ / "log").find("Plan of the run\n"), 0U);
  EXPECT_EQ(run(std::string(BOTH) + " -o /dev/null").status, 0);
  // A log file that can't be opened leaves the console.
  for (const char* name : {".", "no/log"}) {
    const Outcome console = run(std::string(BOTH) + " -o " + name);
    EXPECT_EQ(console.status, 0);
    EXPECT_NE(console.out.find("Plan of the run"), std::string::npos) << name;
    EXPECT_NE(console.err.find("Error opening output file"), std::string::npos) << name;
  }
}

}  // namespace
}  // namespace qorn::frontend
