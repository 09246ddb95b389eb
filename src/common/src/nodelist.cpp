#include <algorithm>

#include <qorn/node/nodelist.h>

namespace qorn::node {
namespace {

constexpr std::size_t LONGEST_NAME = 253;
constexpr std::size_t LONGEST_LABEL = 63;

bool is_label_character(char c) {
  return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || c == '_' ||
         c == '-';
}

}  // namespace

Nodelist::Nodelist(const std::vector<std::string>& hostnames) {
  nodes.reserve(hostnames.size());
  for (const std::string& name : hostnames) {
    nodes.emplace_back().hostname = name;
  }
}

bool Nodelist::hostname_valid(std::string_view name) {
  if (name.empty() || name.size() > LONGEST_NAME) {
    return false;
  }
  std::size_t length = 0;  // of the present label
  char previous = '.';
  for (const char c : name) {
    if (c == '.') {
      if (length == 0 || previous == '-') {
        return false;
      }
      length = 0;
    } else if (!is_label_character(c) || (c == '-' && length == 0) || ++length > LONGEST_LABEL) {
      return false;
    }
    previous = c;
  }
  return length > 0 && previous != '-';
}

}  // namespace qorn::node
