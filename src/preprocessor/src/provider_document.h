#pragma once

#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <qorn/config.h>
#include <qorn/xml/document.h>

namespace qorn::preproc {
#pragma GCC visibility push(hidden)

/// What a provider document says, before any of it is judged.
struct ProviderDocument {
  struct Element {
    std::string text;
    std::vector<std::pair<std::string, std::string>> attributes;  // in document order
  };

  /// The elements below any configuration element, by name, in document order.
  std::map<std::string, std::vector<Element>, std::less<>> elements;
  std::vector<std::string> success_codes;  // entries of the root's own success_codes

  /// The elements of that name; empty when there is none.
  const std::vector<Element>& of(const char* name) const;
};

/// Provider documents, each read once. Naming a document again gives the same outcome and logs
/// the same lines again.
class ProviderDocuments {
 public:
  struct Outcome {
    int access_error = 0;  // error number when the file can't be accessed
    std::vector<xml::Fault> faults;
    std::optional<ProviderDocument>
        document;  // none when it can't be accessed or isn't well-formed
  };

  /// What reading `file` gives. Logs what there is to say about the document itself: nothing when
  /// it can't be accessed, faults at level 3 and 4.
  const Outcome& read(const std::string& file);

 private:
  std::unordered_map<std::string, Outcome> known_;
};

/// Reads a provider document into `provider`, see Preprocessor::parse_provider_config_xml.
int read_provider_config(provider_config& provider, const std::string& file, const Config& config,
                         const std::string& aux_path, ProviderDocuments& documents);

#pragma GCC visibility pop
}  // namespace qorn::preproc
