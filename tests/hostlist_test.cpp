#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <qorn/node.h>

namespace qorn::node {
namespace {

using Names = std::vector<std::string>;

TEST(HostList, ExpandsInOrderWithTheLastBracketFastest) {
  const std::vector<std::pair<std::string, Names>> cases = {
      {"b,a.example.org,b", {"b", "a.example.org", "b"}},
      {"node[08-11,20]", {"node08", "node09", "node10", "node11", "node20"}},
      {"n[8-0010,007]", {"n8", "n9", "n10", "n007"}},
      {"r[1-2]n[1-2],x", {"r1n1", "r1n2", "r2n1", "r2n2", "x"}},
      {"n[1-2][3-4]-ib", {"n13-ib", "n14-ib", "n23-ib", "n24-ib"}},
      {"[999999999999999998-999999999999999999]", {"999999999999999998", "999999999999999999"}},
  };
  for (const auto& [hosts, names] : cases) {
    const HostNames found = expand_hosts(hosts);
    EXPECT_EQ(found.names, names) << found.reason;
  }
}

TEST(HostList, RefusesWithAReasonThatQuotesThePiece) {
  const std::string lists = "expected host names joined by single commas without blanks, found ";
  const std::string range = "expected a number or a range such as 01-16, found ";
  const std::string digits = "expected numbers of at most 18 digits, found ";
  const std::string lower = "expected the lower end of a range first, found ";
  const std::string many = "expected at most 10 million hosts in all, found more";
  const std::string name =
      "expected a host name (labels of 1 to 63 letters, digits, '_' and inner '-', joined by '.', "
      "253 characters at most), found ";
  const std::string n60(60, 'n');
  const std::string plus79(79, '+');
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", lists + "''"},
      {"x,a,,b,c", lists + "'a,,b,c'"},
      {"a,b,", lists + "'b,'"},
      {"n[]", range + "'' in 'n[]'"},
      {"n[1-]", range + "'1-' in 'n[1-]'"},
      {"n[[1]]", range + "'[1' in 'n[[1]]'"},
      {"n[a\x1b]", range + "'a\\x1b' in 'n[a\\x1b]'"},
      {"n[1,2", "expected ']' behind '[', found 'n[1,2'"},
      {"m,n1]", "expected '[' ahead of ']', found 'n1]'"},
      {"n[16-01]", lower + "'16-01' in 'n[16-01]'"},
      {"[0000000000000000001]", digits + "'0000000000000000001' in '[0000000000000000001]'"},
      {"n[1-99999999999]", many + " in 'n[1-99999999999]'"},
      {"n[1-9999999],a,b", many},
      {"n[1-9999999],a[1-2]", many + " in 'a[1-2]'"},
      {n60 + "[1-1000]", name + "'" + n60 + "1000' in '" + n60 + "[1-1000]'"},
      {plus79 + "\xC3\xA9", name + "'" + plus79 + "...'"},
  };
  for (const auto& [hosts, expected] : cases) {
    const HostNames found = expand_hosts(hosts);
    EXPECT_EQ(found.names, Names()) << hosts;
    EXPECT_EQ(found.reason, expected);
  }
}

TEST(HostList, FoldsToATextThatGivesTheNamesBack) {
  const std::string n17(17, '9');
  const std::vector<std::pair<std::string, Names>> cases = {
      {"node[001-003,010]", {"node010", "node001", "node003", "node002", "node001"}},
      {"n[8-9,08-11]", {"n10", "n9", "n08", "n11", "n8", "n09"}},
      {"r[1-2]n[1-2]", {"r2n1", "r1n1", "r2n2", "r1n2", "r1n1"}},
      {"r1n[1-2],r2n[1-3]", {"r2n1", "r1n1", "r2n2", "r1n2", "r2n3"}},
      {"a,n1,n1-ib,n2n3,n10n1", {"a", "n10n1", "n2n3", "a", "n1-ib", "n1"}},
      {"n[" + n17 + "8-" + n17 + "9]", {"n" + n17 + "9", "n" + n17 + "8"}},
      {"n" + n17 + "98,n" + n17 + "99", {"n" + n17 + "99", "n" + n17 + "98"}},
      {"x" + n17 + "00n[1,3]", {"x" + n17 + "00n1", "x" + n17 + "00n3"}},
  };
  for (const auto& [fold, names] : cases) {
    EXPECT_EQ(fold_hosts(names), fold);
    const Names again = expand_hosts(fold).names;
    EXPECT_EQ(fold_hosts(again), fold);
    EXPECT_EQ(std::set(again.begin(), again.end()), std::set(names.begin(), names.end()));
  }
  EXPECT_EQ(fold_hosts({}), "");
}

}  // namespace
}  // namespace qorn::node
