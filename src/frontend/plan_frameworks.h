#pragma once

#include <string>
#include <vector>

#include <qorn/config.h>
#include <qorn/preproc/run_scope.h>

namespace qorn::frontend {

/// The framework definitions as a tree with their rules, from the roots of the run: each
/// definition once in full, then with "(above)" alone. Deep levels stop being indented and bear
/// their number. Costs no more than the graph's definitions and edges.
std::string framework_tree(const Config& config);

/// One line for each thing that documents name and that the run passed over: a provider whose
/// document could not be used, a rule file from which no rule came, and what the run noted.
std::vector<std::string> passed_over(const Config& config, const preproc::RunNotes& notes);

}  // namespace qorn::frontend
