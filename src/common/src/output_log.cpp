#include <exception>
#include <iostream>
#include <string_view>
#include <utility>

#include <sys/stat.h>

#include <qorn/log/output_log.h>
#include <qorn/str.h>

namespace qorn::log {
namespace {

/// Others than a regular file would be locked for everybody else by it.
void restrict_regular_file(const std::string& name) {
  struct stat status {};
  if (stat(name.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
    static_cast<void>(chmod(name.c_str(), 0660));
  }
}

std::shared_ptr<StreamFileType> open_file(const std::string& file_name,
                                          std::ios_base::openmode mode) {
  auto file = std::make_shared<StreamFileType>(file_name);
  const std::string expanded = str::wordexp(str::strip(file_name, ""));
  if (expanded.empty()) {
    return file;
  }
  file->stream = std::make_unique<std::fstream>(expanded, mode);
  file->open = file->stream->is_open();
  if (!file->open) {
    std::cerr << "Error opening output file " << file_name << ".\n";
  }
  restrict_regular_file(expanded);
  return file;
}

}  // namespace

OutputLog::OutputLogStream* OutputLog::singleton_obj = nullptr;

StreamFileType::~StreamFileType() {
  if (open) {
    stream->flush();
    stream->close();
  }
}

void OutputLog::OutputLogStream::set_color(Colors color) {
  for (const OutputStream& each : streams) {
    if (color < 0) {
      continue;
    }
    if (static_cast<std::size_t>(color) >= colors.size()) {
      std::cerr << "invalid color " << static_cast<int>(color) << '\n';
      throw std::exception();
    }
    if (each.use_color) {
      current_color = color;
      *each.stream << colors[static_cast<std::size_t>(color)];
    }
  }
}

OutputLog::OutputLog(Colors color) {
  exceptions(std::ios_base::badbit);  // or it swallows a failed allocation and cuts the text
  createInstance();
  singleton_obj->set_color(color);
}

OutputLog::~OutputLog() {
  if (singleton_obj == nullptr) {
    return;
  }
  // Viewed, not copied: an allocation that fails in a destructor would end the process.
  const std::string_view text = rdbuf()->view();
  for (const OutputStream& each : singleton_obj->streams) {
    if (!text.empty()) {
      *each.stream << text;
      if (singleton_obj->current_color >= 0 && each.use_color) {
        *each.stream << singleton_obj->reset;
      }
      each.stream->flush();
    }
    singleton_obj->current_color = NO_COLOR;
  }
}

void OutputLog::createInstance() {
  if (singleton_obj == nullptr) {
    singleton_obj = new OutputLogStream;
  }
}

int OutputLog::set_out_streams(std::string file_name, std::ios_base::openmode mode) {
  createInstance();
  singleton_obj->files.clear();
  std::shared_ptr<StreamFileType> file = open_file(file_name, mode);
  if (file->is_open()) {
    singleton_obj->files.push_back(file);
    singleton_obj->streams = {{file->stream.get(), false}};
    return 1;
  }
  singleton_obj->streams = {{&std::cout, false}};
  return file_name.empty() ? 1 : 0;
}

}  // namespace qorn::log
