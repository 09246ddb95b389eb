#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <stdlib.h>

#include <qorn/log/error_log.h>
#include <qorn/node.h>

namespace qorn::node {
namespace {

const std::vector<const char*> VARIABLES = {"SLURM_JOB_NODELIST", "PBS_NODEFILE",
                                            "LSB_DJOB_HOSTFILE", "PE_HOSTFILE", "LSB_HOSTS"};

class Discovery : public testing::Test {
 protected:
  Discovery() {
    folder = mkdtemp(folder.data());
    log::LOG_LEVEL = log::level::WARNING;
    set_all("");
  }
  ~Discovery() override {
    std::filesystem::remove_all(folder);
    log::LOG_LEVEL = log::level::ERROR;
    set_all("");
  }

  static void set_all(const std::string& value) {
    for (const char* variable : VARIABLES) {
      value.empty() ? unsetenv(variable) : setenv(variable, value.c_str(), 1);
    }
  }

  /// The hosts that are found, then what was logged.
  static std::string discover(const char* variable, const std::string& value) {
    setenv(variable, value.c_str(), 1);
    std::vector<Node> nodes(1);
    testing::internal::CaptureStderr();
    discoverNodes(nodes);
    std::string text;
    for (std::size_t i = 1; i < nodes.size(); ++i) {
      EXPECT_EQ(nodes[i].roles, std::vector<std::string>{"compute"});
      text += nodes[i].hostname + ";";
    }
    return text + testing::internal::GetCapturedStderr();
  }

  std::string folder = "/tmp/qorn-discovery-XXXXXX";
};

TEST_F(Discovery, TakesEachHostOnceInOrderOrSaysWhyNot) {
  const std::string hosts = folder + "/hosts";
  const std::string bad = folder + "/bad";
  const std::string none = folder + "/none";
  std::ofstream(hosts) << "b 8 q@b\r\n\n\ta 8\nb\nc";
  std::ofstream(bad) << "a\nb!\n";
  std::ofstream(none) << " \n";
  const std::string name =
      "expected a host name (labels of 1 to 63 letters, digits, '_' and inner '-', joined by '.', "
      "253 characters at most), found ";
  const std::string lower = "expected the lower end of a range first, found ";
  struct Case {
    const char* variable;
    std::string value, result;
  };
  const std::vector<Case> cases = {
      {"SLURM_JOB_NODELIST", "n[09-10],a,n[10,11]", "n09;n10;a;n11;"},
      {"PBS_NODEFILE", hosts, "b;a;c;"},
      {"LSB_DJOB_HOSTFILE", hosts, "b;a;c;"},
      {"PE_HOSTFILE", hosts, "b;a;c;"},
      {"LSB_HOSTS", " b a\tb  c ", "b;a;c;"},
      {"SLURM_JOB_NODELIST", "a,[2-1]", "SLURM_JOB_NODELIST: " + lower + "'2-1' in '[2-1]'\n"},
      {"PBS_NODEFILE", bad, "PBS_NODEFILE: " + bad + ":2: " + name + "'b!'\n"},
      {"PE_HOSTFILE", folder, "PE_HOSTFILE: " + folder + ": Is a directory\n"},
      {"LSB_HOSTS", "a \x1b", "LSB_HOSTS: " + name + "'\\x1b'\n"},
      {"PE_HOSTFILE", none, "PE_HOSTFILE: expected host names, found none in '" + none + "'\n"},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(discover(each.variable, each.value), each.result);
    unsetenv(each.variable);
  }
}

TEST_F(Discovery, TheFirstVariableThatIsSetAndNotEmptyCounts) {
  set_all("/missing");
  for (std::size_t i = 1; i + 1 < VARIABLES.size(); ++i) {
    EXPECT_EQ(discover(VARIABLES[i - 1], ""),
              std::string(VARIABLES[i]) + ": /missing: No such file or directory\n");
  }
  EXPECT_EQ(discover("SLURM_JOB_NODELIST", "n1"), "n1;");
  set_all("");
  EXPECT_EQ(discover("LSB_HOSTS", ""), "");
}

}  // namespace
}  // namespace qorn::node
