#include "commands.h"

#include <cstdlib>

#include "diff.h"
#include "list.h"
#include "nodes.h"
#include "run_loader.h"
#include "show.h"
#include "why.h"

namespace qorn::inspect {
namespace {

using Options = CommandOptions;

bool wants_json(const Options& options) {
  return options.format == "json";
}

int answer_check(const Options& options) {
  return check(options, wants_json(options), Terminal(options.color));
}

int answer_show(const Options& options) {
  show_settings(options.run_arguments, options.origin, wants_json(options),
                options.roots.empty() ? "environment QORN_ROOT" : "option --root");
  return EXIT_SUCCESS;
}

int answer_why(const Options& options) {
  return explain(options.node, options.framework, options.run_arguments, Terminal(options.color));
}

int answer_list(const Options& options) {
  print_list(options.what, options.run_arguments);
  return EXIT_SUCCESS;
}

int answer_diff(const Options& options) {
  const Terminal terminal(options.color);
  if (options.roots.size() == 2 && options.records.empty()) {
    return diff_roots(options.roots[0], options.roots[1], options.run_arguments, terminal);
  }
  if (!options.roots.empty() || options.records.size() != 2) {
    throw Trouble("diff takes two records, or --root twice");
  }
  return diff_records(options.records[0], options.records[1], terminal);
}

int answer_graph(const Options& options) {
  print_graph(options);
  return EXIT_SUCCESS;
}

int answer_nodes(const Options& options) {
  print_nodes(options.expressions,
              options.count    ? NodeForm::COUNT
              : options.expand ? NodeForm::EXPAND
                               : NodeForm::FOLD,
              options.node_group_file);
  return EXIT_SUCCESS;
}

}  // namespace

const std::vector<Command>& commands() {
  static const CommandOption FORMAT = {
      "--format", "text or json", &Options::format, {"text", "json"}};
  static const std::vector<Command> COMMANDS = {
      {.name = "check",
       .text = "every fault of an installation",
       .operation = answer_check,
       .options = {{"-f,--nodefile", "a node file to check as well", &Options::node_file},
                   {"-g,--groupfile", "a node group document to check as well",
                    &Options::node_group_file},
                   {"--strict", "exit with 3 when there are warnings alone", &Options::strict},
                   {"-v,--verbose", "show follow-ups as well", &Options::verbose},
                   {"DOCUMENT", "only what is wrong with these", &Options::documents},
                   FORMAT}},
      {.name = "show",
       .text = "the settings of a run",
       .operation = answer_show,
       .options = {{"--origin", "where each comes from, and what didn't count", &Options::origin},
                   FORMAT},
       .takes_run_arguments = true},
      {.name = "why",
       .text = "what runs on a node, or why not",
       .operation = answer_why,
       .options =
           {{.names = "NODE", .text = "a host name", .target = &Options::node, .is_required = true},
            {"FRAMEWORK", "a framework definition, by default all", &Options::framework}},
       .takes_run_arguments = true},
      {.name = "list",
       .text = "names in force, one a line",
       .operation = answer_list,
       .options = {{.names = "WHAT",
                    .text = "frameworks, providers, groups, nodes or files",
                    .target = &Options::what,
                    .words = LISTS,
                    .is_required = true}},
       .takes_run_arguments = true},
      {.name = "diff",
       .text = "two records, or --root A --root B",
       .operation = answer_diff,
       .options = {{.names = "RECORD",
                    .text = "two files that QORN_RECORD wrote",
                    .target = &Options::records,
                    .number = 2}},
       .takes_run_arguments = true,
       .compares_roots = true},
      {.name = "graph",
       .text = "includes as a DOT graph",
       .operation = answer_graph,
       .options = {{"--from", "a framework definition to start from", &Options::from},
                   {"--depth", "how many includes to follow", &Options::depth},
                   {"--reverse", "what leads to it instead", &Options::reverse},
                   {"--providers", "provider documents as well", &Options::providers}}},
      {.name = "nodes",
       .text = "host names, folded or one a line",
       .operation = answer_nodes,
       .options = {
           {"--fold", "folded, as without an option", &Options::fold},
           {.names = "--expand",
            .text = "one name a line",
            .target = &Options::expand,
            .alternatives = {"--fold"}},
           {.names = "--count",
            .text = "the number of names",
            .target = &Options::count,
            .alternatives = {"--fold", "--expand"}},
           {"-g,--groupfile", "the node group document of @GROUP", &Options::node_group_file},
           {.names = "EXPRESSION",
            .text = "names and @groups, joined by , ! and &",
            .target = &Options::expressions,
            .is_required = true}}}};
  return COMMANDS;
}

}  // namespace qorn::inspect
