#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include <qorn/detail/tree_budget.h>
#include <qorn/fwd.h>

#include "fwd_members.h"

namespace qorn {
namespace {

/// The levels in front of all lines of a tree together, which become 150 MB of text.
constexpr std::size_t TREE_LEVELS = 50'000'000;

/// The nodes of the tree form below each node of a graph, counted without making the tree.
class TreeSizes {
 public:
  /// The number of nodes of `root`'s tree; `beyond` + 1 stands for more than `beyond`, and for a
  /// graph with a cycle, whose tree has no end.
  static std::size_t count(const FwdNode& root, std::size_t beyond) {
    TreeSizes sizes(beyond);
    sizes.walk(root);
    return sizes.known_[&root];
  }

 private:
  explicit TreeSizes(std::size_t beyond) : beyond_(beyond) {}

  // The graph may be deeper than the stack: children are known before their parent is summed up.
  void walk(const FwdNode& root) {
    std::vector<const FwdNode*> stack{&root};
    while (!stack.empty()) {
      const FwdNode* node = stack.back();
      if (open_.count(node) != 0) {
        stack.pop_back();
        open_.erase(node);
        known_[node] = sum(*node);
      } else if (known_.count(node) != 0) {
        stack.pop_back();
      } else {
        open_.insert(node);
        for_each_member(*node, [&](const auto& member) {
          if (open_.count(member.get()) == 0 && known_.count(member.get()) == 0) {
            stack.push_back(member.get());
          }
        });
      }
    }
  }

  std::size_t sum(const FwdNode& node) const {
    std::size_t total = 1;
    for_each_member(node, [&](const auto& member) {
      const auto found = known_.find(member.get());
      total = std::min(beyond_ + 1, total + (found == known_.end() ? beyond_ + 1 : found->second));
    });
    return total;
  }

  std::size_t beyond_;
  std::unordered_map<const FwdNode*, std::size_t> known_;
  std::unordered_set<const FwdNode*> open_;  // on the way from the root
};

}  // namespace

namespace detail {

TreeBudget* TreeBudget::current = nullptr;

TreeBudget::TreeBudget() : outer_(std::exchange(current, this)) {
}

TreeBudget::~TreeBudget() {
  current = outer_;
}

void TreeBudget::spend(const FwdNode& node) {
  const TreeCall call;
  const std::size_t needed = TreeSizes::count(node, current->left_);
  if (needed > current->left_) {
    throw std::runtime_error("The framework definition " + node.fwd->path +
                             " unfolds into a tree of more than 1,000,000 definitions: its "
                             "includes lead to the same definitions on too many ways.");
  }
  current->left_ -= needed;
}

TreeCall::TreeCall() {
  if (TreeBudget::current == nullptr) {
    own_.emplace();
  }
}

}  // namespace detail

std::shared_ptr<FwdNode> FwdNode::clone() {
  return clone_impl(nullptr);
}

std::shared_ptr<FwdNode> FwdNode::clone_impl(std::shared_ptr<FwdNode> parent) {
  detail::TreeBudget::spend(*this);
  const auto copy_of = [](const FwdNode& source, const std::shared_ptr<FwdNode>& above) {
    auto copy = std::make_shared<FwdNode>();
    copy->visited = true;
    copy->fwd = source.fwd;
    if (above != nullptr) {
      copy->parents.push_back(above);
    }
    return copy;
  };
  std::shared_ptr<FwdNode> root = copy_of(*this, parent);
  std::vector<std::pair<const FwdNode*, std::shared_ptr<FwdNode>>> unfinished{{this, root}};
  while (!unfinished.empty()) {
    const FwdNode& source = *unfinished.back().first;
    const std::shared_ptr<FwdNode> copy = unfinished.back().second;
    unfinished.pop_back();
    internal::GroupAttributes<FwdNode> all;
    for_each_member(source, [&](const auto& member) {
      all.members.push_back(copy_of(*member, copy));
      unfinished.emplace_back(member.get(), all.members.back());
    });
    if (!all.members.empty()) {
      copy->groups.push_back(std::move(all));
    }
  }
  return root;
}

std::vector<FwdNode::TreeLine> FwdNode::create_tree(std::vector<bool> levels, bool last) {
  detail::TreeBudget::spend(*this);
  std::size_t levels_left = TREE_LEVELS;
  levels.push_back(last);
  std::vector<TreeLine> lines;
  std::vector<std::pair<const FwdNode*, std::vector<bool>>> stack{{this, std::move(levels)}};
  while (!stack.empty()) {
    auto [node, way] = std::move(stack.back());
    stack.pop_back();
    bool is_last = true;  // members come last one first
    for (const FwdNode* member : members_reversed(*node)) {
      if (way.size() >= levels_left) {
        throw std::runtime_error("The tree of the framework definition " + fwd->path +
                                 " is too deep to be shown.");
      }
      levels_left -= way.size() + 1;
      stack.emplace_back(member, way);
      stack.back().second.push_back(is_last);
      is_last = false;
    }
    lines.emplace_back(node->fwd->name, std::move(way));
  }
  return lines;
}

void release_tree(const std::shared_ptr<const FwdNode>& node) {
  if (node == nullptr) {
    return;
  }
  // Everything reachable is held here until all links are gone, so that no destructor recurses.
  std::vector<std::shared_ptr<FwdNode>> all{std::const_pointer_cast<FwdNode>(node)};
  std::unordered_set<const FwdNode*> known{node.get()};
  for (std::size_t i = 0; i < all.size(); ++i) {
    const std::shared_ptr<FwdNode> each = all[i];
    for_each_link(*each, [&](const std::shared_ptr<FwdNode>& other) {
      if (other != nullptr && known.insert(other.get()).second) {
        all.push_back(other);
      }
    });
  }
  for (const auto& each : all) {
    each->groups.clear();
    each->parents.clear();
  }
}

}  // namespace qorn
