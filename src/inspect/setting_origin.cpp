#include "setting_origin.h"

#include <algorithm>
#include <list>
#include <map>
#include <set>
#include <stdexcept>

#include <qorn/preproc/preprocessor.h>
#include <qorn/written_path.h>
#include <qorn/xml.h>

#include "capture.h"
#include "installation.h"
#include "loaded_run.h"
#include "variable_state.h"

// A run notes where it sets what. What a source would have made, had no stronger one stood above
// it, is found by loading the settings without the stronger ones.

namespace qorn::inspect {
namespace {

using Note = RunNotes::Setting;

constexpr std::string_view ENVIRONMENT = "environment ";

/// The settings of one loading, and by the name of a setting where it was set.
struct Loading {
  Loading(const Settings& settings, std::vector<Note> notes)
      : values(settings.begin(), settings.end()), all(std::move(notes)) {
    for (const Note& note : all) {
      by_name[note.name].push_back(&note);
    }
  }
  Loading(const Loading&) = delete;
  Loading& operator=(const Loading&) = delete;
  ~Loading() = default;

  std::map<std::string, std::string> values;
  std::vector<Note> all;
  std::map<std::string, std::vector<const Note*>> by_name;
};

/// Takes arguments and sections as far as a run would get.
void read_settings(LoadedRun& run, const std::vector<std::string>& arguments, xmlNode* document) {
  try {
    run.take_command_line(arguments);
    auto& parser = run.preprocessor.config_parser;
    if (parser.parse_sections(document, run.config) == 0) {
      parser.load_default_fwds(run.config);
    }
  } catch (const std::logic_error&) {
    return;  // a number that is none
  } catch (const std::runtime_error&) {
    return;  // an argument that is refused, or too much
  }
}

/// Loads the settings that these arguments and this main document make, as far as a run would get,
/// and silently. An empty path stands for an empty document.
void load(const std::vector<std::string>& arguments, const std::string& main_document,
          std::list<Loading>& loadings) {
  const Capture capture;
  std::vector<xml::Fault> ignored;
  const xml::DocumentPtr doc =
      main_document.empty() ? nullptr
                            : xml::read_document(written_path::plain_file(main_document), ignored);
  LoadedRun run;
  read_settings(run, arguments, xml::root_of(doc));
  loadings.emplace_back(settings_of(run.config), run.notes().settings);
}

/// The variables that made a setting, but for the one that tells the installation root.
std::set<std::string> variables_of(const std::vector<Note>& notes) {
  std::set<std::string> names;
  for (const Note& note : notes) {
    if (note.source.starts_with(ENVIRONMENT) && note.name != "root") {
      names.insert(note.source.substr(ENVIRONMENT.size()));
    }
  }
  return names;
}

bool is_same(const Note& a, const Note& b) {
  return a.source == b.source && a.place.file == b.place.file && a.place.line == b.place.line &&
         a.value == b.value;
}

/// The sources of a setting that made its value, and those that didn't.
struct Sources {
  std::vector<const Note*> counted;
  std::vector<const Note*> unused;
};

Sources sources_of(const std::string& setting, const Loading& loading) {
  Sources sources;
  const auto found = loading.by_name.find(setting);
  if (found == loading.by_name.end()) {
    return sources;
  }
  for (const Note* note : found->second) {
    switch (note->effect) {
      case Note::Effect::SETS:
        std::erase_if(sources.counted, [&](const Note* each) { return is_same(*each, *note); });
        sources.unused.insert(sources.unused.end(), sources.counted.begin(), sources.counted.end());
        sources.counted = {note};
        break;
      case Note::Effect::ADDS:
        sources.counted.push_back(note);
        break;
      case Note::Effect::IGNORED:
        sources.unused.push_back(note);
        break;
    }
  }
  return sources;
}

bool holds(const std::vector<const Note*>& notes, const Note& note) {
  return std::any_of(notes.begin(), notes.end(),
                     [&](const Note* each) { return is_same(*each, note); });
}

/// A source without effect, and what it makes of the setting where it has one.
struct UnusedSource {
  const Note* note;
  std::string value;
  bool is_made = false;  // otherwise the value is as it is written
};

std::vector<UnusedSource> unused_sources(const std::string& setting,
                                         const std::list<Loading>& loadings) {
  const Sources real = sources_of(setting, loadings.front());
  std::vector<UnusedSource> unused;
  for (const Note* note : real.unused) {
    unused.push_back({note, note->value});
  }
  for (auto loading = std::next(loadings.begin()); loading != loadings.end(); ++loading) {
    const auto made = loading->values.find(setting);
    for (const Note* note : sources_of(setting, *loading).counted) {
      if (holds(real.counted, *note) || made == loading->values.end()) {
        continue;
      }
      auto known = std::find_if(unused.begin(), unused.end(), [&](const UnusedSource& each) {
        return is_same(*each.note, *note);
      });
      if (known == unused.end()) {
        known = unused.insert(unused.end(), {note, {}});
      }
      if (!known->is_made) {
        known->value = made->second;
        known->is_made = true;
      }
    }
  }
  return unused;
}

std::string words_of(const Note& note, const std::string& root) {
  return note.source.empty() ? to_string(Place{short_path(note.place.file, root), note.place.line})
                             : note.source;
}

SettingOrigin origin_of(const std::string& setting, const std::list<Loading>& loadings,
                        const std::string& root) {
  SettingOrigin origin;
  for (const Note* note : sources_of(setting, loadings.front()).counted) {
    const std::string words = words_of(*note, root);
    if (origin.counted.empty() || origin.counted.back() != words) {
      origin.counted.push_back(words);
    }
  }
  for (const UnusedSource& source : unused_sources(setting, loadings)) {
    origin.unused.emplace_back(words_of(*source.note, root), source.value);
  }
  return origin;
}

}  // namespace

std::vector<SettingOrigin> origins_of(const Settings& settings,
                                      const std::vector<std::string>& arguments,
                                      const Config& config, const RunNotes& notes) {
  const std::vector<std::string> stage = stage_word(arguments);
  std::list<Loading> loadings;
  loadings.emplace_back(settings, notes.settings);
  load(stage, config.config_file, loadings);
  {
    const std::set<std::string> variables = variables_of(loadings.back().all);
    std::list<VariableState> unset;
    for (const std::string& name : variables) {
      unset.emplace_back(name.c_str(), nullptr);
    }
    load(stage, config.config_file, loadings);
  }
  load(arguments, "", loadings);
  std::vector<SettingOrigin> origins;
  for (const auto& [name, value] : settings) {
    origins.push_back(origin_of(name, loadings, config.root));
  }
  return origins;
}

}  // namespace qorn::inspect
