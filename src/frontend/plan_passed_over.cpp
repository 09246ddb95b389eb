#include "plan_passed_over.h"

#include <algorithm>
#include <map>

#include "plan_layout.h"

namespace qorn::frontend {
namespace {

using Note = RunNotes::PassedOver;

/// What was passed over, and why, without who named it.
std::string fact_of(const Note& note) {
  switch (note.kind) {
    case Note::Kind::PROVIDER:
      return concat({"provider ", note.what, ": no usable document ", note.path});
    case Note::Kind::SILENT_RULES:
      return concat({"rule file ", note.what, ": no rule"});
    case Note::Kind::RULE_FILES:
      return concat({"rule file ", note.what, ": can't be read"});
    case Note::Kind::REPORT:
      return concat({"report ", note.what, ": not read, since a table document is named as well"});
  }
  return note.what;
}

std::string namer_of(const Note& note) {
  if (note.kind != Note::Kind::RULE_FILES) {
    return note.named_by;
  }
  std::string text = concat({note.named_by, ", ", to_string(note.place)});
  if (!note.together.empty()) {
    text.append("; because of it not scanned: ").append(joined(note.together, ", "));
  }
  return text;
}

}  // namespace

std::vector<std::string> passed_over(const RunNotes& notes) {
  std::vector<std::string> facts;
  std::map<std::string, std::vector<std::string>> namers;
  for (const Note& note : notes.passed_over) {
    const std::string fact = fact_of(note);
    const auto [entry, is_new] = namers.try_emplace(fact);
    if (is_new) {
      facts.push_back(fact);
    }
    if (!note.named_by.empty()) {
      entry->second.push_back(namer_of(note));
    }
  }
  for (std::string& fact : facts) {
    const std::vector<std::string>& by = namers.at(fact);
    fact.append(by.empty() ? "" : concat({" (named by ", joined(by, ", "), ")"}));
  }
  if (const std::size_t more = notes.dropped.passed_over; more > 0) {
    facts.push_back("and up to " + std::to_string(more) + " more");
  }
  return facts;
}

}  // namespace qorn::frontend
