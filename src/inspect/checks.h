#pragma once

#include <string>

#include "survey.h"

namespace qorn::inspect {

// The checks beyond single documents.

/// Adds files that are named and missing, cycles, definitions that do nothing, and providers that
/// nobody names.
void check_references(Survey& survey);

/// Adds what is wrong with the rule files that framework definitions name, with what these load,
/// and with the diagnoses.
void check_rules(Survey& survey);

/// Adds what is wrong with a node file: its lines, role words, hosts that come twice, and the roles
/// that providers ask for.
void check_node_file(Survey& survey, const std::string& file);

/// Adds what is wrong with a node group document: groups without nodes, names that no group or
/// definition has.
void check_node_groups(Survey& survey, const std::string& file);

}  // namespace qorn::inspect
