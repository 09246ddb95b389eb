#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <sqlite3.h>
#include <sys/stat.h>

#include <qorn/datastore/datastore_parse_utility.h>
#include <qorn/fs.h>
#include <qorn/log/error_log.h>
#include <qorn/str.h>
#include <qorn/xml.h>

namespace qorn::datastore {

class DataStoreExtension {
 public:
  explicit DataStoreExtension(sqlite3* connection) : connection_(connection) {}
  DataStoreExtension(const DataStoreExtension&) = delete;
  DataStoreExtension& operator=(const DataStoreExtension&) = delete;
  ~DataStoreExtension() { sqlite3_close(connection_); }

 private:
  sqlite3* connection_;
};

namespace {

constexpr std::string_view SOURCE = "source=";
constexpr std::string_view READ_ONLY = "read_only=";

std::vector<DataStore>& stores() {
  static std::vector<DataStore> list;
  return list;
}

std::string& install_path() {
  static std::string path;
  return path;
}

/// Reads the attribute read_only; false, leaving `read_only` alone, when it is absent or no word of
/// it.
bool read_access(const xmlNode* node, const std::string& store, bool& read_only) {
  std::string word;
  if (!xml::get_attr(node, "read_only", word)) {
    return false;
  }
  if (word != "true" && word != "false") {
    log::ErrorLog(log::level::WARNING).stream()
        << to_string(xml::place_of(node)) << ": the datastore '" << str::printable(store)
        << "' has read_only '" << str::printable(word)
        << "', which is neither 'true' nor 'false'. Using the default instead.";
    return false;
  }
  read_only = word == "true";
  return true;
}

DataStoreConfig read_datastore(const xmlNode* node, const DataStoreConfig& default_config) {
  DataStoreConfig config = default_config;
  std::string type = "sqlite";
  xml::get_attr(node, "name", config.name);
  xml::get_attr(node, "type", type);
  xml::get_attr(node, "extension", config.extension_name);
  if (type != "sqlite") {
    throw std::runtime_error("Unknown type '" + type + "' of the datastore '" + config.name +
                             "'. The type known is: sqlite");
  }
  std::string source;
  bool read_only = false;
  parse_sqlite_params(default_config.parameters, source, read_only);
  const bool has_read_only = read_access(node, config.name, read_only);
  if (xml::get_attr(node, "source", source)) {
    config.parameters = named_source_parameters(source, read_only);
  } else if (has_read_only) {
    config.parameters = default_source_parameters(read_only);
  }
  return config;
}

/// SQLite waits for pipes and reads devices; a store is a regular file.
void refuse_other_files(const std::string& file) {
  struct stat status {};
  if (stat(file.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    throw std::runtime_error(S_ISDIR(status.st_mode) ? std::strerror(EISDIR)
                                                     : "not a regular file");
  }
}

void prepare_directory(const std::string& file) {
  std::error_code error;
  std::filesystem::create_directories(std::filesystem::path(file).parent_path(), error);
  if (error) {
    throw std::runtime_error("the directory can't be created: " + error.message());
  }
}

/// Opens `file` and reads its header. Throws std::runtime_error with SQLite's reason.
std::shared_ptr<DataStoreExtension> open_sqlite(const std::string& file, bool read_only) {
  sqlite3* connection = nullptr;
  const int flags = read_only ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
  int status = sqlite3_open_v2(file.c_str(), &connection, flags, nullptr);
  if (connection == nullptr) {
    throw std::bad_alloc();
  }
  auto extension = std::make_shared<DataStoreExtension>(connection);
  if (status == SQLITE_OK) {
    status = sqlite3_exec(connection, "PRAGMA schema_version", nullptr, nullptr, nullptr);
  }
  if (status != SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(connection));
  }
  if (!read_only && sqlite3_db_readonly(connection, "main") == 1) {
    throw std::runtime_error("the database can't be written");  // SQLite falls back to reading
  }
  return extension;
}

DataStore open_store(const DataStoreConfig& config) {
  DataStore store{config, {}, nullptr};
  store.flags.set(DataStore::IN_USE);
  std::string source;
  bool read_only = false;
  parse_sqlite_params(config.parameters, source, read_only);
  const std::string expanded = str::wordexp(source);
  if (expanded.empty()) {
    throw std::runtime_error("The datastore '" + config.name + "' names no file.");
  }
  const std::string file = fs::abspath(expanded);
  const bool missing = !std::filesystem::exists(file);
  if (read_only && missing && source == DEFAULT_DATA_SOURCE) {
    log::ErrorLog(log::level::WARNING).stream()
        << file << ": the default database doesn't exist yet; nothing was collected so far.";
    return store;
  }
  try {
    if (!read_only) {
      prepare_directory(file);
    } else if (missing) {
      throw std::runtime_error(std::strerror(ENOENT));
    }
    refuse_other_files(file);
    store.extension = open_sqlite(file, read_only);
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(str::printable(file) + ": " + error.what());
  }
  return store;
}

}  // namespace

// The two forms differ in field order and in quotation marks; engines know both.
std::string default_source_parameters(bool read_only) {
  return std::string("read_only=") + (read_only ? "true" : "false") + "|source=\"" +
         DEFAULT_DATA_SOURCE + "\"";
}

std::string named_source_parameters(const std::string& source, bool read_only) {
  return "source=" + source + "|read_only=" + (read_only ? "true" : "false");
}

void parse_sqlite_params(const std::string& text, std::string& path, bool& read_only) {
  // A source may itself hold a bar: it ends at the other field, or with the text.
  const std::string_view all = text;
  const std::size_t source = all.find(SOURCE);
  const bool source_first = source == 0;
  const std::size_t flag =
      source_first ? all.rfind("|" + std::string(READ_ONLY)) : all.find(READ_ONLY);
  path.clear();
  if (source != std::string_view::npos) {
    const std::size_t begin = source + SOURCE.size();
    const std::size_t end = source_first ? std::min(flag, all.size()) : all.size();
    path = str::strip(all.substr(begin, end - begin), "\"");
  }
  read_only = false;
  if (flag != std::string_view::npos) {
    const std::size_t begin = flag + READ_ONLY.size() + (source_first ? 1 : 0);
    read_only = all.substr(begin, all.find('|', begin) - begin) == "true";
  }
}

void DataStoreParseUtility::set_default_install_path(const std::string& path) {
  install_path() = path;
}

const std::string& DataStoreParseUtility::get_default_install_path() {
  return install_path();
}

std::vector<DataStoreConfig> DataStoreParseUtility::parse_db_configs(
    const xmlNode* node, const DataStoreConfig& default_config) {
  std::vector<DataStoreConfig> configs;
  for (const xmlNode* datastore : xml::get_child_nodes(node, "datastore")) {
    configs.push_back(read_datastore(datastore, default_config));
  }
  if (configs.empty()) {
    configs.push_back(default_config);
  }
  return configs;
}

void DataStoreParseUtility::fillInVacantFields(std::vector<DataStoreConfig>& configs) {
  for (DataStoreConfig& config : configs) {
    if (config.extension_name.empty()) {
      config.extension_name = DEFAULT_DATASTORE_SQLITE_EXTENSION_NAME;
    }
  }
}

CombinedRType DataStoreParseUtility::get_configurations_by_type(
    const CombinedRType& combined, std::bitset<2> access, const std::vector<DatabaseType>& types,
    int /*flag*/) {
  const auto wanted = [&](const DataStoreConfig& config) {
    const bool has_source = !access.test(0) || !config.name.empty();
    return has_source &&
           (types.empty() || std::find(types.begin(), types.end(), config.type) != types.end());
  };
  CombinedRType result;
  for (const auto& each : combined.opened) {
    if (wanted(each.first)) {
      result.opened.push_back(each);
    }
  }
  for (const DataStoreConfig& config : combined.configurations) {
    if (wanted(config)) {
      result.configurations.push_back(config);
    }
  }
  return result;
}

void DataStoreParseUtility::initializeDatastoreExtensions(
    const std::vector<DataStoreConfig>& configs) {
  stores().clear();
  try {
    for (const DataStoreConfig& config : configs) {
      stores().push_back(open_store(config));
    }
  } catch (const std::runtime_error& error) {
    log::ErrorLog(log::level::ERROR).stream() << error.what();
    throw;
  }
}

const std::vector<DataStore>& DataStoreParseUtility::get_datastore_vector() {
  return stores();
}

}  // namespace qorn::datastore
