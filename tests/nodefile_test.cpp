#include <filesystem>

#include <gtest/gtest.h>
#include <unistd.h>

#include "test_installation.h"

namespace qorn::node {
namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

class NodeFile : public ::testing::Test {
 protected:
  /// The hosts of `path` with roles and subcluster, or what was logged.
  static std::string read(const std::string& path) {
    Nodelist list;
    list.nodes.resize(1);
    bool good = false;
    std::string text = testing::printed([&] { good = read_nodefile(path, list); }).errors;
    EXPECT_EQ(good, text.empty());
    EXPECT_TRUE(good || list.nodes.size() == 1);
    for (std::size_t i = 0; good && i < list.nodes.size(); ++i) {
      text += list.nodes[i].hostname;
      for (const std::string& role : list.nodes[i].roles) {
        text += "," + role;
      }
      text += "@" + list.nodes[i].subcluster + ";";
    }
    return text;
  }

  std::string read_content(const std::string& content) {
    return read(directory.write("n", content));
  }

  testing::TemporaryDirectory directory;
  const std::string& folder = directory.path();
};

TEST_F(NodeFile, ReadsHostsRolesAndSubclusterInFileOrder) {
  const Pairs cases = {
      {" \t\r\n\n# n1 [\n", ""},
      {"\xEF\xBB\xBFn2\r\nn1\r\nn2", "n2@;n1@;n2@;"},
      {"\t n1#x\n  n2 # role: [\n", "n1@;n2@;"},
      {"n[1-2],m role: storage head", "n1,storage,head@;n2,storage,head@;m,storage,head@;"},
      {"n1 role:b,a , a\tb", "n1,b,a,a,b@;"},
      {"n1 role\t:\r head subcluster : A\r\nn2", "n1,head@A;n2@;"},
      {"n1 subcluster:A role:x", "n1,x@A;"},
      {"role role: subcluster role\nsubcluster", "role,subcluster,role@;subcluster@;"},
      {"n1 role: a\nn2 role: a\nn3\nn4 role: b", "n1,a@;n2,a@;n3@;n4,b@;"},
  };
  for (const auto& [content, nodes] : cases) {
    EXPECT_EQ(read_content(content), nodes) << content;
  }
}

TEST_F(NodeFile, SaysWhatIsWrongWithALine) {
  const std::string keyword = "expected 'role:' or 'subcluster:' behind the hosts, found ";
  const std::string comma = "expected a word on either side of each comma, found ";
  const std::string role = "expected a word behind 'role:', found ";
  const std::string one = "expected one word behind 'subcluster:', found ";
  const Pairs cases = {
      {"role: head", "expected host names ahead of 'role:'"},
      {"n[2-1] x", "expected the lower end of a range first, found '2-1' in 'n[2-1]'"},
      {"n1 n2", keyword + "'n2'"},
      {"n1 Role: head", keyword + "'Role:'"},
      {"n1 role: head rolle : x", keyword + "'rolle:'"},
      {"n1 role: #a", role + "the end of the line"},
      {"n1 role: subcluster: A", role + "'subcluster:'"},
      {"n1 role:: a", role + "':'"},
      {"n1 role: a role: b", "expected 'role:' once on a line, found it twice"},
      {"n1 role: a,,b", comma + "'a,,b'"},
      {"n1 role: a, b, subcluster: A", comma + "'b, subcluster: A'"},
      {"n1 subcluster: A B x: y", one + "'A B'"},
  };
  for (const auto& [line, reason] : cases) {
    EXPECT_EQ(read_content("n0\n" + line + "\n"), folder + "/n:2: " + reason + "\n") << line;
  }
}

TEST_F(NodeFile, LogsEachFaultyLineAndBoundsTheWholeFile) {
  const std::string many = "expected at most 10 million hosts in all, found more";
  const std::string words = "expected at most 1 GiB of role and subcluster words for all hosts";
  const std::string at = folder + "/n:";
  EXPECT_EQ(read_content("a[1-6000000]\nb[2-1]\nb[1-6000000]\nb\nc[1-10000001]\n"),
            at + "2: expected the lower end of a range first, found '2-1' in 'b[2-1]'\n" +  //
                at + "3: " + many + " with this line\n" +                                   //
                at + "5: " + many + " in 'c[1-10000001]'\n");
  EXPECT_EQ(read_content("a[1-9999999] role: a b c d"),
            at + "1: " + words + ", found more with this line\n");
}

TEST_F(NodeFile, ReadsFilesAndPipesAndGivesTheSystemsReasonForTheRest) {
  directory.write("a b/n\x1b", "n1");
  std::filesystem::resize_file(directory.write("huge", "n1"), (512U << 20U) + 1);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(write(ends[1], "n[1-2]\n", 7), 7);
  close(ends[1]);
  const Pairs cases = {
      {folder + "/a\\ b/n\x1b", "n1@;"},
      {"/dev/fd/" + std::to_string(ends[0]), "n1@;n2@;"},
      {folder + "/a\\ b", folder + "/a b: Is a directory\n"},
      {folder + "/\x1b", folder + "/\\x1b: No such file or directory\n"},
      {folder + "/huge", folder + "/huge: expected at most 512 MiB, found more\n"},
      {"/proc/self/mem", "/proc/self/mem: Input/output error\n"},
  };
  for (const auto& [path, result] : cases) {
    EXPECT_EQ(read(path), result);
  }
  close(ends[0]);
}

}  // namespace
}  // namespace qorn::node
