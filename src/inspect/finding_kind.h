#pragma once

#include <string_view>

namespace qorn::inspect {

/// What is fixed for a kind of fault. Id and severity are promised to scripts; the manual page and
/// the JSON schema have the sentence.
struct FindingKindRow {
  const char* id;
  const char* severity;  // "error" or "warning"
  const char* sentence;
};

/// All kinds, by id.
inline constexpr FindingKindRow FINDING_KINDS[] = {
    {"command-cut", "error", "A command of more than 256 characters, which a run cuts."},
    {"dead-load", "error", "A load line of a rule file that leads nowhere."},
    {"element-without-effect", "warning", "An element that a run passes over."},
    {"empty-element", "error", "An empty element that ends a run."},
    {"empty-group", "warning", "A node group without nodes, which a run drops."},
    {"group-file", "error", "A node group document, or a node file of it, that can't be used."},
    {"idle-framework", "warning", "A framework definition that collects and judges nothing."},
    {"include-cycle", "error", "Includes that come back to their start."},
    {"malformed", "error", "A document that is not well-formed."},
    {"missing-attribute", "error", "An element without an attribute that it needs."},
    {"missing-element", "error", "An element without a child that it needs."},
    {"missing-file", "error", "A file that is named and missing."},
    {"more-may-follow", "warning", "A document with too many faults to look for all of them."},
    {"no-rule", "warning", "A rule file that holds no rule, with all that it loads."},
    {"node-file", "error", "A node file, or a line of it, that can't be used."},
    {"provider-unusable", "error", "A provider document that a run can't use."},
    {"repeated-framework", "error", "A framework definition that is tied to groups twice."},
    {"repeated-group", "warning", "A node group whose name stood before; the first counts."},
    {"repeated-host", "warning", "A host that stood before in its node file."},
    {"report-not-read", "warning",
     "A report document that is named beside a table document, which alone is read."},
    {"role-without-node", "warning", "A role that a provider asks for and no node has."},
    {"rule-file-unusable", "error", "A rule file that a run can't scan."},
    {"schema", "error", "A schema that can't be used."},
    {"unbound-id", "warning", "An id that is bound to no text, so that none is noted."},
    {"unexpected-attribute", "error", "An attribute that the element doesn't have."},
    {"unexpected-element", "error", "An element that is not expected where it stands."},
    {"unknown-group", "error", "A name that no node group has."},
    {"unknown-id", "warning", "A suppressed message id that nothing gives."},
    {"unknown-kind", "warning", "A document of no kind that an installation has."},
    {"unknown-role", "warning", "A role of a node that is no known one."},
    {"unknown-sign", "warning", "A sign of a diagnosis that no rule file mentions."},
    {"unnamed-provider", "warning", "A provider that no framework definition names."},
    {"unreadable", "error", "A document that can't be read."},
    {"word-without-effect", "warning", "An unknown word, for which a run takes its default."},
    {"wrong-root", "error", "A document with another root element than its kind has."},
    {"wrong-value", "error", "A text or a value of another form than it must have."},
    {"wrong-word", "error", "A word that is none of those that may stand there."}};

/// A kind of fault, by its id. An id that the table doesn't have doesn't compile.
class FindingKind {
 public:
  consteval FindingKind(const char* id) : row_(find(id)) {}

  const FindingKindRow* operator->() const { return row_; }
  bool is_error() const { return std::string_view(row_->severity) == "error"; }

  bool operator==(const FindingKind& other) const = default;
  bool operator<(const FindingKind& other) const { return row_ < other.row_; }

 private:
  static consteval const FindingKindRow* find(std::string_view id) {
    for (const FindingKindRow& row : FINDING_KINDS) {
      if (row.id == id) {
        return &row;
      }
    }
    throw "no such kind";
  }

  const FindingKindRow* row_;
};

}  // namespace qorn::inspect
