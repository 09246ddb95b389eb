#include "xml_run_scope.h"

#include <qorn/xml/run_scope.h>

namespace qorn::xml {

RunState& run_state() {
  static RunState state;
  return state;
}

RunScope::RunScope() {
  ++run_state().depth;
}

RunScope::~RunScope() {
  if (--run_state().depth == 0) {
    run_state() = {};
  }
}

void cleanup_parser() {
  run_state().schemas.clear();
  run_state().parser.reset();
  xmlCleanupParser();
}

}  // namespace qorn::xml
