#pragma once

#include <string>
#include <utility>
#include <vector>

#include <qorn/config.h>
#include <qorn/run_notes.h>

#include "settings.h"

namespace qorn::inspect {

/// Where a setting comes from.
struct SettingOrigin {
  std::vector<std::string> counted;                         // empty: the default
  std::vector<std::pair<std::string, std::string>> unused;  // origin and value
};

/// The origins of `settings`, in their order, of the run that `arguments` lead to. `config` is
/// what it came to after its main document, `notes` what it noticed until then.
std::vector<SettingOrigin> origins_of(const Settings& settings,
                                      const std::vector<std::string>& arguments,
                                      const Config& config, const RunNotes& notes);

}  // namespace qorn::inspect
