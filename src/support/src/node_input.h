#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <qorn/fs.h>

/// What the readers of node files and of the resource manager's lists share.
namespace qorn::node {
#pragma GCC visibility push(hidden)

inline constexpr fs::Readable NODE_INPUT{fs::Readable::Kinds::ALL, std::size_t{512} << 20U,
                                         "expected at most 512 MiB, found more"};

/// The role of a node for which nothing says another one.
inline constexpr const char* DEFAULT_ROLE = "compute";

inline bool is_blank(char c) {
  return c == ' ' || c == '\t' || c == '\r';
}

/// `piece` between quotation marks for a message: printable, and cut when it is long.
std::string quoted(std::string_view piece);

/// The reason that refuses `name` as a host name.
std::string bad_host_name(std::string_view name);

/// The reason that refuses more than MOST_HOSTS hosts.
std::string too_many_hosts();

#pragma GCC visibility pop
}  // namespace qorn::node
