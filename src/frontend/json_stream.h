#pragma once

#include <concepts>
#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

namespace qorn::frontend {

/// Writes one JSON document piece by piece, so that it is never held whole. It is laid out as
/// nlohmann::json::dump(2) lays out a document; bytes that are no UTF-8 become U+FFFD. Open and
/// close must match, and in an object each value stands behind its key.
class JsonStream {
 public:
  explicit JsonStream(std::ostream& out) : out_(&out) {}

  /// A stream for a piece of this document, an element that would come next. What is written to
  /// it, laid out for that place, stays with it until it is cleared.
  JsonStream piece() const { return JsonStream(line_start_); }
  const std::string& written() const { return buffer_; }
  void clear();

  void open(char bracket);   // '{' or '['
  void close(char bracket);  // '}' or ']'
  void key(std::string_view name);
  void text(std::string_view text);
  void boolean(bool value);
  void null();
  void number(std::integral auto value) { token(std::to_string(value)); }

  /// Starts an element and gives the text behind which the caller puts its JSON, laid out as it
  /// stands in the document. For elements that come by the million.
  std::string& element();

  /// Appends `text` as a JSON string to `json`.
  static void append_quoted(std::string& json, std::string_view text);

  /// Ends the document with a line end and hands the rest to the stream.
  void finish();

 private:
  explicit JsonStream(std::string line_start) : line_start_(std::move(line_start)) {}
  void token(std::string_view json);
  void start_element();
  void pass_on();

  std::ostream* out_ = nullptr;  // null for a piece
  std::string buffer_;
  std::string line_start_ = ",\n";  // and the indentation; the comma is left out ahead of the first
  bool is_first_ = true;            // in the innermost open container
  bool is_behind_key_ = true;       // the next value continues a line; true for the document itself
};

}  // namespace qorn::frontend
