#pragma once

#include <string>

#include <qorn/config.h>

namespace qorn::frontend {

/// The framework definitions as a tree with their rules, from the roots of the run: each
/// definition once in full, then with "(above)" alone. Deep levels stop being indented and bear
/// their number. Costs no more than the graph's definitions and edges.
std::string framework_tree(const Config& config);

}  // namespace qorn::frontend
