#include "node_group.h"

#include <algorithm>
#include <iostream>

#include <qorn/fs.h>
#include <qorn/preproc/node_group_parser.h>
#include <qorn/xml.h>
#include <qorn/xml/document.h>

#include "document.h"
#include "run_loader.h"

namespace qorn::inspect {
namespace {

NodeGroup read_group(xmlNode* element, const std::string& name, Config& config) {
  NodeGroup group{name, Place::of(element), {}};
  preproc::NodeGroupParser::NodeSet nodes;
  if (preproc::NodeGroupParser().parse_node_group(element, nodes, config) == 1) {
    throw Trouble("");
  }
  for (const auto& node : nodes) {
    group.hosts.push_back(node->hostname);
  }
  return group;
}

std::string framework_path(const std::string& name, const std::string& root) {
  return fs::abspath(name.find(".xml") != std::string::npos ? name
                                                            : root + "/etc/fwd/" + name + ".xml");
}

}  // namespace

const NodeGroup* NodeGroups::find(const std::string& name) const {
  const auto found = std::find_if(groups.begin(), groups.end(),
                                  [&](const NodeGroup& group) { return group.name == name; });
  return found == groups.end() ? nullptr : &*found;
}

std::vector<std::string> NodeGroups::names() const {
  std::vector<std::string> names;
  for (const NodeGroup& group : groups) {
    names.push_back(group.name);
  }
  return names;
}

NodeGroups read_node_groups(const std::string& file, const std::string& root) {
  const xml::DocumentPtr doc = xml::open_valid_document(file, root + "/etc/nodegroup.xsd");
  if (doc == nullptr) {
    throw Trouble("");
  }
  Config config;
  config.root = root;
  config.node_group_file = file;
  NodeGroups document;
  std::string name;
  for (xmlNode* element : xml::get_child_nodes(xml::root_of(doc), "nodegroup")) {
    if (xml::get_attr(element, "name", name)) {
      document.groups.push_back(read_group(element, name, config));
    }
  }
  for (const xmlNode* element : xml::get_child_nodes(xml::root_of(doc), "fwd")) {
    if (!xml::get_attr(element, "name", name)) {
      continue;
    }
    const std::string path = framework_path(name, root);
    document.ties.push_back({name, path, "", Place::of(element)});
    const xmlNode* groups = xml::get_child_node(element, "nodegroups");
    for (const xmlNode* group : xml::get_child_nodes(groups, "group")) {
      document.ties.push_back({name, path, xml::content_of(group), Place::of(group)});
    }
  }
  return document;
}

std::string node_group_file_of_installation() {
  LoadedRun run;
  run.read_arguments({"collect"});
  run.read_main_document();
  return run.config.node_group_file;
}

}  // namespace qorn::inspect
