#include "diff.h"

#include <cstdlib>
#include <iostream>

#include <nlohmann/json.hpp>
#include <sys/wait.h>
#include <unistd.h>

#include <qorn/fs.h>

#include "descriptor_buffer.h"
#include "loaded_run.h"
#include "record_comparison.h"
#include "record_json.h"
#include "trouble.h"

namespace qorn::inspect {
namespace {

using Json = nlohmann::json;

using Kinds = fs::Readable::Kinds;
constexpr fs::Readable RECORD_FILE{Kinds::REGULAR_FILES, 4'000'000'000,
                                   "the file is larger than 4000 MB"};
constexpr fs::Readable RECORD_OF_CHILD{Kinds::ALL, std::numeric_limits<std::size_t>::max(), ""};
/// Levels of a record; its trees have some hundred at most.
constexpr int DEEPEST = 2000;
Json parse(const std::string& text, const std::string& name) {
  const auto take = [](int depth, Json::parse_event_t /*event*/, Json& /*value*/) {
    if (depth > DEEPEST) {
      throw std::length_error("too deep");
    }
    return true;
  };
  try {
    Json record = Json::parse(text, take);
    if (record.is_object() && record.contains("fwds") && record.contains("nodes")) {
      return record;
    }
  } catch (const std::exception&) {
    // as for a document of another kind
  }
  throw Trouble(name + ": not the record of a run, as QORN_RECORD writes it");
}

Json read_record(const std::string& path) {
  const fs::FileText file = fs::read_file(path, RECORD_FILE);
  if (!file.was_read()) {
    throw Trouble(path + ": " + file.reason);
  }
  return parse(file.text, path);
}

/// In a process of its own: the record of the run under `root`, to the descriptor.
int write_run(const std::string& root, const std::vector<std::string>& arguments, int descriptor) {
  try {
    setenv("QORN_ROOT", fs::abspath(root).c_str(), 1);
    LoadedRun run;
    run.take_command_line(arguments);
    run.read_nodes();
    run.read_documents();
    frontend::DescriptorBuffer buffer(descriptor);
    std::ostream out(&buffer);
    frontend::write_record(run.config, out);
    out.flush();
    return buffer.error() == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
  } catch (const std::exception& error) {
    std::cerr << error.what() << (*error.what() == '\0' ? "" : "\n");
    return EXIT_FAILURE;
  }
}

/// A run leaves settings in its process, so each has its own.
Json load_root(const std::string& root, const std::vector<std::string>& arguments) {
  int ends[2];
  if (pipe(ends) != 0) {
    throw Trouble("no pipe for the run under " + root);
  }
  fs::Descriptor from_child(ends[0]);
  fs::Descriptor to_parent(ends[1]);
  std::cout.flush();
  const pid_t child = fork();
  if (child == 0) {
    from_child.close();
    const int status = write_run(root, arguments, to_parent.get());
    std::cerr.flush();
    _exit(status);
  }
  to_parent.close();
  const std::string text = fs::read_file(from_child, RECORD_OF_CHILD).text;
  from_child.close();
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
    throw Trouble("the run under " + root + " can't be loaded");
  }
  return parse(text, root);
}

}  // namespace

int compare(const Question& question) {
  const bool by_roots = question.roots.size() == 2 && question.records.empty();
  if (!by_roots && (!question.roots.empty() || question.records.size() != 2)) {
    throw Trouble("diff takes two records, or --root twice");
  }
  Json records[2];
  for (std::size_t i = 0; i < 2; ++i) {
    records[i] = by_roots ? load_root(question.roots[i], question.run_arguments)
                          : read_record(question.records[i]);
    hide_root(records[i]);
    if (by_roots) {
      records[i]["root"] = "";
    }
  }
  return compare_records(std::move(records[0]), std::move(records[1]), Terminal(question.color));
}

}  // namespace qorn::inspect
