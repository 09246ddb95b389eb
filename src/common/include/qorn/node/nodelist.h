#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <qorn/cluster_definition.h>

namespace qorn::node {

/// What a node reader fills.
class Nodelist {
 public:
  Nodelist() = default;

  /// One node for each host name, in order, with neither roles nor a subcluster.
  explicit Nodelist(const std::vector<std::string>& hostnames);

  /// Whether `name` is a well-formed host name: at most 253 characters, made of labels of 1 to
  /// 63 letters, digits, underscores and inner hyphens (RFC 1123, and the underscore).
  static bool hostname_valid(std::string_view name);

  std::vector<Node> nodes;                // in file order
  std::map<std::string, int> name_index;  // stays empty: nothing here looks a node up by name
};

}  // namespace qorn::node
