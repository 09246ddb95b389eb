#pragma once

#include <functional>
#include <vector>

namespace qorn::benchmarks {

/// What some work cost.
struct Cost {
  double cpu_ms = 0;
  double peak_mib = 0;  // resident memory of the process that did it
};

/// Does the work in a process of its own, with nothing on its standard output, and measures the
/// processor time of the work alone, or of the whole process when the work executes another
/// program. Throws std::runtime_error when the process fails.
Cost measure(const std::function<void()>& work);

double median(std::vector<double> values);

}  // namespace qorn::benchmarks
