#include "run_loader.h"

#include <functional>
#include <iostream>

#include <qorn/log/error_log.h>
#include <qorn/log/output_log.h>
#include <qorn/str.h>

namespace qorn::inspect {
namespace {

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

Capture::Capture()
    : cout_(std::cout.rdbuf(output_.rdbuf())),
      cerr_(std::cerr.rdbuf(errors_.rdbuf())),
      log_level_(log::LOG_LEVEL) {
}

Capture::~Capture() {
  std::cout.rdbuf(cout_);
  std::cerr.rdbuf(cerr_);
  log::LOG_LEVEL = log_level_;
}

std::vector<std::string> Capture::error_lines() const {
  return str::split(errors_.str(), '\n', false);
}

std::vector<std::string> command_line_of(const std::vector<std::string>& arguments) {
  std::vector<std::string> words = arguments;
  if (!words.empty() && words.front() == "collect") {
    words.front() = "01";
  } else if (!words.empty() && words.front() == "analyze") {
    words.front() = "10";
  }
  words.insert(words.begin(), "qorn");
  return words;
}

LoadedRun::LoadedRun() {
  log::OutputLog::set_out_streams("", std::ios_base::out | std::ios_base::trunc);
  config.common_options.parse_node_groups = true;
  preproc::Preprocessor::set_defaults_in_config(config);
  preprocessor.update_paths(config);
}

void LoadedRun::read_arguments(const std::vector<std::string>& arguments) {
  std::vector<std::string> words = command_line_of(arguments);
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);
  step([&] {
    return preprocessor.ProcessCommand(static_cast<int>(words.size()), argv.data(), config) == 0;
  });
  preprocessor.set_config_xsd(config);
  preprocessor.set_env_prop_on_off(config);
}

void LoadedRun::read_main_document() {
  step([&] {
    return preprocessor.config_parser.parse_configuration_xml(config) != 1 &&
           preprocessor.config_parser.load_default_fwds(config) != 1;
  });
}

void LoadedRun::read_nodes() {
  step([&] { return preprocessor.CheckConfiguration(config); });
}

void LoadedRun::read_frameworks() {
  step([&] {
    auto& parser = preprocessor.config_parser;
    if (parser.parse_type_map(config, config.root + "/etc/CLIPS_type_map.xml",
                              config.root + "/etc/type_map.xsd") == 1 ||
        preprocessor.fwd_parser.load_fwds(config, true) == 1 ||
        parser.parse_tag_message_schema(config, config.root + "/etc/schema_map.xsd") == 1) {
      return false;
    }
    preprocessor.build_provider_list(config);
    return preprocessor.node_group_parser.parse_group_file(config) != 1 &&
           preprocessor.node_group_parser.create_node_groups(config) == 0;
  });
}

}  // namespace qorn::inspect
