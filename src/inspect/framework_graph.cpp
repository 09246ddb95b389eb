#include "framework_graph.h"

#include <algorithm>
#include <set>

#include <qorn/written_path.h>

namespace qorn::inspect {
namespace {

/// A definition on the way of a walk.
struct Step {
  std::string path;
  std::vector<const Reference*> includes;
  std::size_t next = 0;
};

}  // namespace

std::vector<const Reference*> Definition::of_kind(DocumentKind kind) const {
  std::vector<const Reference*> found;
  for (const Reference& reference : references) {
    if (reference.kind == kind) {
      found.push_back(&reference);
    }
  }
  return found;
}

Definition& FrameworkGraph::make(const std::string& path) {
  Definition& definition = definitions_[path];
  definition.path = path;
  definition.name = written_path::framework_name(path);
  in_order_.push_back(&definition);
  return definition;
}

void FrameworkGraph::add(const std::string& path, const xml::DocumentPtr& doc) {
  Definition& definition = make(path);
  definition.references = references_of(DocumentKind::FRAMEWORK, doc, root_);
  for (Reference& reference : definition.references) {
    reference.place.file = path;  // as the definition is known
  }
  definition.rule_directory = inspect::rule_directory(doc, root_);
}

void FrameworkGraph::load(const std::string& path) {
  std::vector<std::string> unread{path};
  while (!unread.empty()) {
    const std::string next = unread.back();
    unread.pop_back();
    if (definitions_.count(next) != 0) {
      continue;
    }
    std::vector<xml::Fault> faults;
    const xml::DocumentPtr doc = xml::read_document(next, faults);
    if (doc == nullptr) {
      make(next).reason = faults.front().text;
      continue;
    }
    add(next, doc);
    const auto includes = in_order_.back()->of_kind(DocumentKind::FRAMEWORK);
    std::for_each(includes.rbegin(), includes.rend(),
                  [&](const Reference* include) { unread.push_back(include->path); });
  }
}

const Definition* FrameworkGraph::find(const std::string& path) const {
  const auto found = definitions_.find(path);
  return found == definitions_.end() ? nullptr : &found->second;
}

std::vector<std::vector<const Reference*>> FrameworkGraph::cycles() const {
  std::vector<std::vector<const Reference*>> found;
  std::set<std::string> done;
  std::set<std::string> on_way;
  for (const Definition* start : in_order_) {
    std::vector<Step> way;
    const auto enter = [&](const std::string& path) {
      if (done.count(path) == 0 && find(path) != nullptr) {
        on_way.insert(path);
        way.push_back({path, find(path)->of_kind(DocumentKind::FRAMEWORK)});
      }
    };
    enter(start->path);
    while (!way.empty()) {
      Step& step = way.back();
      if (step.next == step.includes.size()) {
        done.insert(step.path);
        on_way.erase(step.path);
        way.pop_back();
        continue;
      }
      const std::string& path = step.includes[step.next++]->path;
      if (on_way.count(path) == 0) {
        enter(path);
        continue;
      }
      auto each = std::find_if(way.begin(), way.end(),
                               [&](const Step& other) { return other.path == path; });
      auto& cycle = found.emplace_back();
      for (; each != way.end(); ++each) {
        cycle.push_back(each->includes[each->next - 1]);
      }
    }
  }
  return found;
}

std::vector<std::string> FrameworkGraph::names() const {
  std::vector<std::string> names;
  for (const Definition* definition : in_order_) {
    if (definition->reason.empty()) {
      names.push_back(definition->name);
    }
  }
  return names;
}

}  // namespace qorn::inspect
