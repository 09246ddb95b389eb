#include "record_json.h"

#include <algorithm>
#include <concepts>
#include <cstring>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "json_stream.h"
#include "record_fields.h"

namespace qorn::frontend {
namespace {

constexpr int RECORD_VERSION = 1;

using Tree = std::shared_ptr<const FwdNode>;

template <typename Values>
concept Tuple = requires {
  std::tuple_size<Values>::value;
};

/// Writes each kind of value in its form. What a record refers to stands as its path or its name.
class RecordWriter {
 public:
  explicit RecordWriter(JsonStream& json) : json_(json) {}

  template <HasFields Record>
  void write_fields(const Record& record) {
    for_each_field(record, [this](const auto& field, const auto& value) {
      json_.key(field.name);
      write(value);
    });
  }

 private:
  template <std::integral Value>
  void write(Value value) {
    if constexpr (std::same_as<Value, bool>) {
      json_.boolean(value);
    } else {
      json_.number(value);
    }
  }

  void write(const std::string& text) { json_.text(text); }

  void write(const char (&text)[Config::PATH_CAPACITY]) {
    json_.text({text, strnlen(text, sizeof text)});
  }

  void write(datastore::DatabaseType value) { json_.number(static_cast<int>(value)); }
  void write(templates::DataPt_TYPES value) { write_word(templates::DATA_POINT_TYPES, value); }
  void write(Sorting::FIELD value) { write_word(SORT_FIELDS, value); }
  void write(ScaleType value) { write_word(SCALE_TYPES, value); }
  void write(Encoding value) { write_word(ENCODINGS, value); }
  void write(Architecture value) { write_word(ARCHITECTURES, value); }
  void write(ClusterType value) { write_word(CLUSTER_TYPES, value); }
  void write(nodelist_method_t value) { write_word(NODELIST_METHODS, value); }
  void write(CONTROL_TYPE value) { write_word(CONTROL_TYPES, value); }

  template <typename Table, typename Value>
  void write_word(const Table& table, Value value) {
    json_.text(word_of(table, value));
  }

  template <HasFields Record>
  void write(const Record& record) {
    json_.open('{');
    write_fields(record);
    json_.close('}');
  }

  template <typename Value>
  void write(const std::shared_ptr<Value>& value) {
    if (value == nullptr) {
      json_.null();
    } else {
      write(*value);
    }
  }

  template <typename Value>
  void write(const std::vector<Value>& values) {
    write_each(values, std::identity());
  }

  template <typename Value>
  void write(const std::set<Value>& values) {
    write_each(values, std::identity());
  }

  /// An array of what `form` makes of each.
  template <typename List, typename Form>
  void write_each(const List& list, const Form& form) {
    json_.open('[');
    for (const auto& each : list) {
      write(form(each));
    }
    json_.close(']');
  }

  template <Tuple Values>
  void write(const Values& values) {
    json_.open('[');
    std::apply([&](const auto&... each) { (write(each), ...); }, values);
    json_.close(']');
  }

  template <typename Value>
  void write(const std::map<std::string, Value>& values) {
    json_.open('{');
    for (const auto& [key, value] : values) {
      json_.key(key);
      write(value);
    }
    json_.close('}');
  }

  /// Sorted by key.
  template <typename Value>
  void write(const std::unordered_map<std::string, Value>& values) {
    std::map<std::string_view, const Value*> sorted;
    for (const auto& [key, value] : values) {
      sorted.emplace(key, &value);
    }
    json_.open('{');
    for (const auto& [key, value] : sorted) {
      json_.key(key);
      write(*value);
    }
    json_.close('}');
  }

  void write(const std::vector<std::shared_ptr<FwdNode>>& nodes) {
    write_each(nodes, [](const auto& node) -> const std::string& { return node->fwd->path; });
  }

  void write(const std::vector<std::shared_ptr<provider_config>>& providers) {
    write_each(providers,
               [](const auto& provider) -> const std::string& { return provider->name; });
  }

  void write(const ClusterDefinition::NodeSet& nodes) {
    write_each(nodes, [](const auto& node) -> const std::string& { return node->hostname; });
  }

  /// Sorted; the set itself is in the order of its pointers.
  void write(const std::set<const Fwd*>& fwds) {
    std::vector<std::string> paths;
    std::transform(fwds.begin(), fwds.end(), std::back_inserter(paths),
                   [](const Fwd* fwd) { return fwd->path; });
    std::sort(paths.begin(), paths.end());
    write(paths);
  }

  /// Sorted by path, each with all that is below it.
  void write(const std::set<Tree>& set) {
    std::vector<Tree> trees(set.begin(), set.end());
    std::sort(trees.begin(), trees.end(),
              [](const Tree& a, const Tree& b) { return a->fwd->path < b->fwd->path; });
    json_.open('[');
    for (const Tree& tree : trees) {
      write_tree(*tree);
    }
    json_.close(']');
  }

  void write_tree(const FwdNode& node) {
    json_.open('{');
    json_.key("path");
    json_.text(node.fwd->path);
    json_.key("members");
    json_.open('[');
    for (const auto& group : node.groups) {
      for (const auto& member : group) {
        write_tree(*member);
      }
    }
    json_.close(']');
    json_.close('}');
  }

  /// The fields of a rule document's element are those of its kind.
  void write(const Element& element) {
    json_.open('{');
    json_.key("type");
    switch (element.type) {
      case Element::RULE:
        json_.text("rule");
        write_fields(element.block);
        break;
      case Element::CONTROL:
        json_.text("control");
        json_.key("control");
        write(element.control);
        break;
      case Element::SLOT:
        json_.text("slot");
        write_fields(element.slot);
        break;
      default:
        json_.number(element.type);
    }
    if (element.type == Element::RULE || element.type == Element::CONTROL) {
      json_.key("children");
      write(element.children);
    }
    json_.close('}');
  }

  /// Nodes come by the million, and most differ from the one before in their host name alone.
  void write(const std::vector<Node>& nodes) {
    json_.open('[');
    const Node* before = nullptr;
    JsonStream frame = json_.piece();
    std::size_t place = 0;
    for (const Node& node : nodes) {
      if (before == nullptr || node.roles != before->roles ||
          node.subcluster != before->subcluster) {
        place = write_frame(node, frame);
      }
      before = &node;
      std::string& text = json_.element();
      text.append(frame.written(), 0, place);
      JsonStream::append_quoted(text, node.hostname);
      text.append(frame.written(), place);
    }
    json_.close(']');
  }

  /// Writes a node without its host name, and gives the place of that.
  static std::size_t write_frame(const Node& node, JsonStream& frame) {
    frame.clear();
    RecordWriter writer(frame);
    std::size_t place = 0;
    frame.open('{');
    for_each_field(node, [&](const auto& field, const auto& value) {
      frame.key(field.name);
      if (static_cast<const void*>(&value) == &node.hostname) {
        place = frame.element().size();
      } else {
        writer.write(value);
      }
    });
    frame.close('}');
    return place;
  }

  JsonStream& json_;
};

void check_depth(const Tree& tree, const std::string& group) {
  std::vector<std::pair<const FwdNode*, std::size_t>> unfinished{{tree.get(), 1}};
  while (!unfinished.empty()) {
    const auto [node, level] = unfinished.back();
    unfinished.pop_back();
    if (level > MOST_TREE_LEVELS) {
      throw std::runtime_error("The tree of the framework definition " + tree->fwd->path +
                               " in the node group " + group + " has more than " +
                               std::to_string(MOST_TREE_LEVELS) + " levels.");
    }
    for (const auto& members : node->groups) {
      for (const auto& member : members) {
        unfinished.emplace_back(member.get(), level + 1);
      }
    }
  }
}

void check_depth(const std::shared_ptr<ClusterDefinition>& group) {
  if (group != nullptr) {
    for (const Tree& tree : group->fwd_nodes) {
      check_depth(tree, group->name);
    }
  }
}

}  // namespace

void write_record(const Config& config, std::ostream& out) {
  check_depth(config.cluster_definition);
  for (const auto& [name, group] : config.node_groups) {
    check_depth(group);
  }
  JsonStream json(out);
  json.open('{');
  json.key("record_version");
  json.number(RECORD_VERSION);
  RecordWriter(json).write_fields(config);
  json.close('}');
  json.finish();
}

}  // namespace qorn::frontend
