#include "command_line.h"

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <new>
#include <optional>
#include <type_traits>

#include <CLI/CLI.hpp>

#include <qorn/fs.h>
#include <qorn/str.h>

#include "commands.h"
#include "run_loader.h"
#include "variable_state.h"

namespace qorn::inspect {
namespace {

/// Gives the words ahead of the first "--"; those behind it are a front-end's.
std::vector<std::string> take_words(int argc, char** argv, CommandOptions& options) {
  std::vector<std::string> own;
  std::vector<std::string>* part = &own;
  for (int i = 1; i < argc; ++i) {
    if (part == &own && std::strcmp(argv[i], "--") == 0) {
      part = &options.run_arguments;
    } else {
      part->push_back(argv[i]);
    }
  }
  return own;
}

void add_option(CLI::App& command, const CommandOption& row, CommandOptions& options) {
  CLI::Option* option = nullptr;
  const auto add = [&](auto member) {
    auto& value = options.*member;
    if constexpr (std::is_same_v<decltype(value), bool&>) {
      option = command.add_flag(row.names, value, row.text);
    } else {
      option = command.add_option(row.names, value, row.text);
    }
  };
  std::visit(add, row.target);
  if (row.number > 0) {
    option->expected(row.number);
  }
  option->required(row.is_required);
  if (!row.words.empty()) {
    option->check(CLI::IsMember(row.words));
  }
  for (const char* other : row.alternatives) {
    option->excludes(command.get_option(other));
  }
}

void add_command(CLI::App& app, const Command& row, CommandOptions& options) {
  CLI::App* command = app.add_subcommand(
      row.name, std::string(row.text) + (row.takes_run_arguments ? " (-- ARGUMENTS)" : ""));
  command
      ->add_option("--root", options.roots,
                   "installation root, instead of QORN_ROOT and the program's own")
      ->allow_extra_args(false)
      ->check(CLI::ExistingDirectory);
  command->add_option("--color", options.color, "auto, always or never")
      ->check(CLI::IsMember({"auto", "always", "never"}));
  for (const CommandOption& option : row.options) {
    add_option(*command, option, options);
  }
}

int run_command(const Command& command, const CommandOptions& options) {
  if (!options.run_arguments.empty() && !command.takes_run_arguments) {
    throw Trouble(std::string(command.name) + " takes no arguments behind --");
  }
  std::optional<VariableState> root;
  if (!command.compares_roots && !options.roots.empty()) {
    if (options.roots.size() > 1) {
      throw Trouble(std::string(command.name) + " takes one --root");
    }
    root.emplace("QORN_ROOT", fs::abspath(options.roots.front()).c_str());
  }
  return command.operation(options);
}

int answer(int argc, char** argv) {
  CLI::App app("Questions about an installation and a run", "qorn-inspect");
  app.set_version_flag("--version", QORN_VERSION);
  app.require_subcommand(1);
  CommandOptions options;
  for (const Command& command : commands()) {
    add_command(app, command, options);
  }
  try {
    std::vector<std::string> words = take_words(argc, argv, options);
    std::reverse(words.begin(), words.end());  // as CLI11 takes a vector
    app.parse(words);
  } catch (const CLI::ParseError& error) {
    return app.exit(error, std::cout, std::cerr) == 0 ? EXIT_SUCCESS : WRONG_USE;
  }
  const std::string name = app.get_subcommands().front()->get_name();
  return run_command(*std::find_if(commands().begin(), commands().end(),
                                   [&](const Command& each) { return each.name == name; }),
                     options);
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
