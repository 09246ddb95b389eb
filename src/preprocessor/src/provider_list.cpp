#include <algorithm>
#include <map>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <qorn/detail/notes.h>
#include <qorn/preproc/preprocessor.h>
#include <qorn/written_path.h>

#include "provider_document.h"

namespace qorn::preproc {
namespace {

using ProviderPtr = std::shared_ptr<provider_config>;

/// The providers that framework definitions name, while their documents are read.
class NamedProviders {
 public:
  explicit NamedProviders(Config& config) : config_(config) {
    for (const auto& [name, provider] : config.providers) {
      noted_.emplace(provider, name);
    }
  }

  /// Reads the document under the record's present name, which an earlier reading may have changed.
  void visit(const ProviderPtr& provider) {
    noted_.try_emplace(provider, provider->name);
    visited_.insert(provider);
    provider->config_file = written_path::provider(provider->name, provider->config_dir);
    if (read_provider_config(*provider, provider->config_file, config_, provider->aux_path,
                             documents_) == 0) {
      read_[provider->name].push_back(provider);
    }
  }

  /// Lets the map hold, of what definitions name, what was read, under the name that the reading
  /// gave: of several records the one that was noted under that very name, else the first.
  void settle() {
    std::erase_if(config_.providers,
                  [&](const auto& entry) { return visited_.count(entry.second) != 0; });
    for (const auto& [name, records] : read_) {
      const std::string& read_name = name;  // clang 14 captures no structured binding
      const auto own = std::find_if(records.begin(), records.end(), [&](const ProviderPtr& each) {
        return noted_.at(each) == read_name;
      });
      config_.providers.try_emplace(name, own == records.end() ? records.front() : *own);
    }
  }

  /// Notes those of a definition that the run does without.
  void note_missing(const Fwd& fwd) const {
    for (const auto& group : fwd.provider_groups) {
      for (const auto& provider : group) {
        if (config_.providers.count(provider->name) == 0) {
          detail::note_passed_over({RunNotes::PassedOver::Kind::PROVIDER,
                                    provider->name,
                                    provider->config_file,
                                    fwd.name,
                                    {},
                                    {}});
        }
      }
    }
  }

 private:
  Config& config_;
  ProviderDocuments documents_;
  std::unordered_map<ProviderPtr, std::string> noted_;  // name before any reading
  std::unordered_set<ProviderPtr> visited_;
  std::map<std::string, std::vector<ProviderPtr>> read_;  // in the order of success
};

}  // namespace

bool Preprocessor::build_provider_list(Config& config) {
  NamedProviders named(config);
  for (const auto& [path, fwd] : config.fwds->by_path) {
    for (auto& group : fwd->provider_groups) {
      for (const auto& provider : group) {
        named.visit(provider);
      }
    }
  }
  named.settle();
  for (const auto& [path, fwd] : config.fwds->by_path) {
    named.note_missing(*fwd);
  }
  return !config.providers.empty();
}

std::string Preprocessor::provider_path(const std::string& directory, const std::string& name) {
  return directory + "/" + name + ".xml";
}

}  // namespace qorn::preproc
