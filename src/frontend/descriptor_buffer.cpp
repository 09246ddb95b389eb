#include "descriptor_buffer.h"

#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace qorn::frontend {

DescriptorBuffer::DescriptorBuffer(int descriptor) : descriptor_(descriptor) {
  setp(buffer_.data(), buffer_.data() + buffer_.size());
}

bool DescriptorBuffer::write_out(const char* text, std::size_t size) {
  while (size > 0 && error_ == 0) {
    const ssize_t written = write(descriptor_, text, size);
    if (written >= 0) {
      text += written;
      size -= static_cast<std::size_t>(written);
    } else if (errno != EINTR) {
      error_ = errno;
    }
  }
  return error_ == 0;
}

bool DescriptorBuffer::write_buffer() {
  const auto size = static_cast<std::size_t>(pptr() - pbase());
  setp(buffer_.data(), buffer_.data() + buffer_.size());
  return write_out(pbase(), size);
}

DescriptorBuffer::int_type DescriptorBuffer::overflow(int_type character) {
  if (!write_buffer()) {
    return traits_type::eof();
  }
  if (!traits_type::eq_int_type(character, traits_type::eof())) {
    sputc(traits_type::to_char_type(character));
  }
  return traits_type::not_eof(character);
}

std::streamsize DescriptorBuffer::xsputn(const char* text, std::streamsize size) {
  if (size <= epptr() - pptr()) {
    std::memcpy(pptr(), text, static_cast<std::size_t>(size));
    pbump(static_cast<int>(size));
    return size;
  }
  return write_buffer() && write_out(text, static_cast<std::size_t>(size)) ? size : 0;
}

int DescriptorBuffer::sync() {
  return write_buffer() ? 0 : -1;
}

}  // namespace qorn::frontend
