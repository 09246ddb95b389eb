#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include <libxml/tree.h>

#include <qorn/config.h>

namespace qorn::preproc {

/// Turns the framework definitions that a run asks for into the graph of the record. Operations
/// return 0 for success and 1 for failure, having logged the reason at level 3, unless they say
/// otherwise. The paths below are filled by update_defaults before the first document is read.
class FWDParser {
 public:
  /// Loads config.fwds->names with everything that they include, then the postprocessor and
  /// knowledge base documents. With `update` the paths are computed anew first.
  int load_fwds(Config& config, bool update);

  /// Turns an asked-for name into a path: an installed definition, or a file when the name ends
  /// in ".xml" and has more than that. Always 0; `flag` has no effect.
  int process_fwd(const std::string& name, std::string& path, Config& config, bool flag);

  /// Loads one document that was asked for, unless the graph holds it already.
  int recurse_fwd(const std::string& path, Config& config);

  /// Reads the document of `node` and everything below it, depth first, in document order; the
  /// walk keeps its own stack. `flag` has no effect. Lets std::out_of_range through for an empty
  /// include and for a rule file name that expands to nothing.
  int recurse_fwd_impl(std::shared_ptr<FwdNode>& node, Config& config,
                       const std::shared_ptr<FwdNode>& parent, bool flag);

  /// Reads an includes element into one group of nodes, those of the graph where it has them.
  /// Null is allowed. Throws std::out_of_range for an empty include.
  int parse_fwd_groups(Config& config, const xmlNode* includes,
                       std::vector<internal::GroupAttributes<FwdNode>>& groups,
                       int& blocking_count);

  /// Whether `dependency` is reached from itself, or is `current`, by path. Null has no cycle.
  bool check_circ_dependency(Config& config, const std::shared_ptr<FwdNode>& dependency,
                             const std::shared_ptr<FwdNode>& current);

  /// Computes fwd.path and the bare fwd.name from fwd.name as it was written. Throws
  /// std::out_of_range for an empty name.
  int compute_name_and_path(Fwd& fwd);

  /// Fills empty directories and makes fwd.kb_mods absolute. Throws std::out_of_range for a rule
  /// file name that expands to nothing.
  void set_fwd_paths(const Config& config, Fwd& fwd);

  // The elements of a definition; `node` is the element framework_definition.
  int parse_tag_provider(xmlNode* node, Fwd& fwd, Config& config);
  int parse_tag_kb_mods(xmlNode* node, Fwd& fwd, Config& config);
  int parse_tag_analyze_ext(xmlNode* node, Fwd& fwd, xmlDoc* doc, Config& config);
  int parse_tag_postproc_ext(xmlNode* node, Fwd& fwd, xmlDoc* doc, Config& config);
  int parse_tag_mesg_catalogs(xmlNode* node, Fwd& fwd, xmlDoc* doc, Config& config);
  int parse_tag_mesg_schemas(xmlNode* node, Fwd& fwd, xmlDoc* doc, Config& config);
  int parse_tag_description(xmlNode* node, Fwd& fwd);
  int parse_tag_custom_result(xmlNode* node, Fwd& fwd);

  /// Scans a rule file and the files that it loads; see clips_parser::parse_clips_rules.
  int parse_clips_rules(const std::string& file, std::set<Rule>& rules, Config& config,
                        std::string kb_dir);

  void set_default_paths(const std::string& fwd_xsd_path, const std::string& analyzer,
                         const std::string& kb, const std::string& provider,
                         const std::string& provider_aux, const std::string& base);
  void update_defaults(const Config& config);

  /// Prints the list of installed definitions ("list"), or one definition with everything below
  /// it. A definition that doesn't load is reported at level 3.
  void print_fwds_with_rules(std::string option, Config& config);
  void print_fwds_list(const std::string& first_indent, const std::string& second_indent,
                       Config& config);
  void print_fwds_rules(const std::string& name, const std::string& first_indent,
                        const std::string& second_indent, Config& config);
  /// A definition and those below it, once for every way that leads there. Throws
  /// std::runtime_error when that is too much, see FwdNode::create_tree.
  void print_fwd_info_all(const Fwd& fwd, const std::string& first_indent,
                          const std::string& second_indent, Config& config);
  void print_fwd_info(const Fwd& fwd, const std::string& first_indent,
                      const std::string& second_indent, Config& config);

  std::string fwd_xsd;
  std::string analyzer_path;
  std::string kb_path;
  std::string provider_path;
  std::string provider_aux_path;
  std::string fwd_base;

 private:
  struct Load;

  int load_root(const std::string& path, Config& config, Load& load);
  int walk_from(const std::shared_ptr<FwdNode>& node, Config& config,
                const std::shared_ptr<FwdNode>& parent, Load& load);
  bool closes_cycle(const std::shared_ptr<FwdNode>& member, const std::shared_ptr<FwdNode>& current,
                    Config& config, Load& load);
  int read_document(const std::shared_ptr<FwdNode>& node, Config& config, FwdNode::Groups& groups,
                    Load& load);
  int read_includes(Config& config, const xmlNode* includes, FwdNode::Groups& groups,
                    int& blocking_count, Load& load);
  std::shared_ptr<FwdNode> node_of(const std::string& include, Config& config);
  int read_tags(xmlNode* definition, xmlDoc* doc, Fwd& fwd, Config& config);
};

}  // namespace qorn::preproc
