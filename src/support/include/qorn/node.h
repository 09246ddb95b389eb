#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <qorn/node/nodelist.h>

/// Nodes of a run: where they come from and how their names are folded.
namespace qorn::node {

/// More hosts than this in one node file or one folded name are refused before they are made.
inline constexpr std::size_t MOST_HOSTS = 10'000'000;

/// The role words with their place in NODE_ROLES.
extern const std::map<std::string, int> role_str_map;

/// The installation root: the variable QORN_ROOT, made absolute, when it is set and not empty;
/// else the directory above the one that this library was loaded from, when that holds
/// etc/qorn.xml; else the prefix given at build time.
std::string get_default_path();

/// Reads a node file (a regular file or a pipe, at most 512 MiB) into `list`, one node for each
/// host, in file order, with the roles and the subcluster of its line. Blanks in `file` may be
/// escaped by a backslash. Returns false when the file can't be used, having logged why at level
/// 3: FILE:LINE and the reason for each faulty line, or FILE and the system's reason. `list` is
/// then left as it was.
bool read_nodefile(const std::string& file, Nodelist& list);

/// Why a node file can't be used.
struct LineFault {
  std::size_t line = 0;  // from 1; 0: the file can't be read
  std::string reason;
};

/// A line of a node file that names hosts. Its views are into the text of the file.
struct NodeLine {
  std::size_t number = 0;               // from 1
  std::string_view hosts;               // as written, for for_each_host
  std::vector<std::string_view> roles;  // as written, in order
  std::string_view subcluster;          // empty for none
};

/// A node file in which no line has a fault.
struct NodeLines {
  std::string text;
  std::size_t hosts = 0;  // that its lines name, together
};

/// Reads and checks a node file as read_nodefile does, but logs nothing and takes `path` as it
/// stands. Calls `take_fault` with the first fault of each line, in their order, or with the one
/// of the whole file; then it gives nothing.
std::optional<NodeLines> read_lines(const std::string& path,
                                    const std::function<void(const LineFault&)>& take_fault);

/// Calls `take` with each line that names hosts, in their order. The line lives as long as the
/// call.
void for_each_line(const NodeLines& lines, const std::function<void(const NodeLine&)>& take);

/// Sorts the role words of a node. When none of them is one of NODE_ROLES, "compute" comes behind
/// them.
void complete_roles(std::vector<std::string>& roles);

/// Appends the nodes that the resource manager's environment reports, each host once, in order,
/// with the role "compute". The first variable of SLURM_JOB_NODELIST, PBS_NODEFILE,
/// LSB_DJOB_HOSTFILE, PE_HOSTFILE and LSB_HOSTS that is set and not empty counts. A value or a
/// file that can't be used gives one line at level 4, with the variable and the reason, and no
/// node.
void discoverNodes(std::vector<Node>& nodes);

/// How many hosts a text names, or why it can't be used.
struct HostCount {
  std::size_t hosts = 0;
  std::string reason;  // empty for a good text
};

/// Checks `hosts`, host names and folded names such as node[01-16,20] joined by commas, and
/// counts the names that come out, without making them. It can't be used when it is malformed, a
/// name is not well-formed, or more than MOST_HOSTS come out.
HostCount count_hosts(std::string_view hosts);

/// Calls `take` with each host name of `hosts`, which count_hosts has accepted; in a product of
/// brackets the last one runs fastest. The name lives as long as the call.
void for_each_host(std::string_view hosts, const std::function<void(std::string_view)>& take);

/// The hosts that a text names, or why it can't be used.
struct HostNames {
  std::vector<std::string> names;
  std::string reason;  // empty for a good text
};

/// The names of `hosts`, or none and the reason that count_hosts gives.
HostNames expand_hosts(std::string_view hosts);

/// Folds host names: each once, sorted with numbers by length and value, runs of numbers of equal
/// width united, the last number of a name first. The expansion of the result has the same names,
/// and its fold is the same text. Numbers of more than 18 digits stay as they are. Takes n log n
/// time for n names.
std::string fold_hosts(const std::vector<std::string>& names);

/// Folds host names that come one by one, as fold_hosts does. What it holds grows with the runs
/// that it is given, not with the names, and names in order cost one pass.
class HostFolder {
 public:
  /// `name` must stay where it is until the fold is made.
  void add(std::string_view name);

  /// The fold of the names, which are forgotten.
  std::string fold();

 private:
  /// Names that become one piece: `head` as it stands, a number, then all that `tail` gives.
  struct Fold {
    std::string_view first;  // the first of the names
    std::string_view head;
    std::string_view number;  // the first of a run, or the only one; empty for no number
    std::string_view last;    // of the run
    std::string tail;
  };

  static void cut_last_number(Fold& fold);
  static std::string bracket(const Fold* sorted, std::size_t count);
  static void unite(std::vector<Fold>& folds);

  void expect_next();

  std::vector<Fold> folds_;
  std::string expected_;  // the name that continues the last run; empty for none
};

}  // namespace qorn::node
