#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "terminal.h"

namespace qorn::inspect {

/// A place in a document.
struct Place {
  std::string file;
  long line = 0;  // 0: the whole file
};

/// "FILE:LINE", or "FILE" for a place without a line; control bytes are escaped.
std::string to_string(const Place& place);

/// One fault of an installation.
struct Finding {
  enum class Severity { WARNING, ERROR };
  struct Related {
    Place place;
    std::string message;
  };

  Severity severity = Severity::ERROR;
  const char* id = "";  // of the kind of fault, for scripts
  Place place;
  long column = 0;  // 0: unknown
  std::string message;
  std::vector<Related> related;
  bool follow_up = false;  // goes away with another fault
};

/// What a check has read and found.
class FaultList {
 public:
  Finding& error(const char* id, const Place& place, std::string message);
  Finding& warning(const char* id, const Place& place, std::string message);

  /// Whether an error about that file is known.
  bool has_error(const std::string& file) const;

  /// Puts the faults into the order of their files and lines, each once, and drops those about
  /// files other than `files`, unless that is empty.
  void settle(const std::vector<std::string>& files);

  /// One line for each fault, then the line with the counts; follow-ups with `verbose` alone.
  void print(std::ostream& out, const Terminal& terminal, bool verbose) const;

  /// The same as one JSON object, described by etc/inspect.schema.json; follow-ups included.
  void print_json(std::ostream& out, const std::string& root) const;

  /// 0 for nothing but warnings, 1 for errors, 3 for warnings with `strict`.
  int exit_status(bool strict) const;

  struct Counts {
    std::size_t documents = 0;
    std::size_t rule_files = 0;
    std::size_t node_files = 0;
  };
  Counts read;

 private:
  Finding& add(Finding::Severity severity, const char* id, const Place& place, std::string message);
  std::size_t count(Finding::Severity severity) const;
  std::size_t follow_ups() const;

  std::vector<Finding> findings_;
};

}  // namespace qorn::inspect
