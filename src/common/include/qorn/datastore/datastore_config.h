#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qorn::datastore {

enum class DatabaseType : std::int32_t { SQLITE = 0 };

inline constexpr const char* DEFAULT_DATASTORE_NAME = "DATA";
inline constexpr const char* DEFAULT_DATASTORE_SQLITE_EXTENSION_NAME = "sqlite";
inline constexpr const char* DEFAULT_DATA_SOURCE = "~/.qorn/qorn.db";

/// Where one datastore is and how it is opened.
struct DataStoreConfig {
  DataStoreConfig() = default;
  DataStoreConfig(DatabaseType store_type, std::string store_name, std::string extension,
                  std::string third_text, std::string parameter_text)
      : type(store_type),
        name(std::move(store_name)),
        extension_name(std::move(extension)),
        extension_text(std::move(third_text)),
        parameters(std::move(parameter_text)) {}

  DatabaseType type = DatabaseType::SQLITE;
  std::string name;
  std::string extension_name;  // the extension that serves the store
  std::string extension_text;
  std::string parameters;    // fields joined by "|": source, read_only
  std::uint64_t handle = 0;  // the engine's; zero means none
};

/// An open connection to a store; closes with its last owner.
class DataStoreExtension;

/// Configurations with their opened extension, and plain configurations.
struct CombinedRType {
  std::vector<std::pair<DataStoreConfig, std::shared_ptr<DataStoreExtension>>> opened;
  std::vector<DataStoreConfig> configurations;
};

}  // namespace qorn::datastore
