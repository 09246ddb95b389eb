#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include <unistd.h>

#include "command_line.h"
#include "descriptor_buffer.h"

int main(int argc, char** argv) {
  // A reader that goes away is a failed write like any other.
  std::signal(SIGPIPE, SIG_IGN);
  qorn::frontend::DescriptorBuffer buffer(STDOUT_FILENO);
  std::streambuf* before = std::cout.rdbuf(&buffer);
  int status = qorn::inspect::run(argc, argv);
  std::cout.flush();
  std::cout.rdbuf(before);
  if (buffer.error() != 0) {
    std::cerr << "Could not write to standard output: " << std::strerror(buffer.error()) << '\n';
    status = qorn::inspect::WRONG_USE;
  }
  return status;
}
