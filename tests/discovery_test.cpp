#include <gtest/gtest.h>

#include "test_installation.h"

namespace qorn::node {
namespace {

/// The hosts that are found, then what was logged.
std::string discover() {
  std::vector<Node> nodes(1);
  std::string text;
  const auto printed = testing::printed([&] { discoverNodes(nodes); }, log::level::WARNING);
  for (std::size_t i = 1; i < nodes.size(); ++i) {
    EXPECT_EQ(nodes[i].roles, std::vector<std::string>{"compute"});
    text += nodes[i].hostname + ";";
  }
  return text + printed.errors;
}

TEST(Discovery, TakesEachHostOnceInOrderOrSaysWhyNot) {
  const testing::Installation installation;  // none of the variables is set
  const std::string hosts = installation.write("hosts", "b 8 q@b\r\n\n\ta 8\nb\nc");
  const std::string bad = installation.write("bad", "a\nb!\n");
  const std::string none = installation.write("none", " \n");
  const std::string& folder = installation.path();
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
    const testing::EnvironmentVariable variable(each.variable, each.value.c_str());
    EXPECT_EQ(discover(), each.result);
  }
}

TEST(Discovery, TheFirstVariableThatIsSetAndNotEmptyCounts) {
  const testing::Installation installation;
  std::deque<testing::EnvironmentVariable> variables;
  std::string found;
  for (const std::string variable :
       {"LSB_HOSTS", "PE_HOSTFILE", "LSB_DJOB_HOSTFILE", "PBS_NODEFILE", "SLURM_JOB_NODELIST"}) {
    variables.emplace_back(variable.c_str(), "");
    EXPECT_EQ(discover(), found);
    variables.emplace_back(variable.c_str(), "/");
    found = discover();
    EXPECT_EQ(found.rfind(variable + ": ", 0), 0U) << found;
  }
}

}  // namespace
}  // namespace qorn::node
