#include "cost.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace qorn::benchmarks {
namespace {

double cpu_ms(const rusage& usage) {
  const auto ms = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
  };
  return ms(usage.ru_utime) + ms(usage.ru_stime);
}

double own_cpu_ms() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return cpu_ms(usage);
}

/// The child's part: writes the time into the pipe, which a program that it executes doesn't get.
[[noreturn]] void work_in_child(const std::function<void()>& work, int result) {
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(nowhere, STDOUT_FILENO);
  try {
    const double start = own_cpu_ms();
    work();
    const double spent = own_cpu_ms() - start;
    _exit(write(result, &spent, sizeof spent) == sizeof spent ? 0 : 1);
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    _exit(1);
  }
}

}  // namespace

Cost measure(const std::function<void()>& work) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  const pid_t child = fork();
  if (child == 0) {
    work_in_child(work, ends[1]);
  }
  close(ends[1]);
  Cost cost;
  const bool measured_itself = read(ends[0], &cost.cpu_ms, sizeof cost.cpu_ms) > 0;
  close(ends[0]);
  int status = 0;
  rusage usage{};
  if (child < 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
    throw std::runtime_error("the measured process failed");
  }
  if (!measured_itself) {
    cost.cpu_ms = cpu_ms(usage);
  }
  cost.peak_mib = static_cast<double>(usage.ru_maxrss) / 1024;
  return cost;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

}  // namespace qorn::benchmarks
