#pragma once

#include <functional>
#include <ostream>
#include <string>

namespace qorn::frontend {

/// Puts what `write` writes in the place of the file `path`, which is never seen half written: a
/// regular file, or one that doesn't exist yet, is written beside its place and renamed onto it.
/// A link is followed to its target; an existing file keeps its permissions, and its owner where
/// the system allows it. A device or a pipe is written directly. Throws std::runtime_error with
/// the file and the system's reason when that fails; then, as when `write` throws or the process
/// exits meanwhile, the file is as it was and nothing is left beside it.
void replace_file(const std::string& path, const std::function<void(std::ostream&)>& write);

/// Writes what `write` writes to an open descriptor; `name` is what a failure calls it.
void write_descriptor(int descriptor, const std::string& name,
                      const std::function<void(std::ostream&)>& write);

}  // namespace qorn::frontend
