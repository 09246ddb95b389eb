#pragma once

#include <utility>

#include <unistd.h>

namespace qorn::fs {

/// Owns a descriptor of the system, which is closed with it.
class Descriptor {
 public:
  /// Takes over what open, pipe and their like gave; a negative number is none.
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { close(); }

  /// Negative where opening failed, and once it is closed.
  int get() const { return number_; }

  /// Closes it now, if it is open. False, with the reason in errno, when that fails: some file
  /// systems report only here that they couldn't keep what was written.
  bool close() {
    const int number = std::exchange(number_, -1);
    return number < 0 || ::close(number) == 0;
  }

 private:
  int number_;
};

}  // namespace qorn::fs
