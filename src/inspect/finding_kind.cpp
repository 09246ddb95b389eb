#include "finding_kind.h"

#include <algorithm>
#include <iterator>

namespace qorn::inspect {
namespace {

using enum xml::Fault::Severity;
using enum FindingKind;

constexpr FindingKindRow KINDS[] = {
    {COMMAND_CUT, "command-cut", ERROR, "A command of more than 256 characters, which a run cuts."},
    {DEAD_LOAD, "dead-load", ERROR, "A load line of a rule file that leads nowhere."},
    {ELEMENT_WITHOUT_EFFECT, "element-without-effect", WARNING,
     "An element that a run passes over, where or as it stands."},
    {EMPTY_ELEMENT, "empty-element", ERROR, "An empty element that ends a run."},
    {EMPTY_GROUP, "empty-group", WARNING, "A node group without nodes, which a run drops."},
    {GROUP_FILE, "group-file", ERROR,
     "A node group document that can't be used, or a node file of it."},
    {IDLE_FRAMEWORK, "idle-framework", WARNING,
     "A framework definition with neither provider, rule nor include."},
    {INCLUDE_CYCLE, "include-cycle", ERROR, "Includes that come back to their start."},
    {MALFORMED, "malformed", ERROR, "A document that is not well-formed."},
    {MISSING_ATTRIBUTE, "missing-attribute", ERROR,
     "An element without an attribute that it needs."},
    {MISSING_ELEMENT, "missing-element", ERROR, "An element without a child that it needs."},
    {MISSING_FILE, "missing-file", ERROR, "A file that is named and missing."},
    {MORE_MAY_FOLLOW, "more-may-follow", WARNING,
     "A document with so many faults that not all of them were looked for."},
    {NO_RULE, "no-rule", WARNING, "A rule file that, with all that it loads, holds no rule."},
    {NODE_FILE, "node-file", ERROR, "A node file, or a line of it, that can't be used."},
    {PROVIDER_UNUSABLE, "provider-unusable", ERROR, "A provider document that a run can't use."},
    {REPEATED_FRAMEWORK, "repeated-framework", ERROR,
     "A framework definition that a node group document ties a second time."},
    {REPEATED_GROUP, "repeated-group", WARNING,
     "A node group whose name stood before; the first counts."},
    {REPEATED_HOST, "repeated-host", WARNING, "A host that stood before in its node file."},
    {ROLE_WITHOUT_NODE, "role-without-node", WARNING,
     "A role that a provider document asks for and no node has."},
    {RULE_FILE_UNUSABLE, "rule-file-unusable", ERROR, "A rule file that a run can't scan."},
    {SCHEMA, "schema", ERROR, "A schema that can't be used."},
    {UNBOUND_ID, "unbound-id", WARNING, "An id that is bound to no text, so that none is noted."},
    {UNEXPECTED_ATTRIBUTE, "unexpected-attribute", ERROR,
     "An attribute that the element doesn't have."},
    {UNEXPECTED_ELEMENT, "unexpected-element", ERROR,
     "An element that is not expected where it stands."},
    {UNKNOWN_GROUP, "unknown-group", ERROR, "A name that no node group has."},
    {UNKNOWN_ID, "unknown-id", WARNING, "A suppressed message id that nothing gives."},
    {UNKNOWN_KIND, "unknown-kind", WARNING, "A document of no kind that an installation has."},
    {UNKNOWN_ROLE, "unknown-role", WARNING,
     "A role word of a node file that no provider document asks for either."},
    {UNKNOWN_SIGN, "unknown-sign", WARNING, "A sign of a diagnosis that no rule file mentions."},
    {UNNAMED_PROVIDER, "unnamed-provider", WARNING,
     "A provider document that no framework definition names."},
    {UNREADABLE, "unreadable", ERROR, "A document that can't be read."},
    {WORD_WITHOUT_EFFECT, "word-without-effect", WARNING,
     "An unknown word, for which a run takes its default."},
    {WRONG_ROOT, "wrong-root", ERROR, "A document with another root element than its kind has."},
    {WRONG_VALUE, "wrong-value", ERROR, "A text or a value of another form than it must have."},
    {WRONG_WORD, "wrong-word", ERROR, "A word that is none of those that may stand there."}};

}  // namespace

std::span<const FindingKindRow> finding_kinds() {
  return KINDS;
}

const FindingKindRow& row_of(FindingKind kind) {
  return *std::find_if(std::begin(KINDS), std::end(KINDS),
                       [&](const FindingKindRow& row) { return row.kind == kind; });
}

const char* severity_word(FindingKind kind) {
  return row_of(kind).severity == ERROR ? "error" : "warning";
}

}  // namespace qorn::inspect
