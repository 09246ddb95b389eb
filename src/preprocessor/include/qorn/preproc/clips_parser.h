#pragma once

#include <set>
#include <string>

#include <qorn/config.h>
#include <qorn/fwd.h>
#include <qorn/preproc/rule_file.h>

/// CLIPS files, read as text by lines and never run. Regular files of at most 100 MB are read; a
/// line may have any length and any bytes.
namespace qorn::preproc::clips_parser {

/// Scans a rule file and, at the place of each load line, the file that it loads from `kb_dir`.
/// Each file adds at most one rule to `rules`, named after its last defrule, and the ids that its
/// rules mention to config.diagnosis_rules.
///
/// A file that can't be opened brings nothing, silently. One that can be opened but not read gives
/// a line on the standard error stream and ends the whole scan. A file that loads itself, directly
/// or through others, is not scanned again; a line at level 3 names it.
///
/// Ids given by variables are looked up with one pattern, made of the first variable that the
/// process meets. Throws std::runtime_error when that variable gives no valid pattern, when
/// variables register more than 1,000,000 ids in one run (see RunScope), and when `file` and what
/// it loads are more than 256 MB or about 1,000,000 files, counted each time they are loaded.
///
/// Returns 0, or 1 when a file couldn't be read to its end; the rules of the files that led to it
/// are then missing.
int parse_clips_rules(const std::string& file, std::set<Rule>& rules, Config& config,
                      const std::string& kb_dir);

/// Reads the rules of a diagnosis file into config.diagnosis_signs: for each id that a rule
/// asserts, the ids that its conditions test, in order, behind those that are there already. A
/// file that can't be opened changes nothing, silently; one that can be opened but not read gives
/// a line at level 3. Throws std::runtime_error when one file would add more than 1,000,000 signs.
void parse_diagnoses(const std::string& file, Config& config);

/// The diagnosis files of an installation, relative to its root, in the order of reading.
inline constexpr const char* DIAGNOSIS_FILES[] = {"/kb/rules/diagnosis.clp",
                                                  "/kb/rules/shared_diagnosis.clp"};

/// Reads those under config.root.
void parse_installed_diagnoses(Config& config);

/// The first quoted text without white space, at its longest, without its quotes; empty when there
/// is none.
std::string match_quotes(const std::string& text);

/// The value of the first id slot of a line, such as (id "A"). Empty when there is none, and for a
/// line with a negated condition.
std::string find_id(const std::string& text);

}  // namespace qorn::preproc::clips_parser
