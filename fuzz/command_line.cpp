#include <qorn/str.h>

#include "fuzz_installation.h"

namespace {

/// Reading a terminal or an endless device would stop the fuzzer; a run is free to do both.
bool names_device(std::string_view input) {
  return input.find("dev") != std::string_view::npos ||
         input.find("proc") != std::string_view::npos ||
         input.find("sys") != std::string_view::npos;
}

}  // namespace

// Each line of the input is an argument. Documents aren't read, so that no argument makes a file.
bool qorn::fuzzing::read_input(const FuzzInstallation& /*installation*/, Config& config,
                               std::string_view input) {
  if (names_device(input)) {
    return true;
  }
  std::vector<std::string> arguments{"qorn"};
  for (std::string& argument : str::split(std::string(input), '\n', true)) {
    arguments.emplace_back(argument.c_str());  // ends at its first NUL byte, as in a process
  }
  std::vector<char*> argv;
  for (std::string& argument : arguments) {
    argv.push_back(argument.data());
  }
  argv.push_back(nullptr);
  config.fwds->names.clear();
  preproc::Preprocessor preprocessor;
  preprocessor.set_defaults_in_config(config);
  const int status =
      preprocessor.ProcessCommand(static_cast<int>(arguments.size()), argv.data(), config);
  return status == 0 && preprocessor.CheckConfiguration(config);
}
