#pragma once

#include <string>
#include <vector>

namespace qorn::inspect {

/// What can be listed.
inline const std::vector<std::string> LISTS = {"frameworks", "providers", "groups", "nodes",
                                               "files"};

/// Prints the names in force, one a line; "files" prints everything that a run with these
/// arguments would read, in order, each with a tab and the reason. Throws Trouble when the
/// arguments or a document that is needed for it can't be used.
void print_list(const std::string& what, const std::vector<std::string>& arguments);

}  // namespace qorn::inspect
