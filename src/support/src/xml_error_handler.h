#pragma once

#include <new>

#include <libxml/xmlerror.h>

#include "libxml2_versions.h"

namespace qorn::xml {
#pragma GCC visibility push(hidden)

/// While one lives, libxml2 hands its errors over instead of printing them.
class ErrorHandler {
 public:
  ErrorHandler(const ErrorHandler&) = delete;
  ErrorHandler& operator=(const ErrorHandler&) = delete;

  /// Passes on what can't be thrown through libxml2, which goes on without what it had no memory
  /// for: a schema then lets more through.
  void check_memory() const {
    if (out_of_memory_) {
      throw std::bad_alloc();
    }
  }
  void set_out_of_memory() { out_of_memory_ = true; }

 protected:
  ErrorHandler() {
    // The error is constant from libxml2 2.12 on.
    xmlSetStructuredErrorFunc(
        this, [](void* self, auto* error) { static_cast<ErrorHandler*>(self)->pass_on(*error); });
    xmlSetGenericErrorFunc(this, take_words);
  }
  ~ErrorHandler() {
    xmlSetStructuredErrorFunc(errors_context_, errors_);
    xmlSetGenericErrorFunc(words_context_, words_);
  }

  virtual void take(const xmlError& error) = 0;

 private:
  void pass_on(const xmlError& error) {
    const bool is_long = is_about_length(error);
    is_too_long_ = is_too_long_ || is_long;
    if (error.code == XML_ERR_NO_MEMORY && !is_long) {
      // 2.12 says so, too, once it has refused a value that is too long.
      out_of_memory_ = out_of_memory_ || !is_too_long_;
      return;
    }
    try {
      take(error);
    } catch (const std::bad_alloc&) {
      out_of_memory_ = true;
    }
  }

  /// What libxml2 says without an error is that it lacked memory for something.
  static void take_words(void* self, const char* /*format*/, ...) {
    static_cast<ErrorHandler*>(self)->set_out_of_memory();
  }

  bool out_of_memory_ = false;
  bool is_too_long_ = false;  // something was
  // Those that were there before.
  void* errors_context_ = xmlStructuredErrorContext;
  xmlStructuredErrorFunc errors_ = xmlStructuredError;
  void* words_context_ = xmlGenericErrorContext;
  xmlGenericErrorFunc words_ = xmlGenericError;
};

#pragma GCC visibility pop
}  // namespace qorn::xml
