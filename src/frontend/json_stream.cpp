#include "json_stream.h"

#include <nlohmann/json.hpp>

namespace qorn::frontend {
namespace {

constexpr std::size_t PASS_ON_SIZE = 65'536;

/// Whether a JSON string holds the characters of `text` as they stand.
bool is_plain(std::string_view text) {
  unsigned special = 0;  // without a branch for each character: names come by the million
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    special |= static_cast<unsigned>(byte < 0x20) | static_cast<unsigned>(byte >= 0x80) |
               static_cast<unsigned>(c == '"') | static_cast<unsigned>(c == '\\');
  }
  return special == 0;
}

}  // namespace

void JsonStream::append_quoted(std::string& json, std::string_view text) {
  if (is_plain(text)) {
    json.append(1, '"').append(text).append(1, '"');
  } else {
    constexpr auto REPLACE = nlohmann::json::error_handler_t::replace;
    json.append(nlohmann::json(text).dump(-1, ' ', false, REPLACE));
  }
}

void JsonStream::start_element() {
  if (is_behind_key_) {
    is_behind_key_ = false;
    return;
  }
  buffer_.append(line_start_, is_first_ ? 1 : 0);
  is_first_ = false;
  pass_on();
}

void JsonStream::pass_on() {
  if (buffer_.size() >= PASS_ON_SIZE && out_ != nullptr) {
    *out_ << buffer_;
    buffer_.clear();
  }
}

void JsonStream::clear() {
  buffer_.clear();
  is_behind_key_ = true;
}

void JsonStream::open(char bracket) {
  start_element();
  buffer_.push_back(bracket);
  line_start_.append(2, ' ');
  is_first_ = true;
}

void JsonStream::close(char bracket) {
  line_start_.resize(line_start_.size() - 2);
  if (!is_first_) {
    buffer_.append(line_start_, 1);
  }
  buffer_.push_back(bracket);
  is_first_ = false;
}

void JsonStream::key(std::string_view name) {
  start_element();
  append_quoted(buffer_, name);
  buffer_.append(": ");
  is_behind_key_ = true;
}

void JsonStream::token(std::string_view json) {
  start_element();
  buffer_.append(json);
}

void JsonStream::boolean(bool value) {
  token(value ? "true" : "false");
}

void JsonStream::null() {
  token("null");
}

void JsonStream::text(std::string_view text) {
  start_element();
  append_quoted(buffer_, text);
}

std::string& JsonStream::element() {
  start_element();
  return buffer_;
}

void JsonStream::finish() {
  buffer_.push_back('\n');
  *out_ << buffer_;
  buffer_.clear();
  out_->flush();
}

}  // namespace qorn::frontend
