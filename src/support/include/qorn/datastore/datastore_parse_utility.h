#pragma once

#include <bitset>
#include <memory>
#include <string>
#include <vector>

#include <libxml/tree.h>

#include <qorn/datastore/datastore_config.h>

namespace qorn::datastore {

/// Takes a `parameters` text apart: the value of its source field, quotation marks removed, and
/// whether its read_only field is "true".
void parse_sqlite_params(const std::string& text, std::string& path, bool& read_only);

/// The `parameters` text of the default source.
std::string default_source_parameters(bool read_only);

/// The `parameters` text of a source that was named.
std::string named_source_parameters(const std::string& source, bool read_only);

/// One store of the process.
struct DataStore {
  /// Bit of `flags`: the store takes part in the run.
  static constexpr std::size_t IN_USE = 0;

  DataStoreConfig config;
  std::bitset<8> flags;
  /// The open connection; null for the default store of a run that reads when nothing was
  /// collected so far.
  std::shared_ptr<DataStoreExtension> extension;
};

/// The datastore layer's operations; it keeps the list of stores for the process.
class DataStoreParseUtility {
 public:
  /// The installation root, for the datastore extensions of the engines.
  static void set_default_install_path(const std::string& path);
  static const std::string& get_default_install_path();

  /// The configurations that a datastore_extensions element describes, with `default_config` for
  /// what it leaves out; a null node, or an element with nothing in it, gives `default_config`
  /// alone. A read_only that is neither "true" nor "false" gives a line at level 4, and the default
  /// counts. Throws std::runtime_error for a type that is not known.
  static std::vector<DataStoreConfig> parse_db_configs(const xmlNode* node,
                                                       const DataStoreConfig& default_config);

  /// Completes each empty extension name with the default extension.
  static void fillInVacantFields(std::vector<DataStoreConfig>& configs);

  /// Those of `combined` that have a data source of the access kind `access` (bit 0: one with a
  /// name) and whose type is among `types`; no types mean any. `flag` has no effect.
  static CombinedRType get_configurations_by_type(const CombinedRType& combined,
                                                  std::bitset<2> access,
                                                  const std::vector<DatabaseType>& types, int flag);

  /// Opens the stores, which become the list of the process. A store that is only read must be
  /// there and a database, but for the default source, which may not exist yet (one line at level
  /// 4); any other is created with its directory. Throws std::runtime_error, after one line at
  /// level 3 with the same words, when one can't be opened.
  static void initializeDatastoreExtensions(const std::vector<DataStoreConfig>& configs);

  /// The stores that initializeDatastoreExtensions opened.
  static const std::vector<DataStore>& get_datastore_vector();
};

}  // namespace qorn::datastore
