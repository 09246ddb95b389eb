#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <qorn/qorn.h>

namespace qorn::fuzzing {

/// The installed schemas and a framework definition "base" with the provider "probe", in a folder
/// in memory that is the installation root and the working directory.
class FuzzInstallation {
 public:
  FuzzInstallation();
  FuzzInstallation(const FuzzInstallation&) = delete;
  FuzzInstallation& operator=(const FuzzInstallation&) = delete;
  ~FuzzInstallation();

  std::string path(const std::string& name) const { return root_ + "/" + name; }

  /// Writes a file that has its folder already; gives its path.
  std::string write(const std::string& name, std::string_view content) const;

  /// Splits an input at the lines "====" into as many files as `names` has; those without a piece
  /// are removed.
  void write_pieces(const std::vector<std::string>& names, std::string_view input) const;

  /// Fills a record as it is when a run reads its first document, with one node and the name
  /// "base".
  void prepare(Config& config) const;

 private:
  std::string root_;
};

/// What one input is given to: writes it to where it belongs and calls the operation that reads
/// it. Returns whether that accepted it; a refusal must have been put into words. `config` is
/// prepared.
bool read_input(const FuzzInstallation& installation, Config& config, std::string_view input);

}  // namespace qorn::fuzzing
