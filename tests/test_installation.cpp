#include "test_installation.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

namespace qorn::testing {
std::string installed(const std::string& name) {
  return QORN_INSTALLATION "/" + name;
}

std::string read_file(const std::string& path) {
  std::ostringstream content;
  content << std::ifstream(path).rdbuf();
  return content.str();
}

Arguments::Arguments(std::vector<std::string> words, const std::string& program)
    : texts_(std::move(words)) {
  texts_.insert(texts_.begin(), program);
  for (std::string& text : texts_) {
    pointers_.push_back(text.data());
  }
  pointers_.push_back(nullptr);
}

TemporaryDirectory::TemporaryDirectory() {
  std::string name = std::filesystem::temp_directory_path() / "qorn-test-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error("no temporary directory");
  }
  path_ = std::filesystem::canonical(name);
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TemporaryDirectory::write(const std::string& name, const std::string& content) const {
  const std::filesystem::path file = std::filesystem::path(path_) / name;
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << content;
  return file;
}

bool TemporaryDirectory::has(const std::string& name) const {
  return std::filesystem::exists(path(name));
}

EnvironmentVariable::EnvironmentVariable(const char* name, const char* value) : name_(name) {
  const char* earlier = std::getenv(name);
  was_set_ = earlier != nullptr;
  earlier_ = was_set_ ? earlier : "";
  value == nullptr ? unsetenv(name) : setenv(name, value, 1);
}

EnvironmentVariable::~EnvironmentVariable() {
  was_set_ ? setenv(name_.c_str(), earlier_.c_str(), 1) : unsetenv(name_.c_str());
}

Printed printed(const std::function<void()>& call, int level) {
  log::LOG_LEVEL = level;
  log::LOG_OUTPUT = 0;
  ::testing::internal::CaptureStderr();
  ::testing::internal::CaptureStdout();
  call();
  Printed result;
  result.output = ::testing::internal::GetCapturedStdout();
  result.errors = ::testing::internal::GetCapturedStderr();
  log::LOG_LEVEL = log::level::ERROR;
  return result;
}

Installation::Installation() {
  environment_.emplace_back("QORN_ROOT", path().c_str());
  environment_.emplace_back("HOME", path("home").c_str());
  environment_.emplace_back("COLUMNS", "80");
  for (const char* variable :
       {"QORN_CONFIG_XSD", "QORN_TURN_OFF_ENV_PROPAGATION", "QORN_COLLECT_DATABASE_CLOSE_DELAY",
        "SLURM_JOB_NODELIST", "PBS_NODEFILE", "LSB_DJOB_HOSTFILE", "PE_HOSTFILE", "LSB_HOSTS",
        "POSIXLY_CORRECT"}) {
    environment_.emplace_back(variable, nullptr);
  }
  for (const auto& file : std::filesystem::recursive_directory_iterator(QORN_INSTALLATION)) {
    if (file.path().extension() == ".xsd") {
      write(file.path().lexically_relative(QORN_INSTALLATION), read_file(file.path()));
    }
  }
  write("etc/qorn.xml", "<configuration/>");
  write("etc/CLIPS_type_map.xml", "<type_map/>");
  write("kb/data/msg_schema.xml", "<message_schema/>");
  write("etc/postprocessor/table.xml", "<postproc_tables/>");
  write("etc/providers/probe.xml",
        "<configuration><command>uname -a</command><timeout>5</timeout></configuration>");
  fwd("base", "<providers><provider>probe</provider></providers>");
  nodes = write("nodes", "node1\n");
}

std::string Installation::fwd(const std::string& name, const std::string& body) const {
  return write("etc/fwd/" + name + ".xml", "<configuration><framework_definition>" + body +
                                               "</framework_definition></configuration>");
}

std::string Installation::configure(const std::string& body) const {
  return write("etc/qorn.xml", "<configuration>" + body + "</configuration>");
}

int Installation::run(const std::vector<std::string>& arguments, RunResult& result) const {
  Arguments line(arguments);
  result.config.common_options.parse_node_groups = true;
  const Printed texts_of_run = printed([&] {
    preproc::Preprocessor preprocessor;
    result.status = preprocessor.Run(result.config, line.count(), line.values());
    result.notes = preprocessor.notes();
  });
  result.output = texts_of_run.output;
  result.errors = texts_of_run.errors;
  return result.status;
}

}  // namespace qorn::testing
