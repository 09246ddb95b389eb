#pragma once

#include <cstdint>
#include <map>
#include <string>

#include <qorn/constants.h>

namespace qorn {

struct BaseProviderAttributes {
  ScaleType scale = ScaleType::CONSTANT;
  std::int64_t timeout = 0;  // seconds; 0 or less means that none was given
  std::string id = "None";
};

/// One set of options of a provider: each variable becomes an environment variable of a run.
struct ProviderOptionset : BaseProviderAttributes {
  ProviderOptionset() = default;
  ProviderOptionset(const ProviderOptionset&) = default;
  ProviderOptionset(ProviderOptionset&&) = default;
  ProviderOptionset& operator=(const ProviderOptionset&) = default;
  ProviderOptionset& operator=(ProviderOptionset&&) = default;
  virtual ~ProviderOptionset() = default;

  std::map<std::string, std::string> variables;
};

}  // namespace qorn
