#pragma once

#include <nlohmann/json.hpp>

#include "terminal.h"

namespace qorn::inspect {

/// Writes the record's installation root as $QORN_ROOT wherever a path is below it.
void hide_root(nlohmann::json& record);

/// Prints the differences of two records by section; what no section compares is a setting. Gives
/// 0 when there are none, else 1.
int compare_records(nlohmann::json a, nlohmann::json b, const Terminal& terminal);

}  // namespace qorn::inspect
