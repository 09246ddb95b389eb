#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include <qorn/qorn.h>

namespace qorn::testing {

/// A temporary directory, removed with the object. All paths are absolute.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory();

  /// Writes a file below the directory, making its folders; gives the absolute path.
  std::string write(const std::string& name, const std::string& content) const;

  const std::string& path() const { return path_; }
  std::string path(const std::string& name) const { return path_ + "/" + name; }
  bool has(const std::string& name) const;

  /// The text with "ROOT" where the directory's path stands.
  std::string without_root(const std::string& text) const {
    return str::replace(text, path_, "ROOT");
  }

 private:
  std::string path_;
};

/// Sets or unsets an environment variable and puts the earlier state back.
class EnvironmentVariable {
 public:
  EnvironmentVariable(const char* name, const char* value);
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
  ~EnvironmentVariable();

 private:
  std::string name_;
  bool was_set_;
  std::string earlier_;
};

/// argc and argv for the program qorn, or for another one.
class Arguments {
 public:
  explicit Arguments(std::vector<std::string> words, const std::string& program = "qorn");
  int count() const { return static_cast<int>(texts_.size()); }
  char** values() { return pointers_.data(); }

 private:
  std::vector<std::string> texts_;
  std::vector<char*> pointers_;
};

/// What one whole run gave.
struct RunResult {
  int status = 0;
  std::string errors;  // standard error stream
  std::string output;  // standard output
  Config config;
  RunNotes notes;

  RunResult() = default;
  RunResult(const RunResult&) = delete;
  RunResult& operator=(const RunResult&) = delete;
  ~RunResult() { release_frameworks(config); }
};

/// What a call wrote. The log level is `level` meanwhile.
struct Printed {
  std::string errors;  // standard error stream
  std::string output;  // standard output, and the output log when `call` leaves it alone
};
Printed printed(const std::function<void()>& call, int level = log::level::ERROR);

/// Why a run fails, as far as the check of the installation is to tell it.
enum class Cause : int {
  DOCUMENTS,     // the check is to report an error
  ARGUMENT,      // a word of the command line, or what a caller has set
  VARIABLE,      // of the environment
  DISCOVERY,     // of nodes
  STORE,         // a database
  NOT_KNOWN_YET  // a document's fault that the check doesn't know
};

/// A small valid installation: one framework definition "base" with the provider "probe", the
/// installed schemas, and a node file with one node. A case replaces what it is about.
class Installation : public TemporaryDirectory {
 public:
  Installation();

  /// A framework definition under etc/fwd; `body` stands inside framework_definition.
  std::string fwd(const std::string& name, const std::string& body) const;

  /// The main document; `body` stands inside its root element.
  std::string configure(const std::string& body) const;

  /// Calls Run as "qorn" with these arguments, every setting of the process as at its start, and
  /// gives its status. After a run that failed for its documents the check has to report an error.
  int run(const std::vector<std::string>& arguments, RunResult& result,
          Cause cause = Cause::DOCUMENTS) const;

  std::string nodes;  // path of the node file

 private:
  std::deque<EnvironmentVariable> environment_;  // nothing comes from outside
};

/// `text` with what libxml2 says against a main document for each "WORDS" in it, in that order: its
/// words are not those of every version.
std::string with_words(std::string text, const std::string& document);

/// The path of the tree's own installation.
std::string installed(const std::string& name);

/// Reads a whole file.
std::string read_file(const std::string& path);

}  // namespace qorn::testing
