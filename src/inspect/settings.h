#pragma once

#include <string>
#include <utility>
#include <vector>

#include <qorn/config.h>

namespace qorn::inspect {

/// Name and value of each setting that options, environment or the main document make, in the
/// order of the record's fields; lists are joined by ", ". Parameters of the analyzer are settings
/// of their own: config_params.NAME, or config_params.GROUP/NAME.
using Settings = std::vector<std::pair<std::string, std::string>>;

Settings settings_of(const Config& config);

}  // namespace qorn::inspect
