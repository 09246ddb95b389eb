#include <qorn/log/error_log.h>
#include <qorn/node.h>
#include <qorn/preproc/clips_parser.h>
#include <qorn/preproc/preprocessor.h>

namespace qorn::preproc {

bool Preprocessor::CheckConfiguration(Config& config) {
  const bool collects = (config.operations & operation::COLLECT) != 0;
  if ((config.operations & operation::ANALYZE) != 0) {
    clips_parser::parse_installed_diagnoses(config);
  }
  if (!config.node_file.empty() && !parse_nodefile(config.node_file, config)) {
    return false;
  }
  if (config.nodes.empty()) {
    if (!collects) {
      return true;  // the database knows the nodes
    }
    log::ErrorLog(log::level::WARNING).stream()
        << "Nodefile not specified. Attempting automatic node discovery.";
    node::discoverNodes(config.nodes);
  }
  if (config.nodes.empty()) {
    log::ErrorLog(log::level::ERROR).stream()
        << "No nodes specified or discovered. Please refer to the Qorn User Guide for "
           "information about how to specify nodes to include in testing.";
    return false;
  }
  if (collects) {
    print_handler.print_deprecation_messages(config.common_options);
  }
  return true;
}

bool Preprocessor::parse_nodefile(const std::string& file, Config& config) {
  node::Nodelist list;
  if (!node::read_nodefile(file, list)) {
    return false;
  }
  for (Node& node : list.nodes) {
    node::complete_roles(node.roles);
  }
  config.nodes = std::move(list.nodes);
  return true;
}

void Preprocessor::populate_config_params_checks(Config& config) {
  ConfigParam param;
  param.name = "qorn-checks";
  for (const auto& [path, fwd] : config.fwds->by_path) {
    for (const AnalyzerExtensionType& extension : fwd->analyzer_extensions) {
      param.values.push_back(extension.name);
    }
  }
  config.config_params.push_back(param);
}

}  // namespace qorn::preproc
