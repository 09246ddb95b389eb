#pragma once

#include <string>
#include <vector>

#include <qorn/place.h>

#include "finding_kind.h"

namespace qorn::inspect {

/// One fault of an installation.
struct Finding {
  struct Related {
    Place place;
    std::string message;
  };

  FindingKind kind;
  Place place;
  long column = 0;  // 0: unknown
  std::string message;
  std::vector<Related> related;
  bool follow_up = false;  // goes away with another fault
};

/// What a check has read and found.
class Findings {
 public:
  struct Read {
    std::size_t documents = 0;
    std::size_t rule_files = 0;
    std::size_t node_files = 0;
  };
  struct Counts {
    std::size_t errors = 0;
    std::size_t warnings = 0;
    std::size_t follow_ups = 0;  // which are neither
  };

  /// Gives the new one, which holds until the next is added.
  Finding& add(FindingKind kind, const Place& place, std::string message);

  /// Whether an error about that file is known.
  bool has_error(const std::string& file) const;

  /// Puts the findings into the order of their files and lines, drops those about files other
  /// than `files`, unless that is empty, and what would only be printed again: of one kind, at one
  /// place, in the same words. A fault isn't dropped for a follow-up.
  void settle(const std::vector<std::string>& files);

  const std::vector<Finding>& all() const { return findings_; }

  Counts count() const;

  Read read;

 private:
  std::vector<Finding> findings_;
};

}  // namespace qorn::inspect
