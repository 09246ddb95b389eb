#include "show.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <memory>

#include <getopt.h>
#include <libxml/tree.h>
#include <nlohmann/json.hpp>

#include <qorn/preproc/options.h>
#include <qorn/str.h>
#include <qorn/xml.h>

#include "document.h"
#include "run_loader.h"
#include "settings.h"
#include "variable_state.h"

// Where a setting comes from is found out by trying: each option alone, each variable alone, and
// the main document with one element's text replaced. What changes by it, it sets. No setting has
// a line of its own here.

namespace qorn::inspect {
namespace {

using Json = nlohmann::ordered_json;
using Words = std::vector<std::string>;
using Values = std::map<std::string, std::string>;

constexpr const char* ROOT_VARIABLE = "QORN_ROOT";
constexpr const char* VARIABLES[] = {"QORN_CONFIG_XSD", "QORN_TURN_OFF_ENV_PROPAGATION",
                                     "QORN_COLLECT_DATABASE_CLOSE_DELAY"};
/// Texts that every setting of the main document takes as another value than at least one of
/// the others.
constexpr const char* PROBES[] = {"on", "debug", "7"};

/// One option, variable or element, and the value of each setting that it makes by itself.
struct Source {
  std::string origin;
  Values values;
};

/// All sources of one kind: what they make together, and each.
struct Level {
  Values values;
  std::vector<Source> sources;
};

/// The settings that these words and this main document make, whatever the document says: a
/// section that a run would refuse leaves its settings alone. Null stands for an empty document.
Values values_of(Words words, xmlNode* main) {
  const Capture capture;
  Config config;
  preproc::Preprocessor preprocessor;
  preproc::Preprocessor::set_defaults_in_config(config);
  preprocessor.update_paths(config);
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);
  preprocessor.ProcessCommand(static_cast<int>(words.size()), argv.data(), config);
  preprocessor.set_config_xsd(config);
  preprocessor.set_env_prop_on_off(config);
  auto& parser = preprocessor.config_parser;
  parser.parse_tag_postproc(main, config);
  parser.parse_tag_fwd(main, config);
  parser.parse_tag_log(main, config);
  parser.parse_tag_nodegroup(main, config);
  try {
    parser.parse_tag_config(main, config);
  } catch (const std::exception&) {
    config.data_age_threshold = 0;  // a probe that is no number
  }
  parser.parse_tag_db(main, config);
  parser.configure_tag_db(config);
  parser.parse_tag_collect(main, config);
  parser.parse_tag_recollect(main, config);
  parser.parse_tag_env_prop(main, config);
  parser.load_default_fwds(config);
  const Settings settings = settings_of(config);
  return Values(settings.begin(), settings.end());
}

/// What stands in `values` and not, or otherwise, in `other`.
Values changed(const Values& values, const Values& other) {
  Values result;
  for (const auto& [name, value] : values) {
    const auto found = other.find(name);
    if (found == other.end() || found->second != value) {
      result.emplace(name, value);
    }
  }
  return result;
}

/// An option of a command line, as it was typed.
struct TypedOption {
  std::string name;
  Words words;
};

std::vector<TypedOption> options_of(const Words& words) {
  const preproc::Options options;
  std::vector<std::string> texts = words;
  std::vector<char*> argv;
  argv.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    argv.push_back(text.data());
  }
  argv.push_back(nullptr);
  std::vector<TypedOption> typed;
  int row = -1;
  optind = 0;
  for (int letter = 0; (letter = getopt_long(static_cast<int>(texts.size()), argv.data(),
                                             options.short_options.c_str(),
                                             preproc::Options::longopts, &row)) != -1;
       row = -1) {
    TypedOption option;
    option.name = row >= 0 ? std::string("--") + preproc::Options::longopts[row].name
                           : std::string("-") + static_cast<char>(letter);
    option.words.push_back(option.name);
    if (optarg != nullptr) {
      option.words.emplace_back(optarg);
    }
    typed.push_back(std::move(option));
  }
  return typed;
}

Level command_line_level(const Words& words, const Words& stage, const Values& baseline) {
  Level level{values_of(words, nullptr), {}};
  if (stage.size() > 1) {
    const std::string word = stage[1] == "01" ? "collect" : "analyze";
    level.sources.push_back(
        {"command line " + word, {{"operations", level.values.at("operations")}}});
  }
  for (const TypedOption& option : options_of(words)) {
    Words alone = stage;
    alone.insert(alone.end(), option.words.begin(), option.words.end());
    level.sources.push_back(
        {"command line " + option.name, changed(values_of(alone, nullptr), baseline)});
  }
  return level;
}

Level environment_level(const Words& stage, const Values& baseline, const Values& values) {
  Level level{values, {}};
  for (const char* name : VARIABLES) {
    const char* value = std::getenv(name);
    if (value == nullptr) {
      continue;
    }
    const std::string text = value;
    const VariableState others[] = {
        {VARIABLES[0], nullptr}, {VARIABLES[1], nullptr}, {VARIABLES[2], nullptr}};
    Values made;
    {
      const VariableState alone(name, text.c_str());
      made = values_of(stage, nullptr);
    }
    // As with the main document, a value that equals the default shows by another one.
    Values changes = changed(made, baseline);
    for (const char* probe : {"true", "7"}) {
      const VariableState other(name, probe);
      changes.merge(changed(made, values_of(stage, nullptr)));
    }
    level.sources.push_back({std::string("environment ") + name, std::move(changes)});
  }
  return level;
}

struct NodeDeleter {
  void operator()(xmlNode* node) const { xmlFreeNode(node); }
};
using NodePtr = std::unique_ptr<xmlNode, NodeDeleter>;

/// What the main document makes when `other` stands in the place of `element`.
Values values_with(xmlNode* element, const NodePtr& other, xmlNode* main, const Words& stage) {
  xmlReplaceNode(element, other.get());
  Values values = values_of(stage, main);
  xmlReplaceNode(other.get(), element);
  return values;
}

/// The settings that `element` makes: those that change without it, or with another text in it.
Values settings_of_element(xmlNode* element, xmlNode* main, const Words& stage,
                           const Values& whole) {
  const NodePtr nothing(
      xmlNewDocComment(element->doc, reinterpret_cast<const xmlChar*>("nothing")));
  Values made = changed(whole, values_with(element, nothing, main, stage));
  for (const char* probe : PROBES) {
    const NodePtr other(xmlDocCopyNode(element, element->doc, 1));
    xmlNodeSetContent(other.get(), reinterpret_cast<const xmlChar*>(probe));
    made.merge(changed(whole, values_with(element, other, main, stage)));
  }
  return made;
}

void add_leaves(xmlNode* element, std::vector<xmlNode*>& leaves) {
  for (xmlNode* child : xml::Elements(element)) {
    add_leaves(child, leaves);
  }
  if (xml::get_num_element_children(element) == 0) {
    leaves.push_back(element);
  }
}

Level document_level(const Config& config, const Words& stage) {
  std::vector<xml::Fault> faults;
  const xml::DocumentPtr doc = xml::read_document(config.config_file, faults);
  xmlNode* main = xml::root_of(doc);
  Level level{values_of(stage, main), {}};
  std::vector<xmlNode*> leaves;
  add_leaves(main, leaves);
  for (xmlNode* leaf : leaves) {
    Place place = Place::of(leaf);
    place.file = short_path(place.file, config.root);
    level.sources.push_back(
        {to_string(place), settings_of_element(leaf, main, stage, level.values)});
  }
  return level;
}

/// For what no source makes alone: the options without which the run has another value, then the
/// root that paths hang on.
std::vector<Source> joint_sources(const Words& words, const Words& stage, const Config& config,
                                  const Values& baseline, const std::string& root_origin) {
  std::vector<xml::Fault> faults;
  const xml::DocumentPtr doc = xml::read_document(config.config_file, faults);
  const std::vector<TypedOption> options = options_of(words);
  const Values whole = values_of(words, xml::root_of(doc));
  std::vector<Source> sources;
  for (const TypedOption& left_out : options) {
    Words rest = stage;
    for (const TypedOption& option : options) {
      if (&option != &left_out) {
        rest.insert(rest.end(), option.words.begin(), option.words.end());
      }
    }
    sources.push_back(
        {"command line " + left_out.name, changed(whole, values_of(rest, xml::root_of(doc)))});
  }
  if (std::getenv(ROOT_VARIABLE) != nullptr) {
    const VariableState unset(ROOT_VARIABLE, nullptr);
    sources.push_back({root_origin, changed(baseline, values_of(stage, nullptr))});
  }
  return sources;
}

/// Everything that may make a setting.
struct Sources {
  std::vector<Level> levels;  // the strongest first
  std::vector<Source> joint;
};

struct Origin {
  Words counted;
  std::vector<std::pair<std::string, std::string>> unused;  // origin and value
};

/// A level counts for a setting when it makes the value in force and none above it does; when
/// no level makes it alone, all of them do together.
Origin origin_of(const std::string& name, const std::string& value, const Sources& sources) {
  Origin origin;
  std::vector<std::pair<std::string, std::string>> all;
  for (const Level& level : sources.levels) {
    const auto made = level.values.find(name);
    const bool counts =
        origin.counted.empty() && made != level.values.end() && made->second == value;
    const auto makes_all = [&](const Source& source) {
      const auto alone = source.values.find(name);
      return alone != source.values.end() && alone->second == value;
    };
    const bool one_makes_all = std::any_of(level.sources.begin(), level.sources.end(), makes_all);
    for (const Source& source : level.sources) {
      const auto alone = source.values.find(name);
      if (alone == source.values.end()) {
        continue;
      }
      all.emplace_back(source.origin, alone->second);
      if (counts && (!one_makes_all || makes_all(source))) {
        origin.counted.push_back(source.origin);
      } else {
        origin.unused.push_back(all.back());
      }
    }
  }
  if (origin.counted.empty()) {
    for (const auto& [each, text] : all) {
      origin.counted.push_back(each);
    }
    origin.unused.clear();
  }
  for (const Source& source : sources.joint) {
    if (origin.counted.empty() && source.values.count(name) != 0) {
      origin.counted.push_back(source.origin);
    }
  }
  origin.counted.erase(std::unique(origin.counted.begin(), origin.counted.end()),
                       origin.counted.end());
  return origin;
}

Sources sources_of(const Words& words, const Config& config, const std::string& root_origin) {
  const Words stage(
      words.begin(),
      words.begin() + (words.size() > 1 && (words[1] == "01" || words[1] == "10") ? 2 : 1));
  const Values with_variables = values_of(stage, nullptr);
  Sources sources{std::vector<Level>(3), {}};
  Values baseline;
  {
    const VariableState unset[] = {
        {VARIABLES[0], nullptr}, {VARIABLES[1], nullptr}, {VARIABLES[2], nullptr}};
    baseline = values_of(stage, nullptr);
    sources.levels[0] = command_line_level(words, stage, baseline);
    sources.levels[2] = document_level(config, stage);
    sources.joint = joint_sources(words, stage, config, baseline, root_origin);
  }
  sources.levels[1] = environment_level(stage, baseline, with_variables);
  return sources;
}

std::string text_of(const Origin& origin) {
  std::string text;
  for (const std::string& each : origin.counted) {
    text.append(text.empty() ? "" : ", ").append(each);
  }
  text = text.empty() ? "default" : text;
  for (const auto& [each, value] : origin.unused) {
    text.append("; not ").append(each).append(": ").append(value);
  }
  return text;
}

Json json_of(const Origin& origin) {
  Json unused = Json::array();
  for (const auto& [each, value] : origin.unused) {
    unused.push_back({{"origin", each}, {"value", value}});
  }
  return {{"origin", origin.counted.empty() ? Words{"default"} : origin.counted},
          {"unused", unused}};
}

}  // namespace

void show_settings(const Words& arguments, bool origins, bool json,
                   const std::string& root_origin) {
  LoadedRun run;
  run.read_arguments(arguments);
  run.read_main_document();
  const Settings settings = settings_of(run.config);
  Sources sources;
  if (origins) {
    sources = sources_of(command_line_of(arguments), run.config, root_origin);
  }
  Json list = Json::array();
  for (const auto& [name, value] : settings) {
    const Origin origin = origin_of(name, value, sources);
    if (json) {
      Json setting = {{"name", name}, {"value", value}};
      if (origins) {
        setting.update(json_of(origin));
      }
      list.push_back(setting);
      continue;
    }
    std::cout << str::printable(name + " = " + value);
    if (origins) {
      std::cout << "  (" << str::printable(text_of(origin)) << ")";
    }
    std::cout << '\n';
  }
  if (json) {
    std::cout << Json{{"settings", list}}.dump(2, ' ', false, Json::error_handler_t::replace)
              << '\n';
  }
}

}  // namespace qorn::inspect
