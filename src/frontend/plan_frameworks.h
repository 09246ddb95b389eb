#pragma once

#include <string>
#include <vector>

#include <qorn/config.h>

namespace qorn::frontend {

/// The framework definitions as a tree with their rules, from the roots of the run: each
/// definition once in full, then with "(above)" alone. Deep levels stop being indented and bear
/// their number. Costs no more than the graph's definitions and edges.
std::string framework_tree(const Config& config);

/// One line for each provider and each rule file that framework definitions name and that the
/// run passed over: a provider whose document could not be used, a file from which no rule came.
std::vector<std::string> passed_over(const Config& config);

}  // namespace qorn::frontend
