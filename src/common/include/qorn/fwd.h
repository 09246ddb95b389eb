#pragma once

#include <bitset>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <qorn/extensions.h>
#include <qorn/provider_config.h>

namespace qorn {

struct Fwd;
struct FwdNode;

/// What the scan of one rule file finds. Two rules of one name are one rule.
struct Rule {
  std::string name;
  std::string file;
  std::string description;

  friend bool operator<(const Rule& a, const Rule& b) { return a.name < b.name; }
};

namespace internal {

/// Members that a document names together, with the attributes of their group.
template <typename T>
struct GroupAttributes {
  using Members = std::vector<std::shared_ptr<T>>;

  std::unordered_map<std::string, std::string> attributes;
  Members members;

  typename Members::iterator begin() { return members.begin(); }
  typename Members::iterator end() { return members.end(); }
  typename Members::const_iterator begin() const { return members.begin(); }
  typename Members::const_iterator end() const { return members.end(); }
};

}  // namespace internal

/// Orders small bit sets by their value.
struct MaskLess {
  bool operator()(const std::bitset<5>& a, const std::bitset<5>& b) const {
    return a.to_ulong() < b.to_ulong();
  }
};

/// One framework definition: what one document says. The fields analyzer_… and mask_values are
/// the analyze engine's and are left at their defaults here.
struct Fwd {
  std::vector<std::string> kb_mods;  // rule files; absolute once the document is read
  std::set<Rule> rules;
  std::string provider_path;      // directory of provider documents
  std::string provider_aux_path;  // directory of the providers' auxiliary files
  std::string kb_path;            // directory of the rule files
  std::string description;
  std::string name;  // bare: no directory, no ".xml"
  std::vector<PostprocessorExtension> postproc_extensions;
  std::set<AnalyzerExtensionType> analyzer_extensions;
  std::vector<MessageCatalog> message_catalogs;
  std::string custom_result;
  std::int32_t analyzer_slot_count = 1;
  std::map<std::bitset<5>, int, MaskLess> mask_values;
  std::string analyzer_text;
  std::string path;  // absolute path of the document: the identity of the definition
  std::vector<internal::GroupAttributes<provider_config>> provider_groups;
  std::uint64_t analyzer_counter = 0;
  std::uint32_t analyzer_word_a = 0;
  std::uint32_t analyzer_word_b = 64;
  std::uint64_t analyzer_word_c = 2;
  std::set<std::string> analyzer_names;
  std::map<int, std::map<std::string, std::set<std::string>>> analyzer_name_map;
  std::int32_t state = 2;
  std::shared_ptr<FwdNode> node;  // the node of the graph that holds this definition
  bool analyzer_flag = false;
};

/// One place of a framework definition in the include graph. A definition that is included from
/// two places is one node with two parents. Every node lives in a std::shared_ptr; nodes and
/// definitions refer to one another with strong references (see FwdRegistry::release).
struct FwdNode : std::enable_shared_from_this<FwdNode> {
  using Groups = std::vector<internal::GroupAttributes<FwdNode>>;
  /// A line of a tree, and for each level on the way to it whether that level has ended.
  using TreeLine = std::pair<std::string, std::vector<bool>>;

  std::int32_t blocking_count = 0;  // nothing raises it
  bool visited = false;             // set before the node's document is read
  std::shared_ptr<Fwd> fwd;
  Groups groups;                                  // one for each includes element
  std::vector<std::shared_ptr<FwdNode>> parents;  // in the order of discovery

  /// Appends copies of `more` behind the present groups; the members are shared.
  void insert(const Groups& more);

  /// The first node with that path, depth first, as a copy of its own: its lists share their
  /// members with the graph, changing the lists changes the copy alone. Null when there is none.
  std::shared_ptr<FwdNode> find(std::string path);

  /// A private tree copy: see clone_impl.
  std::shared_ptr<FwdNode> clone();

  /// A tree copy below `parent` (may be null). All groups of a node become one group without
  /// attributes, a node without members has none, and a node that the graph shares is copied
  /// once for every way that leads to it. Throws std::runtime_error that names the definition
  /// when the trees of one run, outside of one those of one call, would have more than 1,000,000
  /// nodes.
  std::shared_ptr<FwdNode> clone_impl(std::shared_ptr<FwdNode> parent);

  /// The lines of the tree below this node, the node's own first, for qorn::str::format_tree.
  /// `levels` are those on the way here, `last` says whether this is its parent's last member.
  /// Throws std::runtime_error like clone_impl, and when the lines have more than 50,000,000
  /// levels together, as a chain of 10,000 definitions has.
  std::vector<TreeLine> create_tree(std::vector<bool> levels, bool last);
};

/// Takes the references between the nodes reachable from `node` apart, so that a tree that
/// nobody holds any more is freed.
void release_tree(const std::shared_ptr<const FwdNode>& node);

/// The framework definitions of a run.
class FwdRegistry {
 public:
  std::map<std::string, std::shared_ptr<Fwd>> by_path;  // one definition for each absolute path
  std::vector<std::string> names;                       // asked for, in that order
  std::vector<std::shared_ptr<FwdNode>> roots;          // the nodes of those asked for
  /// Nodes without a blocking dependency, each behind everything that it includes.
  std::vector<std::shared_ptr<FwdNode>> ready_nodes;

  /// Takes the cycles of the graph apart, so that it is freed with its last owner. Nodes lose
  /// their groups and parents, definitions their node; everything else stays. For the end of a
  /// program that wants its memory back; a run never calls it.
  void release();
};

}  // namespace qorn
