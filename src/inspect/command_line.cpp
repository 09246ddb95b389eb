#include "command_line.h"

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <new>
#include <optional>

#include <CLI/CLI.hpp>

#include <qorn/fs.h>
#include <qorn/str.h>

#include "check.h"
#include "diff.h"
#include "graph.h"
#include "list.h"
#include "nodes.h"
#include "run_loader.h"
#include "show.h"
#include "variable_state.h"
#include "why.h"

namespace qorn::inspect {
namespace {

using Arguments = std::vector<std::string>;

/// The program's own command line, and a front-end's behind the first "--".
struct CommandLine {
  Arguments own;
  Arguments front_end;
};

CommandLine split(int argc, char** argv) {
  CommandLine line;
  Arguments* part = &line.own;
  for (int i = 1; i < argc; ++i) {
    if (part == &line.own && std::strcmp(argv[i], "--") == 0) {
      part = &line.front_end;
    } else {
      part->push_back(argv[i]);
    }
  }
  return line;
}

/// What the sub-commands' options fill.
struct Options {
  std::vector<std::string> roots;
  std::string color = "auto";
  std::string format = "text";
  CheckOptions check;
  GraphOptions graph;
  bool origin = false;
  std::vector<std::string> words;
  std::string node_group_file;
  bool fold = false;
  bool expand = false;
  bool count = false;
};

CLI::App* add_command(CLI::App& app, const char* name, const char* description, Options& options) {
  CLI::App* command = app.add_subcommand(name, description);
  command
      ->add_option("--root", options.roots,
                   "installation root, instead of QORN_ROOT and the program's own")
      ->allow_extra_args(false)
      ->check(CLI::ExistingDirectory);
  command->add_option("--color", options.color, "auto, always or never")
      ->check(CLI::IsMember({"auto", "always", "never"}));
  return command;
}

void add_format(CLI::App* command, Options& options) {
  command->add_option("--format", options.format, "text or json")
      ->check(CLI::IsMember({"text", "json"}));
}

void add_check(CLI::App& app, Options& options) {
  CLI::App* command = add_command(app, "check", "every fault of an installation", options);
  command->add_option("-f,--nodefile", options.check.node_file, "a node file to check as well");
  command->add_option("-g,--groupfile", options.check.node_group_file,
                      "a node group document to check as well");
  command->add_flag("--strict", options.check.strict, "exit with 3 when there are warnings alone");
  command->add_flag("-v,--verbose", options.check.verbose, "show follow-ups as well");
  command->add_option("DOCUMENT", options.check.documents, "only what is wrong with these");
  add_format(command, options);
}

void add_questions(CLI::App& app, Options& options) {
  CLI::App* show = add_command(app, "show", "the settings of a run (-- ARGUMENTS)", options);
  show->add_flag("--origin", options.origin, "where each comes from, and what didn't count");
  add_format(show, options);
  CLI::App* why =
      add_command(app, "why", "what runs on a node, or why not (-- ARGUMENTS)", options);
  why->add_option("NODE FRAMEWORK", options.words, "a node, and a framework definition")
      ->required()
      ->expected(1, 2);
  CLI::App* list = add_command(app, "list", "names in force, one a line (-- ARGUMENTS)", options);
  list->add_option("WHAT", options.words, "frameworks, providers, groups, nodes or files")
      ->required()
      ->expected(1)
      ->check(CLI::IsMember(LISTS));
  CLI::App* diff =
      add_command(app, "diff", "two records, or --root A --root B (-- ARGUMENTS)", options);
  diff->add_option("RECORD", options.words, "two files that QORN_RECORD wrote")->expected(2);
}

void add_graph(CLI::App& app, Options& options) {
  CLI::App* command = add_command(app, "graph", "includes as a DOT graph", options);
  command->add_option("--from", options.graph.from, "a framework definition to start from");
  command->add_option("--depth", options.graph.depth, "how many includes to follow");
  command->add_flag("--reverse", options.graph.reverse, "what leads to it instead");
  command->add_flag("--providers", options.graph.providers, "provider documents as well");
}

void add_nodes(CLI::App& app, Options& options) {
  CLI::App* command = add_command(app, "nodes", "host names, folded or one a line", options);
  CLI::Option* expand = command->add_flag("--expand", options.expand, "one name a line");
  CLI::Option* count = command->add_flag("--count", options.count, "the number of names");
  command->add_flag("--fold", options.fold, "folded, as without an option")
      ->excludes(expand)
      ->excludes(count);
  count->excludes(expand);
  command->add_option("-g,--groupfile", options.node_group_file,
                      "the node group document of @GROUP");
  command->add_option("EXPRESSION", options.words, "names and @groups, joined by , ! and &")
      ->required();
}

int run_diff(const Options& options, const Arguments& arguments) {
  if (options.roots.size() == 2 && options.words.empty()) {
    return diff_roots(options.roots[0], options.roots[1], arguments, Terminal(options.color));
  }
  if (!options.roots.empty() || options.words.size() != 2) {
    throw Trouble("diff takes two records, or --root twice");
  }
  return diff_records(options.words[0], options.words[1], Terminal(options.color));
}

/// Commands that take a front-end's arguments.
bool takes_arguments(const std::string& command) {
  return command == "show" || command == "why" || command == "list" || command == "diff";
}

int run_command(const std::string& command, const Options& options, const Arguments& arguments) {
  if (!arguments.empty() && !takes_arguments(command)) {
    throw Trouble(command + " takes no arguments behind --");
  }
  if (command == "diff") {
    return run_diff(options, arguments);
  }
  if (options.roots.size() > 1) {
    throw Trouble(command + " takes one --root");
  }
  std::optional<VariableState> root;
  if (!options.roots.empty()) {
    root.emplace("QORN_ROOT", fs::abspath(options.roots.front()).c_str());
  }
  const bool json = options.format == "json";
  if (command == "check") {
    return check(options.check, json, Terminal(options.color));
  }
  if (command == "show") {
    show_settings(arguments, options.origin, json,
                  options.roots.empty() ? "environment QORN_ROOT" : "option --root");
  } else if (command == "why") {
    return explain(options.words, arguments, Terminal(options.color));
  } else if (command == "graph") {
    print_graph(options.graph);
  } else if (command == "list") {
    print_list(options.words.front(), arguments);
  } else {
    print_nodes(options.words,
                options.count    ? NodeForm::COUNT
                : options.expand ? NodeForm::EXPAND
                                 : NodeForm::FOLD,
                options.node_group_file);
  }
  return EXIT_SUCCESS;
}

int answer(int argc, char** argv) {
  CommandLine line = split(argc, argv);
  CLI::App app("Questions about an installation and a run", "qorn-inspect");
  app.set_version_flag("--version", QORN_VERSION);
  app.require_subcommand(1);
  Options options;
  add_check(app, options);
  add_questions(app, options);
  add_graph(app, options);
  add_nodes(app, options);
  try {
    std::reverse(line.own.begin(), line.own.end());  // as CLI11 takes a vector
    app.parse(line.own);
  } catch (const CLI::ParseError& error) {
    return app.exit(error, std::cout, std::cerr) == 0 ? EXIT_SUCCESS : WRONG_USE;
  }
  return run_command(app.get_subcommands().front()->get_name(), options, line.front_end);
}

}  // namespace

int run(int argc, char** argv) {
  try {
    return answer(argc, argv);
  } catch (const Trouble& trouble) {
    if (*trouble.what() != '\0') {
      std::cerr << "qorn-inspect: " << str::printable(trouble.what(), "\n") << '\n';
    }
  } catch (const std::bad_alloc&) {
    std::cerr << "Out of memory\n";
  } catch (const std::exception& error) {
    std::cerr << "qorn-inspect: " << str::printable(error.what(), "\n") << '\n';
  }
  return WRONG_USE;
}

}  // namespace qorn::inspect
