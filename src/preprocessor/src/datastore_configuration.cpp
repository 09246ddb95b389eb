#include <exception>
#include <set>

#include <qorn/datastore/datastore_parse_utility.h>
#include <qorn/detail/notes.h>
#include <qorn/log/error_log.h>
#include <qorn/preproc/preprocessor.h>
#include <qorn/xml.h>

namespace qorn::preproc {
namespace {

using datastore::DatabaseType;
using datastore::DataStoreConfig;
using datastore::DataStoreParseUtility;

/// A run that collects writes, any other only reads.
bool only_reads(const Config& config) {
  return (config.operations & operation::COLLECT) == 0;
}

/// Appends a store for each source of the command line that no record has the name of. A name
/// given twice is a store twice.
void add_named_sources(Config& config) {
  std::set<std::string> known;
  for (const DataStoreConfig& store : config.datastores) {
    known.insert(store.name);
  }
  DataStoreConfig store;
  for (const std::string& source : config.db_names) {
    if (known.count(source) == 0) {
      store.name = source;
      store.parameters = datastore::named_source_parameters(source, only_reads(config));
      config.datastores.push_back(store);
    }
  }
}

}  // namespace

int ConfigParser::parse_tag_db(xmlNode* root, Config& config) {
  try {
    if (!config.db_names.empty()) {
      add_named_sources(config);
      return 0;
    }
    const DataStoreConfig default_config(DatabaseType::SQLITE, datastore::DEFAULT_DATASTORE_NAME,
                                         datastore::DEFAULT_DATASTORE_SQLITE_EXTENSION_NAME, "",
                                         datastore::default_source_parameters(only_reads(config)));
    const xmlNode* extensions = xml::get_child_node(root, "datastore_extensions");
    config.datastores = DataStoreParseUtility::parse_db_configs(extensions, default_config);
    for (const xmlNode* store : xml::get_child_nodes(extensions, "datastore")) {
      detail::note_setting({"datastores",
                            {},
                            xml::place_of(store),
                            xml::attribute_of(store, "name").value_or(default_config.name),
                            RunNotes::Setting::Effect::ADDS});
    }
  } catch (const std::exception& error) {
    log::ErrorLog(log::level::ERROR).stream() << error.what();
    return 1;
  }
  return 0;
}

int ConfigParser::configure_tag_db(Config& config) {
  constexpr unsigned NAMED_SOURCE = 1;
  DataStoreParseUtility::fillInVacantFields(config.datastores);
  const datastore::CombinedRType all{{}, config.datastores};
  std::vector<DatabaseType> types;
  if (!only_reads(config)) {
    types.push_back(DatabaseType::SQLITE);
  }
  if (!DataStoreParseUtility::get_configurations_by_type(all, NAMED_SOURCE, types, 0)
           .configurations.empty()) {
    return 0;
  }
  log::ErrorLog(log::level::ERROR).stream()
      << (only_reads(config) ? "Cannot find any data sources type for 'DATA'.\n"
                             : "Cannot find any data source of type SQlite 'DATA'.\n");
  return 1;
}

void Preprocessor::find_database_names(Config& config) {
  config.database_names.clear();
  try {
    for (const auto& store : DataStoreParseUtility::get_datastore_vector()) {
      if (!store.flags.test(datastore::DataStore::IN_USE)) {
        continue;
      }
      if (store.config.type == DatabaseType::SQLITE) {
        std::string path;
        bool read_only = false;
        datastore::parse_sqlite_params(store.config.parameters, path, read_only);
        config.database_names.push_back(path);
      } else {
        config.database_names.push_back(store.config.parameters);
      }
    }
  } catch (const std::exception& error) {
    log::ErrorLog(log::level::ERROR).stream() << "Error thrown in when printing database name.";
    log::ErrorLog(log::level::ERROR).stream() << error.what();
  }
}

}  // namespace qorn::preproc
