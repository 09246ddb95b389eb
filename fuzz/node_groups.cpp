#include "fuzz_installation.h"

namespace {

using namespace qorn;

/// "base", which includes "a" and "b"; "a" includes "b".
void make_graph(const fuzzing::FuzzInstallation& installation, Config& config) {
  const auto make = [&](const std::string& name) {
    auto node = std::make_shared<FwdNode>();
    node->fwd = std::make_shared<Fwd>();
    node->fwd->name = name;
    node->fwd->node = node;
    node->fwd->path = installation.path("etc/fwd/" + name + ".xml");
    config.fwds->by_path[node->fwd->path] = node->fwd;
    return node;
  };
  const auto base = make("base");
  const auto a = make("a");
  const auto b = make("b");
  base->groups = {{{}, {a, b}}};
  a->groups = {{{}, {b}}};
  a->parents = {base};
  b->parents = {a, base};
  config.fwds->roots = {base};
}

}  // namespace

// As the run reads the document and the engine completes the groups.
bool qorn::fuzzing::read_input(const FuzzInstallation& installation, Config& config,
                               std::string_view input) {
  config.node_group_file = installation.write("groups.xml", input);
  make_graph(installation, config);
  preproc::NodeGroupParser parser;
  if (parser.parse_group_file(config) == 1) {
    return false;
  }
  config.cluster_definition = std::make_shared<ClusterDefinition>();
  for (const Node& node : config.nodes) {
    config.cluster_definition->insert_node_instance(std::make_shared<Node>(node));
  }
  parser.create_node_groups(config);
  return true;
}
