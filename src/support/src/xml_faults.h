#pragma once

#include <string>
#include <utility>
#include <vector>

#include <libxml/tree.h>

#include <qorn/xml/faults.h>

#include "xml_error_handler.h"

namespace qorn::xml {
#pragma GCC visibility push(hidden)

/// Makes the errors that libxml2 has while one lives into faults.
class FaultCollector final : public ErrorHandler {
 public:
  /// `file` is where faults are that name no file of their own.
  FaultCollector(std::string file, std::vector<Fault>& faults)
      : file_(std::move(file)), faults_(faults), first_(faults.size()) {}

  /// False when the fault is there already, or too many are.
  bool add(Fault fault);

  /// Makes sure that a failure has a reason.
  void fail(const std::string& reason);

  /// Replaces everything that was collected here by one fault.
  void replace_by(Fault fault);

  void follow_includes() { follow_includes_ = true; }

  /// Errors are no faults from now on, or are again.
  void ignore_errors(bool ignore) { ignore_errors_ = ignore; }

  /// For each fault from now on: the element that it is about, or null, and libxml2's code.
  using Origins = std::vector<std::pair<xmlNode*, int>>;
  void keep_origins(Origins& origins) { origins_ = &origins; }

 private:
  void take(const xmlError& error) override;

  std::string file_;
  std::vector<Fault>& faults_;
  std::size_t first_;
  Origins* origins_ = nullptr;
  bool follow_includes_ = false;
  bool ignore_errors_ = false;
};

#pragma GCC visibility pop
}  // namespace qorn::xml
