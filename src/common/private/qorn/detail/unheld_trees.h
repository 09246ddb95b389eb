#pragma once

#include <memory>
#include <set>

#include <qorn/fwd.h>

namespace qorn::detail {
#pragma GCC visibility push(hidden)

/// Takes those of `dropped`, a set that nobody else refers to, apart that nobody else holds, so
/// that they are freed. A node is held when it has more owners than the links among the nodes
/// reachable from the set and the set itself; it keeps everything that it leads to.
void release_unheld(const std::set<std::shared_ptr<const FwdNode>>& dropped);

#pragma GCC visibility pop
}  // namespace qorn::detail
