#pragma once

#include <string>

namespace qorn {

/// A place in a file.
struct Place {
  std::string file;
  long line = 0;  // 0: the whole file
};

/// "FILE:LINE", or "FILE" for a place without a line; control bytes are escaped.
std::string to_string(const Place& place);

}  // namespace qorn
