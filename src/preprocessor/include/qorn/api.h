#pragma once

#include <map>
#include <string>
#include <vector>

#include <qorn/config.h>

/// For front-ends that don't use the main document.
namespace qorn {

/// Sets a record to its defaults: the installation root and the path of the main document.
void init_api_config(Config& config);

/// Appends suppressions to config.suppressions. The texts of the keys "nodes", "severities" and
/// "message_ids" of a request are combined in every way. 1 on success; 0, with two lines at
/// level 3, for a severity word that is not known: earlier requests' records then stay.
int set_suppressions(Config& config,
                     const std::vector<std::map<std::string, std::vector<std::string>>>& requests);

}  // namespace qorn
