#include "node_input.h"

#include <algorithm>
#include <cstddef>

#include <qorn/node.h>
#include <qorn/str.h>

namespace qorn::node {
namespace {

constexpr std::size_t LONGEST_QUOTE = 80;  // bytes

}  // namespace

std::string quoted(std::string_view piece) {
  const auto continues = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; };
  std::size_t end = std::min(piece.size(), LONGEST_QUOTE);
  while (end < piece.size() && end > LONGEST_QUOTE - 3 && continues(piece[end])) {
    --end;  // not inside a character of UTF-8
  }
  return "'" + str::printable(piece.substr(0, end)) + (end < piece.size() ? "...'" : "'");
}

std::string bad_host_name(std::string_view name) {
  return "expected a host name (labels of 1 to 63 letters, digits, '_' and inner '-', joined by "
         "'.', 253 characters at most), found " +
         quoted(name);
}

std::string too_many_hosts() {
  return "expected at most " + std::to_string(MOST_HOSTS / 1'000'000) +
         " million hosts in all, found more";
}

}  // namespace qorn::node
