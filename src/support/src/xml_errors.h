#pragma once

#include <libxml/xmlerror.h>

namespace qorn::xml {

/// While one lives, libxml2 hands its errors over instead of printing them. `words` gets what it
/// says without an error, which is that it lacked memory for something.
class ErrorHandlers {
 public:
  ErrorHandlers(void* context, xmlStructuredErrorFunc errors, xmlGenericErrorFunc words)
      : errors_context_(xmlStructuredErrorContext),
        errors_(xmlStructuredError),
        words_context_(xmlGenericErrorContext),
        words_(xmlGenericError) {
    xmlSetStructuredErrorFunc(context, errors);
    xmlSetGenericErrorFunc(context, words);
  }
  ErrorHandlers(const ErrorHandlers&) = delete;
  ErrorHandlers& operator=(const ErrorHandlers&) = delete;
  ~ErrorHandlers() {
    xmlSetStructuredErrorFunc(errors_context_, errors_);
    xmlSetGenericErrorFunc(words_context_, words_);
  }

 private:
  // Those that were there before.
  void* errors_context_;
  xmlStructuredErrorFunc errors_;
  void* words_context_;
  xmlGenericErrorFunc words_;
};

}  // namespace qorn::xml
