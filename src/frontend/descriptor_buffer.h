#pragma once

#include <array>
#include <streambuf>

namespace qorn::frontend {

/// The buffer of a stream that writes to an open descriptor. Unlike a standard stream it keeps
/// the reason of the first failure; after it nothing more is written.
class DescriptorBuffer : public std::streambuf {
 public:
  /// The descriptor stays the caller's. What is left in the buffer at the end is written only by
  /// a flush.
  explicit DescriptorBuffer(int descriptor);

  /// The system's number of the first failed write, 0 when there was none.
  int error() const { return error_; }

 protected:
  int_type overflow(int_type character) override;
  std::streamsize xsputn(const char* text, std::streamsize size) override;
  int sync() override;

 private:
  bool write_out(const char* text, std::size_t size);
  bool write_buffer();

  int descriptor_;
  int error_ = 0;
  std::array<char, 16'384> buffer_;
};

}  // namespace qorn::frontend
