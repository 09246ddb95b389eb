#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <libxml/xpath.h>

#include <qorn/log/error_log.h>
#include <qorn/node.h>
#include <qorn/preproc/preprocessor.h>
#include <qorn/str.h>

#include "provider_document.h"

namespace qorn::preproc {
namespace {

constexpr std::size_t LONGEST_PATH = 4095;
constexpr std::size_t LONGEST_NAME = 64;
constexpr std::size_t LONGEST_COMMAND = 256;

using Element = ProviderDocument::Element;

void warn(const std::string& text) {
  log::ErrorLog(log::level::WARNING).stream() << text;
}

const std::string* attribute_of(const Element& element, std::string_view name) {
  for (const auto& [each, value] : element.attributes) {
    if (each == name) {
      return &value;
    }
  }
  return nullptr;
}

/// Reads one provider document into one record, element by element, in a fixed order.
class ProviderReader {
 public:
  ProviderReader(const ProviderDocument& document, provider_config& provider,
                 const std::string& file, const Config& config)
      : document_(document), provider_(provider), file_(file), config_(config) {}

  /// False when the document can't be used.
  bool read() {
    read_architecture();
    if (!read_command()) {
      return false;
    }
    read_encoding();
    provider_.max_nodes =
        read_node_count("max_nodes", "Multiple max node elements in", provider_.max_nodes);
    provider_.min_nodes =
        read_node_count("min_nodes", "Multiple min node elements in", provider_.min_nodes);
    read_success_codes();
    read_version();
    read_roles();
    read_timeout();
    read_nodelist();
    return check_node_range() && check_architecture();
  }

 private:
  /// The first element of that name, or null. Several give a warning: `ahead`, the file in single
  /// quotes, `behind`.
  const Element* first_of(const char* name, const char* ahead, const char* behind) {
    const std::vector<Element>& elements = document_.of(name);
    if (elements.size() > 1) {
      warn(ahead + (" '" + file_) + "'" + behind);
    }
    return elements.empty() ? nullptr : &elements.front();
  }

  /// The number in an element, truncated toward zero and held at the limits of Number; false,
  /// with a line, when it is none.
  template <typename Number>
  bool read_number(const char* name, const Element& element, Number& number) {
    const double value =
        xmlXPathCastStringToNumber(reinterpret_cast<const xmlChar*>(element.text.c_str()));
    if (std::isnan(value)) {
      warn("The element <" + std::string(name) + "> in '" + str::printable(file_) +
           "' holds no number: '" + str::printable(element.text) + "'. Using the default instead.");
      return false;
    }
    constexpr auto LOWEST = std::numeric_limits<Number>::min();
    constexpr auto HIGHEST = std::numeric_limits<Number>::max();
    if (value >= static_cast<double>(HIGHEST)) {
      number = HIGHEST;
    } else if (value <= static_cast<double>(LOWEST)) {
      number = LOWEST;
    } else {
      number = static_cast<Number>(value);
    }
    return true;
  }

  void read_architecture() {
    const Element* element = first_of("architecture", "Multiple architecture elements found in",
                                      ". Using the first one.");
    if (element == nullptr) {
      return;
    }
    if (!look_up(ARCHITECTURES, element->text, provider_.architecture)) {
      warn("Unknown architecture element in '" + file_ +
           "'. Using the default instead (Will run on " + "all architectures)");
    }
    const std::string* cluster = attribute_of(*element, "cluster");
    if (cluster != nullptr && !look_up(CLUSTER_TYPES, *cluster, provider_.cluster)) {
      // The closing bracket is missing from the text that engines and scripts know.
      warn("Unknown cluster attribute in '" + file_ + "'. Using the default instead (will use a " +
           "cluster of nodes with any architecture");
    }
  }

  bool read_command() {
    const Element* element =
        first_of("command", "Multiple command elements in", ". Using first one.");
    if (element != nullptr) {
      provider_.command = element->text.substr(0, LONGEST_COMMAND);
    }
    return element != nullptr;
  }

  void read_encoding() {
    const Element* element =
        first_of("encoding", "Multiple encoding elements found in", ". Using the first one.");
    if (element != nullptr && !look_up(ENCODINGS, element->text, provider_.encoding)) {
      warn("Unknown encoding element in '" + file_ + "'. Using the default instead.");
    }
  }

  /// A number of nodes, cut to 16 bits.
  std::uint16_t read_node_count(const char* name, const char* words, std::uint16_t present) {
    const Element* element = first_of(name, words, ". Using first one.");
    std::int32_t number = 0;
    if (element == nullptr || !read_number(name, *element, number)) {
      return present;
    }
    return static_cast<std::uint16_t>(number);
  }

  void read_success_codes() {
    provider_.success_codes.insert(0);
    for (const std::string& entry : document_.success_codes) {
      char* end = nullptr;
      errno = 0;
      const long code = std::strtol(entry.c_str(), &end, 10);
      const bool in_range = errno == 0 && code >= std::numeric_limits<int>::min() &&
                            code <= std::numeric_limits<int>::max();
      errno = 0;
      if (end == entry.c_str() || !in_range) {
        warn("Invalid value " + entry + " for succesfull exit code in " + file_ + ", ignoring");
      } else if (*end == '\0') {
        provider_.success_codes.insert(static_cast<int>(code));
      }
    }
  }

  void read_version() {
    const Element* element =
        first_of("version", "Multiple version elements in", ". Using first one.");
    std::int32_t number = 0;
    if (element != nullptr && read_number("version", *element, number)) {
      provider_.version = static_cast<std::int16_t>(number);
    }
  }

  void read_roles() {
    for (const Element& element : document_.of("role")) {
      if (!element.text.empty()) {
        provider_.roles.insert(element.text);
      }
    }
    if (provider_.roles.empty()) {
      for (const auto& [role, value] : node::role_str_map) {
        provider_.roles.insert(role);
      }
    }
  }

  void read_timeout() {
    const Element* element =
        first_of("timeout", "Multipe timeout value elements in", ". Using first one.");
    if (element == nullptr) {
      provider_.timeout = config_.collector_timeout;
      provider_.timeout_scale = config_.collector_timeout_scale;
      return;
    }
    read_number("timeout", *element, provider_.timeout);
    const std::string* scale = attribute_of(*element, "scale");
    if (scale != nullptr && !look_up(SCALE_TYPES, *scale, provider_.timeout_scale)) {
      warn("Timeout scaling option '" + *scale + "' did not match known options, " +
           "using default scaling value");
    }
  }

  void read_nodelist() {
    const Element* element =
        first_of("nodelist", "Multiple nodelist tags in", ". Using first one.");
    if (element == nullptr) {
      return;
    }
    for (const auto& [name, value] : element->attributes) {
      if (name == "method") {
        read_method(value);
      } else if (name == "number") {
        provider_.permutations =
            str::get_num_permutations_from_string(value, provider_.permutations, file_);
      }
    }
  }

  void read_method(const std::string& word) {
    if (!look_up(NODELIST_METHODS, word, provider_.nodelist_method)) {
      warn("Invalid value for method attribute in '" + file_ +
           "'. Valid values are: " + "none, rotate_right, rotate_left, round_robin, random");
    }
    log::ErrorLog(log::level::DEBUG).stream()
        << "Using nodelist method: " << static_cast<int>(provider_.nodelist_method);
  }

  bool check_node_range() {
    if (provider_.max_nodes >= provider_.min_nodes) {
      return true;
    }
    log::ErrorLog(log::level::ERROR).stream()
        << "Can not create cluster with a minimum of " << provider_.min_nodes << " and maximum of "
        << provider_.max_nodes << " nodes";
    return false;
  }

  bool check_architecture() {
    if (provider_.min_nodes < 2 || provider_.cluster != ClusterType::ANY ||
        provider_.architecture == Architecture::ANY) {
      return true;
    }
    provider_.architecture = Architecture::ANY;
    log::ErrorLog(log::level::ERROR).stream()
        << "Can not set a specific target architecture for a cluster "
        << "provider when "
        << "there are no specific architecture requirements on the "
        << "cluster nodes";
    return false;
  }

  const ProviderDocument& document_;
  provider_config& provider_;
  const std::string& file_;
  const Config& config_;
};

/// The name that a document gives its provider: the base name without its last four characters.
std::string provider_name(const std::string& file) {
  std::string path = file.substr(0, LONGEST_PATH);
  path.erase(path.find_last_not_of('/') + 1);
  path.erase(0, path.rfind('/') + 1);
  path.resize(path.size() - std::min<std::size_t>(path.size(), 4));
  return path.substr(0, LONGEST_NAME);
}

/// Reports a document that can't be used and gives the status for it: a failed access leaves its
/// negated error number, which callers tell from 1.
int fail(const std::string& file, int error_number) {
  log::ErrorLog message(log::level::ERROR);
  message.stream() << "Error reading provider configuration '" << file << "'";
  if (error_number == 0) {
    return 1;
  }
  message.stream() << " (" << error_number << "): " << std::strerror(error_number);
  return -error_number;
}

}  // namespace

int read_provider_config(provider_config& provider, const std::string& file, const Config& config,
                         const std::string& aux_path, ProviderDocuments& documents) {
  // Callers pass the record's own fields: assigning one to itself changes nothing.
  provider.aux_path = aux_path;
  const ProviderDocuments::Outcome& outcome = documents.read(file);
  if (outcome.access_error != 0) {
    log::ErrorLog(log::level::DEBUG).stream() << "provider xml file not readable: '" << file << "'";
    return fail(file, outcome.access_error);
  }
  if (!outcome.document) {
    log::ErrorLog(log::level::ERROR).stream() << "xml parse error: '" << file << "'";
    return fail(file, 0);
  }
  provider.config_file = file;
  provider.name = provider_name(file);
  return ProviderReader(*outcome.document, provider, file, config).read() ? 0 : fail(file, 0);
}

int Preprocessor::parse_provider_config_xml(provider_config& provider, const std::string& file,
                                            const Config& config, const std::string& aux_path) {
  ProviderDocuments documents;
  return read_provider_config(provider, file, config, aux_path, documents);
}

}  // namespace qorn::preproc
