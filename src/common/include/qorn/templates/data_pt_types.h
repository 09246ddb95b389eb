#pragma once

#include <cstdint>

namespace qorn::templates {

/// The type of a CLIPS slot's data point.
enum class DataPt_TYPES : std::int32_t { LONG, DOUBLE, STRING, SYMBOL, MULTI };

}  // namespace qorn::templates
