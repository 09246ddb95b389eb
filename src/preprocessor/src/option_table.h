#pragma once

#include <array>

#include <getopt.h>

#include <qorn/preproc/common_helpers.h>

namespace qorn::preproc {

using LongNames = std::array<const char*, 3>;

constexpr LongNames names(const char* first = nullptr, const char* second = nullptr,
                          const char* third = nullptr) {
  return {first, second, third};
}

/// An option: what getopt_long is told of it, and its lines of the usage text.
struct OptionRow {
  char key;                              // its letter; a digit for an option without one
  LongNames names;                       // none for what no program takes
  int argument;                          // no_argument or required_argument
  CommonHelpers::OPERATION_TYPE stages;  // in whose usage text it stands
  const char* usage;                     // null for an option that no usage text has
  const char* description;
};

constexpr bool is_letter(char key) {
  return key > '9';
}

using enum CommonHelpers::OPERATION_TYPE;

/// In the order of the long names.
inline constexpr OptionRow OPTION_TABLE[] = {
    // The asynchronous storage belongs to the collect engine.
    {'A', names(), no_argument, COLLECT, "--async",
     "Stores output locally for asynchronous accumulation by VELK"},
    {'a', names("all"), no_argument, COLLECT, nullptr, nullptr},
    {'C', names("re-collect-data"), no_argument, COLLECT, "--re-collect-data",
     "deprecated, collect full data for a run"},
    {'c', names("config"), required_argument, BOTH, "--config <filename>",
     "full path to configuration file, defaults to $QORN_ROOT/etc/qorn.xml"},
    {'D', names("db"), required_argument, BOTH, "--db <filename>",
     "use specific <filename> for database file (multiple allowed)"},
    {'e', names("environment-propagation-off"), no_argument, COLLECT,
     "--environment-propagation-off",
     "Turns off environment variable propagation for select collector extensions"},
    {'f', names("machinefile", "nodelist", "nodefile"), required_argument, BOTH,
     "--nodefile <filename>", "<filename> contains line-separated list of compute node names"},
    {'F', names("framework-definition", "fwd"), required_argument, BOTH, "--fwd <fwd>",
     "specific framework definition (FWD) to collect/analyze (multiple allowed)"},
    {'g', names("groupfile", "grouplist", "nodegroup"), required_argument, ANALYZE,
     "--groupfile <filename>",
     "<filename> is xml file detailing specific nodegroups for qorn-analyze"},
    {'h', names("help"), no_argument, BOTH, "--help", "this message"},
    {'l', names("level", "log-level"), required_argument, BOTH, "--log-level <value>",
     "output verbosity, <value> = [alert | critical | error | warning | notice | info | debug]"},
    {'n', names("node-include"), required_argument, ANALYZE, "--node-include <node>",
     "Filters for only the specified <node> issues in the analyzer output (multiple allowed)"},
    {'o', names("logfile"), required_argument, ANALYZE, "--logfile <filename>",
     "<filename> to write output to, default is qorn_results.log"},
    {'1', names("sort-asc"), required_argument, ANALYZE, "--sort-asc <field>",
     "ascending sort of <field> [id | node | severity]"},
    {'2', names("sort-desc"), required_argument, ANALYZE, "--sort-desc <field>",
     "descending sort of <field> [id | node | severity]"},
    {'r', names("permutations"), required_argument, COLLECT, "--permutations <#>",
     "<#> number of compute node pair permutations for data collection (default = 1)"},
    {'S', names("ignore-subclusters"), no_argument, COLLECT, "--ignore-subclusters",
     "Ignores the subcluster keyword in nodefile <filename>"},
    {'t', names("threshold-too-old"), required_argument, ANALYZE, "--threshold-too-old <#>",
     "<#> number of days for analysis to use for comparison (default = 7)"},
    {'v', names("version"), no_argument, BOTH, "--version", "returns the version information"},
    {'x', names("min-severity"), required_argument, ANALYZE, nullptr, nullptr},
    {'X', names("FWD_description"), required_argument, BOTH, "--FWD_description list | <fwd>",
     "list the available FWDs, or details of a specific <fwd> framework definition"},
    {'z', names("fail-level"), required_argument, ANALYZE, "--fail-level <severity>",
     "lowest level of failures, <severity> = [informational | warning | critical]"}};

}  // namespace qorn::preproc
