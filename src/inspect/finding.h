#pragma once

#include <string>
#include <vector>

#include "finding_kind.h"
#include "place.h"

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
  struct Counts {
    std::size_t documents = 0;
    std::size_t rule_files = 0;
    std::size_t node_files = 0;
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

  /// Without follow-ups.
  std::size_t count(xml::Fault::Severity severity) const;
  std::size_t count_follow_ups() const;

  Counts read;

 private:
  std::vector<Finding> findings_;
};

}  // namespace qorn::inspect
