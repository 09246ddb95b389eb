#pragma once

#include <string>
#include <string_view>

/// What the readers of node files and of the resource manager's lists share.
namespace qorn::node {

/// Reads the whole of a file or a pipe. Returns false, with the system's reason, for what can't
/// be read (a directory, too), and for more than 512 MiB.
bool read_input(const std::string& path, std::string& content, std::string& reason);

inline bool is_blank(char c) {
  return c == ' ' || c == '\t' || c == '\r';
}

/// Cuts the first line off `text` and gives it without its line end.
std::string_view next_line(std::string_view& text);

/// `piece` between quotation marks for a message: printable, and cut when it is long.
std::string quoted(std::string_view piece);

/// The reason that refuses `name` as a host name.
std::string bad_host_name(std::string_view name);

/// The reason that refuses more than MOST_HOSTS hosts.
std::string too_many_hosts();

}  // namespace qorn::node
