#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <unistd.h>

#include <qorn/qorn.h>

#include "cost.h"
#include "floor.h"
#include "generated_installation.h"

namespace qorn::benchmarks {
namespace {

namespace fs = std::filesystem;

/// One installation and what a run may cost with it.
struct Row {
  const char* name;
  Size size;
  const char* expected;
  bool keep_lines = false;     // the floor keeps the lines of node files
  const char* base = nullptr;  // the row that the growth of Run is counted against
};

/// Definitions in layers that include all of the next layer.
Size dense(std::size_t layers, std::size_t width) {
  return {.definitions = layers * width,
          .layers = layers,
          .edges = (layers - 1) * width * width,
          .providers = 1};
}

Size wide(std::size_t layers, std::size_t edges) {
  return {.definitions = 999, .layers = layers, .edges = edges, .providers = 1};
}

Size hosts(bool folded) {
  Size size = dense(1, 1);
  size.nodes = 1'000'000;
  size.folded = folded;
  return size;
}

Size groups(std::size_t nodes, bool files) {
  Size size = dense(1, 50);
  size.nodes = nodes;
  size.groups = 200;
  size.tied = 20;
  size.group_files = files;
  return size;
}

const std::vector<Row> ROWS = {
    {"a", {.providers = 500, .rule_files = 300}, "1.5, aim 1.0"},
    {"b", dense(20, 50), "2.0, aim 1.3"},
    {"b2", dense(20, 71), "growth 1.75", false, "b"},
    {"b4", dense(20, 100), "growth 3.3", false, "b"},
    {"b2-wide", wide(9, 95'000), "growth 1.75", false, "b"},
    {"b4-wide", wide(3, 190'000), "growth 3.3", false, "b"},
    {"c", dense(5000, 1), "1.5, aim 1.2"},
    {"d", hosts(false), "4.0 and 300 MiB, aim 3.0 and 240", true},
    {"folded", hosts(true), "14 and 300 MiB, aim 10 and 240; the floor of row d", true},
    {"e10", groups(10'000, false), "a tenth of e's nodes"},
    {"e", groups(100'000, false), "12 and 300 MiB, aim 7 and 220; growth 15", false, "e10"},
    {"e-files", groups(100'000, true), "e with a node file for each group"},
};

/// Calls Run as a front-end does. The record isn't freed: its end is the caller's affair.
void prepare(const std::string& root) {
  std::string name = "qorn";
  std::string option = "-f";
  std::string nodes = root + "/nodes";
  char* argv[] = {name.data(), option.data(), nodes.data(), nullptr};
  auto* config = new Config;
  config->common_options.parse_node_groups = true;
  preproc::Preprocessor preprocessor;
  if (preprocessor.Run(*config, 3, argv) != 0) {
    throw std::runtime_error("the run failed");
  }
}

void execute(const std::string& program, const std::string& root) {
  const std::string nodes = root + "/nodes";
  setenv("QORN_RECORD", (root + "/record.json").c_str(), 1);
  execl(program.c_str(), program.c_str(), "-f", nodes.c_str(), static_cast<char*>(nullptr));
  throw std::runtime_error("can't execute " + program);
}

/// Two ways of doing the same, in turn.
struct Pair {
  std::vector<double> cpu_ms[2];
  std::vector<double> ratios;
  double peak_mib[2] = {};
};

Pair compare(std::size_t rounds, const std::function<void()>& first,
             const std::function<void()>& second) {
  Pair pair;
  const std::function<void()>* const ways[] = {&first, &second};
  for (std::size_t round = 0; round <= rounds; ++round) {
    Cost costs[2];
    for (int i = 0; i < 2; ++i) {
      costs[i] = measure(*ways[i]);
      if (round != 0) {  // the first one fills the file cache
        pair.cpu_ms[i].push_back(costs[i].cpu_ms);
        pair.peak_mib[i] = std::max(pair.peak_mib[i], costs[i].peak_mib);
      }
    }
    if (round != 0) {
      pair.ratios.push_back(costs[1].cpu_ms / costs[0].cpu_ms);
    }
  }
  return pair;
}

void print(const std::string& name, const Pair& pair, const std::string& expected) {
  std::printf("%-8s %9.1f ms %9.1f ms  %5.2f  %6.0f MiB %6.0f MiB  (%s)\n          rounds:",
              name.c_str(), median(pair.cpu_ms[0]), median(pair.cpu_ms[1]), median(pair.ratios),
              pair.peak_mib[0], pair.peak_mib[1], expected.c_str());
  for (const double ratio : pair.ratios) {
    std::printf(" %.2f", ratio);
  }
  std::printf("\n");
  std::fflush(stdout);
}

struct Request {
  std::set<std::string> rows;  // none stands for all
  std::size_t rounds = 7;
  std::string program;
  std::string folder;
};

void run_rows(const Request& request) {
  std::printf("row          floor         Run  ratio  peak floor    peak Run\n");
  std::map<std::string, double> run_ms;
  for (const Row& row : ROWS) {
    if (!request.rows.empty() && request.rows.count(row.name) == 0) {
      continue;
    }
    const std::string root = request.folder + "/" + row.name;
    // In a process of its own, so that its memory doesn't count.
    measure([&] { write_installation(row.size, root); });
    // A few lines cost nothing to read: what folding costs shows beside the same hosts unfolded.
    std::string floor_root = root;
    if (row.size.folded) {
      floor_root += "-unfolded";
      Size unfolded = row.size;
      unfolded.folded = false;
      measure([&] { write_installation(unfolded, floor_root); });
    }
    setenv("QORN_ROOT", root.c_str(), 1);
    setenv("HOME", root.c_str(), 1);
    const Pair pair = compare(
        request.rounds, [&] { read_installation(floor_root, row.keep_lines); },
        [&] { prepare(root); });
    print(row.name, pair, row.expected);
    run_ms[row.name] = median(pair.cpu_ms[1]);
    if (row.base != nullptr && run_ms.count(row.base) != 0) {
      std::printf("          Run costs %.2f times that of row %s\n",
                  run_ms[row.name] / run_ms[row.base], row.base);
    }
    if (!request.program.empty()) {
      print(std::string(row.name) + " Run, program",
            compare(
                request.rounds, [&] { prepare(root); }, [&] { execute(request.program, root); }),
            "2.0, aim 1.3, for rows a and d");
    }
    fs::remove_all(root);
    fs::remove_all(floor_root);
  }
}

}  // namespace
}  // namespace qorn::benchmarks

int main(int argc, char** argv) {
  qorn::benchmarks::Request request;
  CLI::App app("Compares Preprocessor::Run with the least that anybody must do, in turn.");
  app.add_option("ROW", request.rows, "Rows of the table in README.md; all when none is named");
  app.add_option("--rounds", request.rounds)->capture_default_str()->check(CLI::PositiveNumber);
  app.add_option("--program", request.program, "Compares the program, too, with Run alone");
  CLI11_PARSE(app, argc, argv);
  std::string folder = std::filesystem::temp_directory_path() / "qorn-benchmark-XXXXXX";
  if (mkdtemp(folder.data()) == nullptr) {
    std::cerr << "compare_with_floor: no temporary directory\n";
    return 1;
  }
  request.folder = folder;
  int status = 0;
  try {
    qorn::benchmarks::run_rows(request);
  } catch (const std::exception& error) {
    std::cerr << "compare_with_floor: " << error.what() << '\n';
    status = 1;
  }
  std::filesystem::remove_all(folder);
  return status;
}
