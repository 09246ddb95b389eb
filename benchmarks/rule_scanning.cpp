// Scans rule files as the library does and with the standard library's matcher, and prints the
// ratio; then scans files of growing length whose cost must grow with the length alone.

#include <cstdio>
#include <cstdlib>
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

std::string folder;  // of generated files

using Ids = std::map<std::string, std::vector<std::string>>;

/// The walk over a rule file's lines with the patterns as std::regex searches; texts and loads,
/// which need no pattern, are left out.
class RegexScan {
 public:
  void scan(const std::string& path, Ids& ids) {
    std::ifstream file(path);
    std::vector<std::string> stored;
    std::string name;
    std::string line;
    std::smatch match;
    while (std::getline(file, line)) {
      if (line.starts_with(";")) {
        continue;
      }
      stored.push_back(line);
      if (std::regex_search(line, match, defrule_)) {
        name = match.str();
        name.erase(0, name.find("defrule") + 8);
      }
      if (std::regex_search(line, negated_)) {
        continue;
      }
      if (std::regex_search(line, match, literal_id_)) {
        add(match.str(), quoted_, name, ids);
      } else if (std::regex_search(line, match, variable_id_)) {
        for (const std::string& each : stored) {
          std::smatch bound;
          if (std::regex_search(each, bound, bind_)) {
            add(bound.str(), value_, name, ids);
          }
        }
      }
    }
  }

 private:
  static void add(const std::string& text, const std::regex& pattern, const std::string& name,
                  Ids& ids) {
    std::smatch match;
    if (std::regex_search(text, match, pattern)) {
      ids[match.str().substr(1, match.str().size() - 2)].push_back(name);
    }
  }

  std::regex defrule_{R"re(\s*\({1}(defrule){1}\s+\S+)re"};
  std::regex negated_{R"re(\({1}\s*(not){1}.*\){1})re"};
  std::regex literal_id_{R"re(\(\s*id\s+\"\S*\"\s*\))re"};
  std::regex quoted_{R"re(\"\S*\")re"};
  std::regex variable_id_{R"re(\({1}\s*(id){1}\s+\?{1}\S+\s*\){1})re"};
  std::regex bind_{R"re(\({1}\s*(bind){1}\s+\?{1}?id{1}\s+\"{1}\S+\"{1}\s*\){1})re"};
  std::regex value_{R"re(\"\S+\")re"};
};

/// In one file, since opening the many small ones takes as long as scanning them.
std::vector<std::string> installed_rules() {
  const std::string file = folder + "/installed.clp";
  std::ofstream out(file);
  for (const auto& entry : fs::recursive_directory_iterator(QORN_INSTALLATION "/kb/rules")) {
    if (entry.path().extension() == ".clp") {
      out << std::ifstream(entry.path()).rdbuf();
    }
  }
  return {file};
}

std::vector<std::string> generated_rules() {
  std::mt19937 random(1);
  std::vector<std::string> files;
  for (int i = 0; i < 100; ++i) {
    files.push_back(folder + "/rule" + std::to_string(i) + ".clp");
    std::ofstream(files.back()) << rule_text(random, "rule-" + std::to_string(i), 100);
  }
  return files;
}

Ids scan_all(const std::vector<std::string>& files) {
  Config config;
  for (const std::string& file : files) {
    std::set<Rule> rules;
    preproc::clips_parser::parse_clips_rules(file, rules, config, folder);
  }
  return config.diagnosis_rules;
}

Ids scan_all_with_regex(const std::vector<std::string>& files) {
  static RegexScan scan;
  Ids ids;
  for (const std::string& file : files) {
    scan.scan(file, ids);
  }
  return ids;
}

void scan_with_library(benchmark::State& state, const std::vector<std::string>& files) {
  if (scan_all(files) != scan_all_with_regex(files)) {
    state.SkipWithError("the two scans found different ids");
  }
  for ([[maybe_unused]] const auto& round : state) {
    benchmark::DoNotOptimize(scan_all(files));
  }
}

void scan_with_regex(benchmark::State& state, const std::vector<std::string>& files) {
  for ([[maybe_unused]] const auto& round : state) {
    benchmark::DoNotOptimize(scan_all_with_regex(files));
  }
}

/// A file whose variable ids stand behind all binds, so that a walk over all stored lines for each
/// of them would cost 1,000 times the length.
void scan_many_variables(benchmark::State& state) {
  const std::string file = folder + "/variables.clp";
  const auto lines = static_cast<int>(state.range(0));
  {
    std::ofstream out(file);
    out << "(defrule variables\n";
    for (int line = 0; line < lines; ++line) {
      if (line < 10) {
        out << "    (bind ?id \"bound-" << line << "\")\n";
      } else if (line >= lines - 1000) {
        out << "  (assert (sign (id ?id) (node_id ?node)))\n";
      } else {
        out << "          (total_kb ?total&:(> ?total (middle memory total_kb ?subcluster)))\n";
      }
    }
  }
  for ([[maybe_unused]] const auto& round : state) {
    benchmark::DoNotOptimize(scan_all({file}));
  }
  state.SetComplexityN(lines);
}
BENCHMARK(scan_many_variables)->RangeMultiplier(10)->Range(10'000, 1'000'000)->Complexity();

/// Remembers the time of each benchmark, for the ratios.
class Reporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (!run.error_occurred) {
        times[run.benchmark_name()] = run.GetAdjustedCPUTime();
      }
    }
  }

  std::map<std::string, double> times;
};

void add_pair(const std::string& name, const std::vector<std::string>& files) {
  benchmark::RegisterBenchmark(("library/" + name).c_str(), scan_with_library, files);
  benchmark::RegisterBenchmark(("regex/" + name).c_str(), scan_with_regex, files);
}

}  // namespace
}  // namespace qorn::benchmarks

int main(int argc, char** argv) {
  using namespace qorn::benchmarks;
  benchmark::Initialize(&argc, argv);
  folder = fs::temp_directory_path() / "qorn-benchmark-XXXXXX";
  if (benchmark::ReportUnrecognizedArguments(argc, argv) || mkdtemp(folder.data()) == nullptr) {
    return 1;
  }
  add_pair("installed", installed_rules());
  add_pair("generated", generated_rules());
  Reporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  for (const char* name : {"installed", "generated"}) {
    const auto library = reporter.times.find(std::string("library/") + name);
    const auto regex = reporter.times.find(std::string("regex/") + name);
    if (library != reporter.times.end() && regex != reporter.times.end()) {
      std::printf("%s rules: %.1f times as fast as std::regex\n", name,
                  regex->second / library->second);
    }
  }
  fs::remove_all(folder);
  return 0;
}
