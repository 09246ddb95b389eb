#include <exception>

#include <qorn/datastore/datastore_parse_utility.h>
#include <qorn/fs.h>
#include <qorn/log/error_log.h>
#include <qorn/preproc/preprocessor.h>

#include "provider_document.h"

namespace qorn::preproc {
namespace {

/// Takes `provider` out of the providers where it stands under `name`.
void forget(Config& config, const std::string& name,
            const std::shared_ptr<provider_config>& provider) {
  const auto found = config.providers.find(name);
  if (found != config.providers.end() && found->second == provider) {
    config.providers.erase(found);
  }
}

/// Reads the document of a provider that was noted under the name in a framework definition; the
/// map then holds what was read, under the name that the document's file gives it.
void add_provider(const std::shared_ptr<provider_config>& provider, Config& config,
                  ProviderDocuments& documents) {
  const std::string noted = provider->name;
  provider->config_file =
      fs::abspath(Preprocessor::provider_path(provider->config_dir, provider->name));
  const int status =
      read_provider_config(*provider, provider->config_file, config, provider->aux_path, documents);
  if (status != 0 || noted != provider->name) {
    forget(config, noted, provider);
  }
  if (status != 0) {
    forget(config, provider->name, provider);
  } else {
    config.providers.try_emplace(provider->name, provider);
  }
}

}  // namespace

bool Preprocessor::build_provider_list(Config& config) {
  ProviderDocuments documents;
  for (const auto& [path, fwd] : config.fwds->by_path) {
    for (auto& group : fwd->provider_groups) {
      for (const auto& provider : group) {
        add_provider(provider, config, documents);
      }
    }
  }
  return !config.providers.empty();
}

std::string Preprocessor::provider_path(const std::string& directory, const std::string& name) {
  return directory + "/" + name + ".xml";
}

void Preprocessor::find_database_names(Config& config) {
  config.database_names.clear();
  try {
    for (const auto& store : datastore::DataStoreParseUtility::get_datastore_vector()) {
      if (!store.flags.test(datastore::DataStore::IN_USE)) {
        continue;
      }
      if (store.config.type == datastore::DatabaseType::SQLITE) {
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
