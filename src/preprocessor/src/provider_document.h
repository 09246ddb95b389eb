#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qorn::preproc {

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

/// Reads a provider document; null, with the reason logged at level 3, when it isn't well-formed.
std::shared_ptr<const ProviderDocument> read_provider_document(const std::string& file);

}  // namespace qorn::preproc
