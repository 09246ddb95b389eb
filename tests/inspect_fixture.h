#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <qorn/str.h>

#include "command_line.h"
#include "test_installation.h"

namespace qorn::testing {

using Files = std::vector<std::pair<std::string, std::string>>;

struct Answer : Printed {
  int status = 0;
};

/// Asks qorn-inspect about an installation of its own, in this process. In answers "ROOT" stands
/// for the installation's root.
class Inspect : public ::testing::Test {
 protected:
  Inspect() { std::filesystem::current_path(at.path()); }
  ~Inspect() override { std::filesystem::current_path("/"); }

  Answer ask(const std::string& words) const {
    Arguments line(str::split(words, ' ', false), "qorn-inspect");
    Answer answer;
    const auto run = [&] { answer.status = inspect::run(line.count(), line.values()); };
    static_cast<Printed&>(answer) = printed(run);
    answer.output = at.without_root(answer.output);
    answer.errors = at.without_root(answer.errors);
    return answer;
  }

  void write(const Files& files) const {
    for (const auto& [name, content] : files) {
      at.write(name, content);
    }
  }

  Installation at;
};

inline std::string fwd(const std::string& body) {
  return "<configuration><framework_definition>\n" + body +
         "</framework_definition></configuration>";
}

inline std::string provider(const std::string& body) {
  return "<configuration>\n<command>a</command>\n" + body + "</configuration>";
}

inline const std::string USES_PROBE = "<providers><provider>probe</provider></providers>\n";

}  // namespace qorn::testing
