#include "commands.h"

#include "check.h"
#include "diff.h"
#include "graph.h"
#include "list.h"
#include "nodes.h"
#include "show.h"
#include "why.h"

namespace qorn::inspect {

namespace {

using enum Presence;
using enum Subject;
using Q = Question;

const CommandOption FORMAT = {"--format", "text or json", &Q::format, OPTIONAL, {"text", "json"}};
const std::vector<Command> COMMANDS = {
    {"check",
     "every fault of an installation",
     INSTALLATION,
     check_installation,
     {{"-f,--nodefile", "a node file to check as well", &Q::node_file},
      {"-g,--groupfile", "a node group document to check as well", &Q::node_group_file},
      {"--strict", "exit with 3 when there are warnings alone", &Q::strict},
      {"-v,--verbose", "show follow-ups as well", &Q::verbose},
      {"DOCUMENT", "only what is wrong with these", &Q::documents},
      FORMAT}},
    {"show",
     "the settings of a run",
     RUN,
     show_settings,
     {{"--origin", "where each comes from, and what didn't count", &Q::origin}, FORMAT}},
    {"why",
     "what runs on a node, or why not",
     RUN,
     explain,
     {{"NODE", "a host name", &Q::node, REQUIRED},
      {"FRAMEWORK", "a framework definition, by default all", &Q::framework}}},
    {"list",
     "names in force, one a line",
     RUN,
     print_list,
     {{"WHAT", "frameworks, providers, groups, nodes or files", &Q::list, REQUIRED, list_names()}}},
    {"diff",
     "two records, or --root A --root B",
     TWO_RUNS,
     compare,
     {{"RECORD", "two files that QORN_RECORD wrote", &Q::records}}},
    {"graph",
     "includes as a DOT graph",
     INSTALLATION,
     print_graph,
     {{"--from", "a framework definition to start from", &Q::from},
      {"--depth", "how many includes to follow", &Q::depth},
      {"--reverse", "what leads to it instead", &Q::reverse},
      {"--providers", "provider documents as well", &Q::providers}}},
    {"nodes",
     "host names, folded or one a line",
     INSTALLATION,
     print_nodes,
     {{"--fold", "folded, as without an option", &Q::fold},
      {"--expand", "one name a line", &Q::expand},
      {"--count", "the number of names", &Q::count},
      {"-g,--groupfile", "the node group document of @GROUP", &Q::node_group_file},
      {"EXPRESSION", "names and @groups, joined by , ! and &", &Q::expressions, REQUIRED}}}};

}  // namespace

const std::vector<Command>& commands() {
  return COMMANDS;
}

}  // namespace qorn::inspect
