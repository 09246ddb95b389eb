#pragma once

#include <memory>
#include <string>
#include <vector>

#include <qorn/config.h>

namespace qorn::preproc {
#pragma GCC visibility push(hidden)

/// Nodes in the order of their names, each name once: the first in file order. Groups share them.
std::vector<std::shared_ptr<Node>> share_nodes(const std::vector<Node>& nodes);

/// The nodes that implicit groups are made of while a group document is read: those of the node
/// file. Without one they come from the database later.
std::vector<std::shared_ptr<Node>> implicit_group_nodes(const Config& config);

/// The first node with that path below the roots of the graph, as FwdNode::find gives it.
std::shared_ptr<FwdNode> find_in_roots(const FwdRegistry& registry, const std::string& path);

#pragma GCC visibility pop
}  // namespace qorn::preproc
