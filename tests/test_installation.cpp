#include "test_installation.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/xmlschemas.h>

#include "check.h"
#include "question.h"

namespace qorn::testing {
namespace {

/// What libxml2 says against a document, without a place: the parser, else the validator.
std::vector<std::string> words_of_libxml2(const std::string& document) {
  std::vector<std::string> words;
  xmlSetStructuredErrorFunc(&words, [](void* list, auto* error) {
    static_cast<std::vector<std::string>*>(list)->push_back(str::stripws(error->message));
  });
  const xml::DocumentPtr doc(xmlReadMemory(document.data(), static_cast<int>(document.size()), "",
                                           nullptr, XML_PARSE_NONET));
  if (doc != nullptr) {
    xmlSchemaParserCtxt* parser = xmlSchemaNewParserCtxt(installed("etc/qorn.xsd").c_str());
    xmlSchema* schema = xmlSchemaParse(parser);
    xmlSchemaValidCtxt* validator = xmlSchemaNewValidCtxt(schema);
    xmlSchemaValidateDoc(validator, doc.get());
    xmlSchemaFreeValidCtxt(validator);
    xmlSchemaFree(schema);
    xmlSchemaFreeParserCtxt(parser);
  }
  xmlSetStructuredErrorFunc(nullptr, nullptr);
  return words;
}

}  // namespace

std::string with_words(std::string text, const std::string& document) {
  constexpr std::string_view PLACE = "WORDS";
  if (text.find(PLACE) == std::string::npos) {
    return text;  // libxml2 alone isn't safe from every document
  }
  for (const std::string& words : words_of_libxml2(document)) {
    if (const std::size_t place = text.find(PLACE); place != std::string::npos) {
      text.replace(place, PLACE.size(), words);
    }
  }
  return text;
}

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

namespace {

/// The check knows what ended a run with these arguments.
void check_agrees(const std::vector<std::string>& arguments, const std::string& words) {
  inspect::Question question;
  for (std::size_t i = 0; i + 1 < arguments.size(); ++i) {
    if (arguments[i] == "-f" && question.node_file.empty()) {
      question.node_file = arguments[i + 1];
    } else if (arguments[i] == "-g" && question.node_group_file.empty()) {
      question.node_group_file = arguments[i + 1];
    }
  }
  int verdict = -1;
  const Printed said = printed([&] { verdict = inspect::check_installation(question); });
  EXPECT_EQ(verdict, 1) << words << said.output;
}

}  // namespace

int Installation::run(const std::vector<std::string>& arguments, RunResult& result,
                      Cause cause) const {
  Arguments line(arguments);
  result.config.common_options.parse_node_groups = true;
  const Printed texts_of_run = printed([&] {
    preproc::Preprocessor preprocessor;
    result.status = preprocessor.Run(result.config, line.count(), line.values());
    result.notes = preprocessor.notes();
  });
  result.output = texts_of_run.output;
  result.errors = texts_of_run.errors;
  if (result.status == 1 && cause == Cause::DOCUMENTS) {
    check_agrees(arguments, result.errors);
  }
  return result.status;
}

}  // namespace qorn::testing
