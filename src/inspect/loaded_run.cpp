#include "loaded_run.h"

#include <algorithm>
#include <functional>
#include <iostream>
#include <iterator>

#include <qorn/log/output_log.h>

#include "capture.h"
#include "trouble.h"

namespace qorn::inspect {
namespace {

struct Stage {
  const char* word;     // as it is typed
  const char* command;  // as the preparation takes it
};
constexpr Stage STAGES[] = {{"collect", "01"}, {"analyze", "10"}};

const Stage* stage_of(const std::vector<std::string>& arguments) {
  const auto* stage = std::find_if(std::begin(STAGES), std::end(STAGES), [&](const Stage& each) {
    return !arguments.empty() && arguments.front() == each.word;
  });
  return stage == std::end(STAGES) ? nullptr : stage;
}

/// Runs one step of the library; what it wrote is shown when the step fails, or throws.
void step(const std::function<bool()>& take) {
  std::string words;
  {
    const Capture capture;
    bool good = false;
    try {
      good = take();
    } catch (const std::exception& error) {
      words = std::string(error.what()) + "\n";
    }
    if (good) {
      return;
    }
    words.insert(0, capture.text());
  }
  std::cerr << words;
  throw Trouble("");
}

}  // namespace

LoadedRun::LoadedRun() {
  log::OutputLog::set_out_streams("", std::ios_base::out | std::ios_base::trunc);
  config.common_options.parse_node_groups = true;
}

void LoadedRun::take_command_line(const std::vector<std::string>& arguments) {
  std::vector<std::string> words = arguments;
  if (const Stage* stage = stage_of(words)) {
    words.front() = stage->command;
  }
  words.insert(words.begin(), "qorn");
  std::vector<char*> argv;
  std::transform(words.begin(), words.end(), std::back_inserter(argv),
                 [](std::string& word) { return word.data(); });
  argv.push_back(nullptr);
  step([&] {
    return preprocessor.take_command_line(config, static_cast<int>(words.size()), argv.data()) == 0;
  });
}

void LoadedRun::read_nodes() {
  step([&] { return preprocessor.CheckConfiguration(config); });
}

void LoadedRun::read_main_document() {
  step([&] {
    return !preprocessor.read_documents(config, preproc::DocumentStep::DEFAULT_FRAMEWORKS);
  });
}

void LoadedRun::read_documents() {
  step([&] {
    if (preprocessor.read_documents(config, preproc::DocumentStep::MESSAGE_SCHEMAS)) {
      return false;
    }
    preprocessor.build_provider_list(config);
    return preprocessor.node_group_parser.parse_group_file(config) != 1 &&
           preprocessor.node_group_parser.create_node_groups(config) == 0;
  });
}

std::vector<std::string> stage_word(const std::vector<std::string>& arguments) {
  return stage_of(arguments) == nullptr ? std::vector<std::string>()
                                        : std::vector<std::string>{arguments.front()};
}

}  // namespace qorn::inspect
