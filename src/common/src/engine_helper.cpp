#include <qorn/log/output_log.h>
#include <qorn/util/engine_helper.h>

namespace qorn::util {

std::string EngineHelper::format_header() {
  return "Qorn cluster diagnostics, version " QORN_VERSION "\n";
}

void EngineHelper::print_copyright() {
  log::OutputLog().stream() << "Licensed under the Apache License, Version 2.0.\n";
}

}  // namespace qorn::util
