#include "xml_run_state.h"

#include <qorn/detail/document_scope.h>

namespace qorn {
namespace xml {

RunState& run_state() {
  static RunState state;
  return state;
}

void cleanup_parser() {
  run_state().schemas.clear();
  run_state().parser.reset();
  xmlCleanupParser();
}

}  // namespace xml

detail::DocumentScope::DocumentScope() {
  ++xml::run_state().depth;
}

detail::DocumentScope::~DocumentScope() {
  if (--xml::run_state().depth == 0) {
    xml::run_state() = {};
  }
}

}  // namespace qorn
