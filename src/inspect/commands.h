#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "check.h"
#include "graph.h"

namespace qorn::inspect {

/// What the options and arguments of a command line fill. A command has some of them.
struct CommandOptions : CheckOptions, GraphOptions {
  std::vector<std::string> roots;
  std::string color = "auto";
  std::string format = "text";
  std::string node;
  std::optional<std::string> framework;
  std::string what;
  std::vector<std::string> records;
  std::vector<std::string> expressions;
  bool origin = false;
  bool fold = false;
  bool expand = false;
  bool count = false;
  std::vector<std::string> run_arguments;  // a front-end's, behind the first "--"
};

/// An option of a command, or an argument.
struct CommandOption {
  using Target =
      std::variant<bool CommandOptions::*, std::size_t CommandOptions::*,
                   std::string CommandOptions::*, std::optional<std::string> CommandOptions::*,
                   std::vector<std::string> CommandOptions::*>;

  const char* names;  // "-g,--groupfile"; an argument's has no hyphen
  const char* text;   // in the usage
  Target target;
  std::vector<std::string> words{};         // the values that it may have; empty: any
  std::vector<const char*> alternatives{};  // those before it that can't be given as well
  bool is_required = false;
  int number = 0;  // how many values a list has when it is given; 0: one or more
};

struct Command {
  const char* name;
  const char* text;                         // in the usage
  int (*operation)(const CommandOptions&);  // gives the exit status
  std::vector<CommandOption> options;       // beside --root and --color, which all have
  bool takes_run_arguments = false;
  bool compares_roots = false;  // takes --root twice; else the one given is in force
};

/// In the order of the usage.
const std::vector<Command>& commands();

}  // namespace qorn::inspect
