#pragma once

#include <string>
#include <vector>

namespace qorn::inspect {

/// Prints the settings of the run that a front-end's arguments ask for, one "NAME = VALUE" a
/// line; with `origins` each with where it comes from and what stands elsewhere but didn't
/// count; `root_origin` says where an installation root other than the program's own comes from.
/// Throws Trouble when the run would fail.
void show_settings(const std::vector<std::string>& arguments, bool origins, bool json,
                   const std::string& root_origin);

}  // namespace qorn::inspect
