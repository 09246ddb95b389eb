// A complete small engine: prepares a run, then prints what it would run on which node, in an
// order in which everything stands behind what it includes.

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include <qorn/qorn.h>

namespace {

bool has_role_of(const qorn::Node& node, const qorn::provider_config& provider) {
  return std::any_of(node.roles.begin(), node.roles.end(),
                     [&](const std::string& role) { return provider.roles.count(role) != 0; });
}

void print_provider(const qorn::Config& config, const qorn::provider_config& provider) {
  std::cout << "  " << provider.name << ": " << provider.command << '\n';
  for (const qorn::Node& node : config.nodes) {
    if (has_role_of(node, provider)) {
      std::cout << "    on " << node.hostname << '\n';
    }
  }
}

// A provider whose document couldn't be read stays in its group, but not in config.providers.
void print_definition(const qorn::Config& config, const qorn::Fwd& fwd) {
  std::cout << fwd.name << '\n';
  for (const auto& group : fwd.provider_groups) {
    for (const auto& member : group) {
      const auto provider = config.providers.find(member->name);
      if (provider != config.providers.end()) {
        print_provider(config, *provider->second);
      }
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  qorn::Config config;
  config.common_options.parse_node_groups = true;
  qorn::preproc::Preprocessor preprocessor;
  const int status = preprocessor.Run(config, argc, argv);
  if (status == 0) {
    for (const auto& node : config.fwds->ready_nodes) {
      print_definition(config, *node->fwd);
    }
  }
  qorn::release_frameworks(config);
  return status == 2 ? 0 : status;  // 2: usage, version or a listing was asked for
}
