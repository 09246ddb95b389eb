#include "front_end.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <new>
#include <string_view>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <qorn/config.h>
#include <qorn/log/output_log.h>
#include <qorn/preproc/preprocessor.h>
#include <qorn/str.h>

#include "descriptor_buffer.h"
#include "output_file.h"
#include "plan.h"
#include "record_json.h"

namespace qorn::frontend {
namespace {

/// What Run gives.
constexpr int COMPLETE = 0;
constexpr int REQUEST_SERVED = 2;

/// As the name of a file.
constexpr const char* STANDARD_OUTPUT = "-";

struct ProgramName {
  std::string_view name;
  const char* command;
};
constexpr ProgramName STAGE_PROGRAMS[] = {{"qorn-collect", "01"}, {"qorn-analyze", "10"}};

/// For its life std::cout writes to `buffer`.
class ConsoleRedirection {
 public:
  explicit ConsoleRedirection(DescriptorBuffer& buffer) : before_(std::cout.rdbuf(&buffer)) {}
  ConsoleRedirection(const ConsoleRedirection&) = delete;
  ConsoleRedirection& operator=(const ConsoleRedirection&) = delete;
  ~ConsoleRedirection() {
    std::cout.flush();
    std::cout.rdbuf(before_);
  }

 private:
  std::streambuf* before_;
};

/// A file that is opened later must not get the number of a closed standard stream, whose output
/// would then land in it. The device is opened for reading, so that writing still fails.
void hold_standard_descriptors() {
  int descriptor = 0;
  do {
    descriptor = open("/dev/null", O_RDONLY);
  } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
  if (descriptor >= 0) {
    close(descriptor);
  }
}

/// Prints the plan to the console or the log file. Returns whether a log file took it.
bool print_plan(const Config& config, const RunNotes& notes) {
  std::string text = plan_text(config, notes);
  errno = 0;
  {
    log::OutputLog out;
    out << text;
    if (!out.good()) {
      throw std::bad_alloc();  // a stream swallows it
    }
  }
  const int error = errno;
  const auto* streams = log::OutputLog::singleton_obj;
  if (!streams->files.empty() && !streams->streams.front().stream->good()) {
    std::cerr << "Could not write the log file " << str::printable(config.log_file) << ": "
              << std::strerror(error) << '\n';
    return false;
  }
  return true;
}

void write_record_to(const std::string& target, const Config& config) {
  const auto write = [&](std::ostream& out) { write_record(config, out); };
  if (target == STANDARD_OUTPUT) {
    write_descriptor(STDOUT_FILENO, "the record to standard output", write);
  } else {
    replace_file(target, write);
  }
}

/// What follows a complete record. Returns the exit status.
int present(const Config& config, const RunNotes& notes, const std::string& record) {
  if (!config.log_file.empty()) {
    log::OutputLog::set_out_streams(config.log_file, std::ios_base::out | std::ios_base::trunc);
  }
  const bool printed = print_plan(config, notes);
  if (!record.empty()) {
    write_record_to(record, config);
  }
  return printed ? EXIT_SUCCESS : EXIT_FAILURE;
}

int run(std::vector<std::string> arguments, const std::string& record) {
  std::vector<char*> argv;
  argv.reserve(arguments.size() + 1);
  for (std::string& argument : arguments) {
    argv.push_back(argument.data());
  }
  argv.push_back(nullptr);
  Config config;
  config.common_options.parse_node_groups = true;
  preproc::Preprocessor preprocessor;
  const int status = preprocessor.Run(config, static_cast<int>(arguments.size()), argv.data());
  int exit_status = status;
  if (status == COMPLETE) {
    exit_status = present(config, preprocessor.notes(), record);
  } else if (status == REQUEST_SERVED) {
    exit_status = EXIT_SUCCESS;
  }
  release_frameworks(config);
  return exit_status;
}

int run_or_report(int argc, const char* const* argv, const char* record) {
  try {
    return run(run_arguments(argc, argv), record);
  } catch (const std::bad_alloc&) {
    std::cerr << "Out of memory\n";
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
  }
  return EXIT_FAILURE;
}

/// Whether `name` leads to the file or pipe that standard output goes to. Written beside that, the
/// record would mix with the plan; renamed onto it, it would take the plan's place.
bool is_standard_output(const char* name) {
  struct stat named {};
  struct stat output {};
  return stat(name, &named) == 0 && fstat(STDOUT_FILENO, &output) == 0 &&
         !S_ISCHR(output.st_mode) && named.st_dev == output.st_dev && named.st_ino == output.st_ino;
}

/// The file that QORN_RECORD names: empty for none, STANDARD_OUTPUT for that.
const char* record_target() {
  const char* target = std::getenv("QORN_RECORD");
  if (target == nullptr) {
    return "";
  }
  return std::string_view(target) == "/dev/stdout" || is_standard_output(target) ? STANDARD_OUTPUT
                                                                                 : target;
}

}  // namespace

std::vector<std::string> run_arguments(int argc, const char* const* argv) {
  std::vector<std::string> arguments(argv, argv + argc);
  if (arguments.empty()) {
    return {"qorn"};
  }
  std::string& program = arguments.front();
  const std::size_t start = program.rfind('/') + 1;
  for (const auto& [name, command] : STAGE_PROGRAMS) {
    if (std::string_view(program).substr(start) == name) {
      program.replace(start, std::string::npos, "qorn");
      arguments.insert(arguments.begin() + 1, command);
      break;
    }
  }
  return arguments;
}

int run_program(int argc, char** argv) {
  hold_standard_descriptors();
  // A reader that goes away is a failed write like any other.
  signal(SIGPIPE, SIG_IGN);
  const char* record = record_target();
  const bool prints = std::string_view(record) != STANDARD_OUTPUT;
  DescriptorBuffer buffer(prints ? STDOUT_FILENO : STDERR_FILENO);
  const ConsoleRedirection redirection(buffer);
  int status = run_or_report(argc, argv, record);
  std::cout.flush();
  if (prints && buffer.error() != 0) {
    std::cerr << "Could not write to standard output: " << std::strerror(buffer.error()) << '\n';
    status = EXIT_FAILURE;
  }
  return status;
}

}  // namespace qorn::frontend
