// Scans rule files as the library does, beside the same patterns run by std::regex; then files of
// growing length, whose cost must grow with the length alone.

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <qorn/preproc/clips_parser.h>

#include "generated_installation.h"

namespace qorn::benchmarks {
namespace {

namespace fs = std::filesystem;

using Ids = std::map<std::string, std::vector<std::string>>;

/// Where the scanned files lie, until the program ends.
struct Folder {
  std::string path = fs::temp_directory_path() / "qorn-benchmark-XXXXXX";
  Folder() {
    if (mkdtemp(path.data()) == nullptr) {
      throw std::runtime_error("no temporary directory");
    }
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() { fs::remove_all(path); }
};

const std::string& folder() {
  static const Folder made;
  return made.path;
}

void add_quoted(const std::string& text, const std::regex& quoted, const std::string& name,
                Ids& ids) {
  std::smatch match;
  if (std::regex_search(text, match, quoted)) {
    ids[match.str().substr(1, match.str().size() - 2)].push_back(name);
  }
}

/// The walk over a rule file's lines; texts and loads, which need no pattern, are left out.
void scan_with_regex(const std::string& path, Ids& ids) {
  static const std::regex DEFRULE(R"re(\s*\({1}(defrule){1}\s+\S+)re");
  static const std::regex NEGATED(R"re(\({1}\s*(not){1}.*\){1})re");
  static const std::regex LITERAL(R"re(\(\s*id\s+\"\S*\"\s*\))re");
  static const std::regex VARIABLE(R"re(\({1}\s*(id){1}\s+\?{1}\S+\s*\){1})re");
  static const std::regex BIND(R"re(\({1}\s*(bind){1}\s+\?{1}?id{1}\s+\"{1}\S+\"{1}\s*\){1})re");
  static const std::regex QUOTED(R"re(\"\S*\")re");
  std::vector<std::string> stored;
  std::string name;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    std::smatch match;
    if (line.starts_with(";")) {
      continue;
    }
    stored.push_back(line);
    if (std::regex_search(line, match, DEFRULE)) {
      name = match.str();
      name.erase(0, name.find("defrule") + 8);
    }
    if (std::regex_search(line, NEGATED)) {
      continue;
    }
    if (std::regex_search(line, match, LITERAL)) {
      add_quoted(match.str(), QUOTED, name, ids);
    } else if (std::regex_search(line, match, VARIABLE)) {
      for (const std::string& each : stored) {
        if (std::regex_search(each, match, BIND)) {
          add_quoted(match.str(), QUOTED, name, ids);
        }
      }
    }
  }
}

Ids scan(const std::string& path) {
  Config config;
  std::set<Rule> rules;
  preproc::clips_parser::parse_clips_rules(path, rules, config, folder());
  return config.diagnosis_rules;
}

double seconds_since(std::clock_t start) {
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

void compare_with_regex(benchmark::State& state, const std::string& path) {
  constexpr int ROUNDS = 10;
  std::clock_t start = std::clock();
  Ids expected;
  for (int round = 0; round < ROUNDS; ++round) {
    expected.clear();
    scan_with_regex(path, expected);
  }
  const double regex_seconds = seconds_since(start) / ROUNDS;
  if (scan(path) != expected) {
    state.SkipWithError("the two scans found different ids");
  }
  start = std::clock();
  for ([[maybe_unused]] const auto& round : state) {
    benchmark::DoNotOptimize(scan(path));
  }
  const double seconds = seconds_since(start) / static_cast<double>(state.iterations());
  state.counters["times_as_fast"] = regex_seconds / seconds;
}

/// One file, since opening many small ones takes as long as scanning them.
std::string installed_rules() {
  std::string path = folder() + "/installed.clp";
  std::ofstream out(path);
  for (const auto& entry : fs::recursive_directory_iterator(QORN_INSTALLATION "/kb/rules")) {
    if (entry.is_regular_file()) {
      out << std::ifstream(entry.path()).rdbuf();
    }
  }
  return path;
}

std::string generated_rules() {
  std::mt19937 random(1);
  std::string path = folder() + "/generated.clp";
  std::ofstream(path) << rule_text(random, "generated", 200);
  return path;
}

BENCHMARK_CAPTURE(compare_with_regex, installed, installed_rules());
BENCHMARK_CAPTURE(compare_with_regex, generated, generated_rules());

/// 10 binds and, far behind them, 1,000 variable ids, each of which meets every line above.
void scan_variables(benchmark::State& state) {
  const auto lines = static_cast<int>(state.range(0));
  const std::string path = folder() + "/variables.clp";
  std::ofstream out(path);
  for (int line = 0; line < lines; ++line) {
    out << (line < 10              ? "    (bind ?id \"bound\")\n"
            : line >= lines - 1000 ? "  (assert (sign (id ?id) (node_id ?node)))\n"
                                   : "          (total_kb ?total&:(> ?total (middle memory)))\n");
  }
  out.close();
  for ([[maybe_unused]] const auto& round : state) {
    benchmark::DoNotOptimize(scan(path));
  }
  state.SetComplexityN(lines);
}
BENCHMARK(scan_variables)->RangeMultiplier(10)->Range(10'000, 1'000'000)->Complexity();

}  // namespace
}  // namespace qorn::benchmarks

BENCHMARK_MAIN();
