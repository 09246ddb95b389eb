#include "capture.h"

#include <iostream>

#include <qorn/log/error_log.h>
#include <qorn/str.h>

namespace qorn::inspect {

Capture::Capture()
    : cout_(std::cout.rdbuf(output_.rdbuf())),
      cerr_(std::cerr.rdbuf(errors_.rdbuf())),
      log_level_(log::LOG_LEVEL) {
}

Capture::~Capture() {
  std::cout.rdbuf(cout_);
  std::cerr.rdbuf(cerr_);
  log::LOG_LEVEL = log_level_;
}

std::vector<std::string> Capture::error_lines() const {
  return str::split(errors_.str(), '\n', false);
}

}  // namespace qorn::inspect
