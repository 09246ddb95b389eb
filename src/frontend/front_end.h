#pragma once

#include <string>
#include <vector>

namespace qorn::frontend {

/// The arguments as Preprocessor::Run takes them: what was called as qorn-collect or
/// qorn-analyze is qorn, in the same directory, with the command "01" or "10" ahead of the
/// user's arguments. Anything else stays as it is.
std::vector<std::string> run_arguments(int argc, const char* const* argv);

/// The program: runs the preparation stage, prints the plan of the run, and writes the record as
/// JSON when QORN_RECORD names a file ("-" is the standard output; banner and plan then go to
/// standard error). Gives the exit status: 0 for a plan and for a request that was served, 1 for
/// any failure, output that could not be written included, with a line on standard error.
int run_program(int argc, char** argv);

}  // namespace qorn::frontend
