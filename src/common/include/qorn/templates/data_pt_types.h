#pragma once

#include <cstdint>

#include <qorn/word_table.h>

namespace qorn::templates {

/// The type of a CLIPS slot's data point.
enum class DataPt_TYPES : std::int32_t { LONG, DOUBLE, STRING, SYMBOL, MULTI };

/// In upper or in lower case, not mixed.
inline constexpr Word<DataPt_TYPES> DATA_POINT_TYPES[] = {
    {"LONG", DataPt_TYPES::LONG},     {"DOUBLE", DataPt_TYPES::DOUBLE},
    {"STRING", DataPt_TYPES::STRING}, {"SYMBOL", DataPt_TYPES::SYMBOL},
    {"MULTI", DataPt_TYPES::MULTI},   {"long", DataPt_TYPES::LONG},
    {"double", DataPt_TYPES::DOUBLE}, {"string", DataPt_TYPES::STRING},
    {"symbol", DataPt_TYPES::SYMBOL}, {"multi", DataPt_TYPES::MULTI}};

}  // namespace qorn::templates
