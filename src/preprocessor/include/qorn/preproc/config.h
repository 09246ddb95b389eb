#pragma once

#include <map>
#include <string>
#include <vector>

#include <libxml/tree.h>
#include <libxml/xpath.h>

#include <qorn/config.h>

/// Which providers a run has, and with which options.
namespace qorn::preproc {

/// The environment assignments of one option set.
struct ProcessedProviderAttributes : BaseProviderAttributes {
  /// QORN_PROVIDER_<provider>_<KEY>="value" for each variable, each followed by a blank.
  std::string environment;
};

/// For the collect engine: reads the collector section of `file`, validated against
/// config.config_xsd, with the document of each provider that it names. 0 for success, 1 for
/// failure, with the reason at level 3. Providers already in the record stay as they are.
int read_config(Config& config, const std::string& file);

/// The names of the providers of a provider tag, in order; reads the custom provider document
/// that the tag names into the record. False when that document is not valid.
bool get_provider_list(xmlNode* tag, std::vector<std::string>& names, Config& config);

/// Notes that a custom provider document was named. False, with a line at level 3, when the run
/// has one already.
bool claim_custom_providers(Config& config);

/// The collector's way: reads the document of each provider of the tag into config.providers. A
/// document that can't be read leaves a half-filled record there; false only for one that fails
/// otherwise, and for a custom provider document that is not valid.
bool parse_provider_tag(xmlNode* tag, Config& config);

/// A framework definition's way: notes the providers of the tag in config.providers and in a
/// group of `fwd`, without reading their documents. False for a custom provider document that is
/// not valid.
bool parse_provider_tag(xmlNode* tag, Fwd& fwd, Config& config);

/// Reads the option sets of a custom provider document into config.provider_options.
void update_provider_options(Config& config, xmlXPathContext*& context);

/// Reads the options below `parent` into `variables`; `provider` and `optionset` are for the
/// messages. Bad options are logged and left out. 0 when `parent` is null, else 1.
int get_option_variables(xmlNode*& parent, std::map<std::string, std::string>& variables,
                         std::string provider, std::string optionset);

/// Takes limit (seconds) and scale out of `variables`, where they stand as texts; what is not
/// there leaves its argument alone.
void extract_timeout_and_scale(std::map<std::string, std::string>& variables, long& timeout,
                               ScaleType& scale);

/// Whether the value holds a double quote, which is logged at level 4.
bool string_contains_double_quote(std::string& value);

/// The environment assignments of `variables` for a provider.
std::string configuration_conversion_helper(const std::map<std::string, std::string>& variables,
                                            const std::string& provider);

/// For the collect engine: the option sets of a provider (upper-case name) with their environment
/// texts; empty for a provider without any.
std::vector<ProcessedProviderAttributes> populate_option_vars_map(const Config& config,
                                                                  const std::string& provider);

}  // namespace qorn::preproc
