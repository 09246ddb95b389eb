#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <qorn/document_kind.h>
#include <qorn/place.h>

namespace qorn {

/// A file that a document names.
struct Reference {
  DocumentKind kind = DocumentKind::UNKNOWN;
  std::string name;  // as it is written
  std::string path;  // absolute, except for what a run takes from its working directory
  Place place;
};

/// What a run noticed beyond its messages. Lists are in the order in which it came about.
struct RunNotes {
  /// Something that was named and that the run does without.
  struct PassedOver {
    enum class Kind : int {
      PROVIDER,      // the document of the provider `what` can't be used
      SILENT_RULES,  // the rule file `what`, with all that it loads, holds no rule
      RULE_FILES,    // the rule file `what` can't be read, so that others aren't scanned either
      REPORT         // the report document `what` isn't read beside a table document
    };
    Kind kind = Kind::PROVIDER;
    std::string what;                   // a name, or a path of a file
    std::string path;                   // of a provider's document
    std::string named_by;               // a framework definition, empty where none named it
    Place place;                        // where it is named; no file where that isn't known
    std::vector<std::string> together;  // what else is left out because of it, as it is written
  };

  /// A source of a setting: an option, an environment variable or an element.
  struct Setting {
    enum class Effect : int {
      SETS,    // what an earlier source made of it is gone
      ADDS,    // joins what earlier sources made of it
      IGNORED  // an earlier source counts
    };
    std::string name;    // of the record's field, or config_params.[GROUP/]NAME
    std::string source;  // "command line -f", "environment NAME"; empty for an element
    Place place;         // of an element
    std::string value;   // as it is written
    Effect effect = Effect::SETS;
  };

  std::vector<std::string> opened;  // paths of files that were opened, each time
  std::vector<Reference> named;     // the first time that a path was named, as that kind
  std::vector<PassedOver> passed_over;
  std::vector<Setting> settings;
  /// How many of each list were not kept.
  struct Dropped {
    std::size_t opened = 0;
    std::size_t named = 0;
    std::size_t passed_over = 0;
    std::size_t settings = 0;
  };
  Dropped dropped;
};

}  // namespace qorn
