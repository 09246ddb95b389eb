#include "node_group_document.h"

#include <algorithm>
#include <iostream>

#include <qorn/document_kind.h>
#include <qorn/preproc/node_group_parser.h>
#include <qorn/written_path.h>
#include <qorn/xml.h>
#include <qorn/xml/document.h>

#include "trouble.h"

namespace qorn::inspect {
namespace {

NodeGroupDocument::Group read_group(xmlNode* element, const std::string& name, Config& config) {
  NodeGroupDocument::Group group{name, xml::place_of(element), {}};
  preproc::NodeGroupParser::NodeSet nodes;
  if (preproc::NodeGroupParser().parse_node_group(element, nodes, config) == 1) {
    throw Trouble("");
  }
  for (const auto& node : nodes) {
    group.hosts.push_back(node->hostname);
  }
  return group;
}

}  // namespace

const NodeGroupDocument::Group* NodeGroupDocument::find(const std::string& name) const {
  const auto found =
      std::find_if(groups.begin(), groups.end(),
                   [&](const NodeGroupDocument::Group& group) { return group.name == name; });
  return found == groups.end() ? nullptr : &*found;
}

std::vector<std::string> NodeGroupDocument::names() const {
  std::vector<std::string> names;
  for (const NodeGroupDocument::Group& group : groups) {
    names.push_back(group.name);
  }
  return names;
}

NodeGroupDocument read_node_group_document(const std::string& file, const std::string& root) {
  const xml::DocumentPtr doc =
      xml::open_valid_document(file, schema_path(DocumentKind::GROUPS, root));
  if (doc == nullptr) {
    throw Trouble("");
  }
  Config config;
  config.root = root;
  config.node_group_file = file;
  NodeGroupDocument document;
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
    const std::string path = written_path::group_framework(name, root);
    document.ties.push_back({name, path, "", xml::place_of(element)});
    const xmlNode* groups = xml::get_child_node(element, "nodegroups");
    for (const xmlNode* group : xml::get_child_nodes(groups, "group")) {
      document.ties.push_back({name, path, xml::content_of(group), xml::place_of(group)});
    }
  }
  return document;
}

}  // namespace qorn::inspect
