#pragma once

#include <string>
#include <utility>
#include <vector>

#include <qorn/config.h>

namespace qorn::inspect {

/// Name and value of each setting that options, environment or the main document make, as the list
/// of the record's fields has them: in its order, the paths of the installation and the
/// parameters of the analyzer last. Lists are joined by ", ". Each parameter is a setting of its
/// own: config_params.NAME, or config_params.GROUP/NAME.
using Settings = std::vector<std::pair<std::string, std::string>>;

Settings settings_of(const Config& config);

}  // namespace qorn::inspect
