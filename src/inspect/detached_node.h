#pragma once

#include <memory>

#include <libxml/tree.h>

namespace qorn::inspect {

struct NodeDeleter {
  void operator()(xmlNode* node) const { xmlFreeNode(node); }
};

/// A node that is part of no document, and freed with all that it contains.
using DetachedNode = std::unique_ptr<xmlNode, NodeDeleter>;

}  // namespace qorn::inspect
