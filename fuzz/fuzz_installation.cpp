#include "fuzz_installation.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <new>
#include <optional>
#include <stdexcept>

#include <unistd.h>

#include <qorn/preproc/clips_parser.h>
#include <qorn/preproc/run_scope.h>
#include <qorn/xml/document.h>

namespace qorn::fuzzing {
namespace {

constexpr const char* COPIED[] = {"etc/qorn.xsd",
                                  "etc/fwd.xsd",
                                  "etc/type_map.xsd",
                                  "etc/schema_map.xsd",
                                  "etc/nodegroup.xsd",
                                  "etc/rules_generator.xsd",
                                  "etc/postprocessor/table.xsd",
                                  "etc/postprocessor/postproc.xsd",
                                  "provider/provider.xsd"};
constexpr const char* FOLDERS[] = {"etc/fwd", "etc/providers", "etc/kb", "kb/rules", "kb/data"};

/// Takes what the streams are given and remembers only how much that was.
class CountingBuffer : public std::streambuf {
 public:
  std::size_t count = 0;

 protected:
  int_type overflow(int_type c) override {
    ++count;
    return traits_type::not_eof(c);
  }
  std::streamsize xsputn(const char* /*text*/, std::streamsize size) override {
    count += static_cast<std::size_t>(size);
    return size;
  }
};

// Never freed: the standard streams are flushed into it when the process ends.
CountingBuffer& words() {
  static auto* buffer = new CountingBuffer;
  return *buffer;
}

/// True also for an input that ended in an exception, which Run puts into words.
bool accepts(const FuzzInstallation& installation, std::string_view input) {
  const preproc::RunScope scope;
  log::LOG_LEVEL = log::level::DEBUG;
  Config config;
  installation.prepare(config);
  bool accepted = true;
  try {
    accepted = read_input(installation, config, input);
  } catch (const std::bad_alloc&) {
    throw;  // a finding: nothing here needs that much
  } catch (const std::exception&) {
  }
  release_frameworks(config);
  return accepted;
}

}  // namespace

FuzzInstallation::FuzzInstallation() {
  std::string name = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
  name += "/qorn-fuzz-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error("no temporary folder");
  }
  root_ = name;
  for (const char* folder : FOLDERS) {
    std::filesystem::create_directories(path(folder));
  }
  for (const char* file : COPIED) {
    const std::string target = path(file);
    std::filesystem::create_directories(std::filesystem::path(target).parent_path());
    std::filesystem::copy_file(std::string(QORN_INSTALLATION) + "/" + file, target);
  }
  write("etc/providers/probe.xml", "<configuration><command>true</command></configuration>");
  write("etc/fwd/base.xml",
        "<configuration><framework_definition><providers><provider>probe</provider></providers>"
        "</framework_definition></configuration>");
  write("etc/postprocessor/table.xml", "<postproc_tables/>");
  write("nodes", "node[1-3]\n");
  std::filesystem::current_path(root_);
  clearenv();
  setenv("QORN_ROOT", root_.c_str(), 1);
  setenv("HOME", root_.c_str(), 1);
  setenv("COLUMNS", "80", 1);
  std::cout.rdbuf(&words());
  std::cerr.rdbuf(&words());
  log::OutputLog::set_out_streams("", std::ios_base::out);
}

FuzzInstallation::~FuzzInstallation() {
  std::error_code ignored;
  std::filesystem::remove_all(root_, ignored);
}

std::string FuzzInstallation::write(const std::string& name, std::string_view content) const {
  std::string target = path(name);
  std::ofstream(target, std::ios::binary) << content;
  return target;
}

void FuzzInstallation::write_pieces(const std::vector<std::string>& names,
                                    std::string_view input) const {
  constexpr std::string_view SEPARATOR = "\n====\n";
  std::optional<std::string_view> rest = input;
  for (const std::string& name : names) {
    if (!rest) {
      unlink(path(name).c_str());
      continue;
    }
    const std::size_t end = rest->find(SEPARATOR);
    write(name, rest->substr(0, end));
    rest = end == std::string_view::npos ? std::nullopt
                                         : std::optional(rest->substr(end + SEPARATOR.size()));
  }
}

void FuzzInstallation::prepare(Config& config) const {
  config.operations = operation::COLLECT | operation::ANALYZE;
  config.root = root_;
  config.config_xsd = path("etc/qorn.xsd");
  config.fwds->names = {"base"};
  Node node;
  node.hostname = "node1";
  config.nodes = {node};
}

}  // namespace qorn::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qorn::fuzzing;
  static const FuzzInstallation installation;
  static const qorn::preproc::RunScope schemas;  // stay compiled
  words().count = 0;
  if (!accepts(installation, {reinterpret_cast<const char*>(data), size}) && words().count == 0) {
    std::fputs("An input was refused without a word.\n", stderr);
    std::abort();
  }
  return 0;
}
