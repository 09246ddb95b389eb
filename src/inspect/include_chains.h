#pragma once

#include <map>
#include <string>
#include <vector>

#include <qorn/config.h>
#include <qorn/run_notes.h>

namespace qorn::inspect {

/// How the framework definitions of a run come to be in it.
class IncludeChains {
 public:
  /// `notes` are those of the run that made `config`; both must outlive the object.
  IncludeChains(const Config& config, const RunNotes& notes);

  /// The paths of all definitions of the run, in the order of reading.
  const std::vector<std::string>& in_order() const { return in_order_; }

  /// The first way to a definition in load order, its start first, and how many more there are.
  std::vector<std::string> lines_of(const std::string& path) const;

 private:
  /// What names a definition first, and the path of the definition that it stands in.
  struct Include {
    const Reference* reference;
    std::string from;
  };

  void put_in_order();
  void find_includes();
  const Include* first_include(const std::string& path) const;
  void count_ways();
  void name_origins();

  const Config& config_;
  const RunNotes& notes_;
  std::vector<std::string> in_order_;
  std::map<std::string, std::size_t> order_;  // of a path in in_order_
  std::map<std::string, std::string> paths_;  // of all definitions, by the names of opened files
  std::map<std::string, Include> includes_;   // by the included path
  std::map<std::string, std::size_t> ways_;
  std::map<std::string, std::string> origins_;
};

}  // namespace qorn::inspect
