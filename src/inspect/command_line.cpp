#include "command_line.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <new>
#include <optional>
#include <type_traits>

#include <CLI/CLI.hpp>

#include <qorn/fs.h>
#include <qorn/str.h>

#include "commands.h"
#include "trouble.h"
#include "variable_state.h"

namespace qorn::inspect {
namespace {

void add_option(CLI::App& command, const CommandOption& row, Question& question) {
  CLI::Option* option = nullptr;
  const auto add = [&](auto member) {
    auto& value = question.*member;
    if constexpr (std::is_same_v<decltype(value), bool&>) {
      option = command.add_flag(row.names, value, row.text);
    } else {
      option = command.add_option(row.names, value, row.text);
    }
  };
  std::visit(add, row.target);
  option->required(row.presence == Presence::REQUIRED);
  if (!row.words.empty()) {
    option->check(CLI::IsMember(row.words));
  }
}

void add_command(CLI::App& app, const Command& row, Question& question) {
  CLI::App* command = app.add_subcommand(
      row.name,
      std::string(row.text) + (row.subject == Subject::INSTALLATION ? "" : " (-- ARGUMENTS)"));
  command
      ->add_option("--root", question.roots,
                   "installation root, instead of QORN_ROOT and the program's own")
      ->allow_extra_args(false)
      ->check(CLI::ExistingDirectory);
  command->add_option("--color", question.color, "auto, always or never")
      ->check(CLI::IsMember({"auto", "always", "never"}));
  for (const CommandOption& option : row.options) {
    add_option(*command, option, question);
  }
}

int run_command(const Command& command, const Question& question) {
  if (!question.run_arguments.empty() && command.subject == Subject::INSTALLATION) {
    throw Trouble(std::string(command.name) + " takes no arguments behind --");
  }
  std::optional<VariableState> root;
  if (command.subject != Subject::TWO_RUNS && !question.roots.empty()) {
    if (question.roots.size() > 1) {
      throw Trouble(std::string(command.name) + " takes one --root");
    }
    root.emplace("QORN_ROOT", fs::abspath(question.roots.front()).c_str());
  }
  return command.operation(question);
}

int answer(int argc, char** argv) {
  CLI::App app("Questions about an installation and a run", "qorn-inspect");
  app.set_version_flag("--version", QORN_VERSION);
  app.require_subcommand(1);
  Question question;
  const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
  const auto behind = std::find(words.begin(), words.end(), "--");
  if (behind != words.end()) {
    question.run_arguments.assign(behind + 1, words.end());
  }
  for (const Command& command : commands()) {
    add_command(app, command, question);
  }
  try {
    // CLI11 takes the words from the back.
    app.parse(std::vector<std::string>(std::reverse_iterator(behind), words.rend()));
  } catch (const CLI::ParseError& error) {
    return app.exit(error, std::cout, std::cerr) == 0 ? EXIT_SUCCESS : WRONG_USE;
  }
  const std::string name = app.get_subcommands().front()->get_name();
  return run_command(*std::find_if(commands().begin(), commands().end(),
                                   [&](const Command& each) { return each.name == name; }),
                     question);
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
