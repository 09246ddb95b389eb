#pragma once

#include <string>
#include <vector>

#include <qorn/config.h>
#include <qorn/xml/document.h>

/// Postprocessor documents are tried as tables first; what that says against one counts only when
/// it turns out to be no report either.
namespace qorn::preproc {
#pragma GCC visibility push(hidden)

/// See ConfigParser::parse_postproc_table_config; the faults are handed over.
int read_postproc_tables(Config& config, const std::string& xsd, std::vector<xml::Fault>& faults);

/// See ConfigParser::parse_postproc_reports_config. `table_faults` are the documents' faults as
/// tables; of a document that is no report either they are reported as well.
int read_postproc_reports(Config& config, const std::string& xsd,
                          const std::vector<xml::Fault>& table_faults);

/// Where a table was read, no report is: notes each valid report as passed over, and takes its
/// faults as a table out of `faults`.
void pass_over_reports(const Config& config, const std::string& xsd,
                       std::vector<xml::Fault>& faults);

#pragma GCC visibility pop
}  // namespace qorn::preproc
