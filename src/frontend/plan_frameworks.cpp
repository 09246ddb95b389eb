#include "plan_frameworks.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include <qorn/str.h>
#include <qorn/str/lines.h>
#include <qorn/util/engine_helper.h>

#include "plan_layout.h"

namespace qorn::frontend {
namespace {

/// Levels that are indented. A chain of includes may be 100,000 levels deep, and indented all
/// the way its lines would be as long as that.
constexpr std::size_t MOST_DRAWN_LEVELS = 16;

class TreePrinter {
 public:
  explicit TreePrinter(const Config& config)
      : usual_directory_(config.root + util::CommonConstants::DEFAULT_FWD_PATH()) {}

  void print(const FwdNode& root) {
    std::vector<Line> unfinished{{&root, 0, true, "  "}};
    while (!unfinished.empty()) {
      const Line line = std::move(unfinished.back());
      unfinished.pop_back();
      print_line(line, unfinished);
    }
  }

  std::string take_text() { return std::move(text_); }

 private:
  struct Line {
    const FwdNode* node;
    std::size_t level;
    bool last;           // of its parent's members
    std::string prefix;  // the lines of the levels above
  };

  void print_line(const Line& line, std::vector<Line>& unfinished) {
    const bool is_new = seen_.insert(line.node).second;
    text_.append(line.prefix).append(line.last ? "`- " : "|- ");
    if (line.level > MOST_DRAWN_LEVELS) {
      text_.append("(level ").append(std::to_string(line.level)).append(") ");
    }
    text_.append(title(*line.node->fwd)).append(is_new ? "\n" : " (above)\n");
    if (!is_new) {
      return;
    }
    std::string prefix = line.prefix;
    if (line.level < MOST_DRAWN_LEVELS) {
      prefix.append(line.last ? "   " : "|  ");
    }
    const std::size_t first = unfinished.size();
    push_members(*line.node, line.level + 1, prefix, unfinished);
    print_rules(*line.node->fwd, prefix.append(unfinished.size() > first ? "|  " : "   "));
  }

  /// The first member goes to the top of the stack.
  static void push_members(const FwdNode& node, std::size_t level, const std::string& prefix,
                           std::vector<Line>& unfinished) {
    const std::size_t before = unfinished.size();
    for (const auto& group : node.groups) {
      for (const auto& member : group) {
        unfinished.push_back({member.get(), level, false, prefix});
      }
    }
    if (unfinished.size() > before) {
      unfinished.back().last = true;
      std::reverse(unfinished.begin() + static_cast<std::ptrdiff_t>(before), unfinished.end());
    }
  }

  void print_rules(const Fwd& fwd, const std::string& prefix) {
    for (const Rule& rule : fwd.rules) {
      text_.append(prefix).append("* ").append(str::printable(rule.name)).append(1, '\n');
    }
  }

  /// The name, and the path where the name doesn't say it.
  std::string title(const Fwd& fwd) const {
    std::string title = str::printable(fwd.name);
    if (fwd.path != usual_directory_ + fwd.name + ".xml") {
      title.append(" (").append(str::printable(fwd.path)).append(1, ')');
    }
    return title;
  }

  std::string usual_directory_;
  std::unordered_set<const FwdNode*> seen_;
  std::string text_;
};

}  // namespace

std::string framework_tree(const Config& config) {
  TreePrinter printer(config);
  for (const auto& root : config.fwds->roots) {
    printer.print(*root);
  }
  return printer.take_text();
}

}  // namespace qorn::frontend
