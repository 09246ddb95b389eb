#pragma once

#include <qorn/config.h>

namespace qorn::preproc {

struct CommonHelpers {
  /// The stages of a run, for option checks and usage text.
  enum OPERATION_TYPE : int { NEITHER = 0, COLLECT = 1, ANALYZE = 2, BOTH = 3 };

  static OPERATION_TYPE set_to_enum(const Config& config) {
    return static_cast<OPERATION_TYPE>(config.operations &
                                       (operation::COLLECT | operation::ANALYZE));
  }
};

}  // namespace qorn::preproc
