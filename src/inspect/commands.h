#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "question.h"

namespace qorn::inspect {

enum class Presence { OPTIONAL, REQUIRED };

/// An option of a command, or an argument.
struct CommandOption {
  const char* names;  // "-g,--groupfile"; an argument's has no hyphen
  const char* text;   // in the usage
  std::variant<bool Question::*, std::size_t Question::*, std::string Question::*,
               std::optional<std::string> Question::*, std::vector<std::string> Question::*>
      target;
  Presence presence = Presence::OPTIONAL;
  std::vector<std::string> words{};  // the values that it may have; empty: any
};

/// What a command is about.
enum class Subject {
  INSTALLATION,
  RUN,      // takes a front-end's arguments behind "--"
  TWO_RUNS  // takes --root twice as well
};

struct Command {
  const char* name;
  const char* text;  // in the usage
  Subject subject;
  int (*operation)(const Question&);   // gives the exit status
  std::vector<CommandOption> options;  // beside --root and --color, which all have
};

/// In the order of the usage.
const std::vector<Command>& commands();

}  // namespace qorn::inspect
