#include "show.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include <nlohmann/json.hpp>

#include <qorn/str.h>

#include "joined.h"
#include "loaded_run.h"
#include "setting_origin.h"

namespace qorn::inspect {
namespace {

using Json = nlohmann::ordered_json;

/// The option sets the variable.
void name_root_option(std::vector<SettingOrigin>& origins) {
  for (SettingOrigin& origin : origins) {
    std::replace(origin.counted.begin(), origin.counted.end(), std::string("environment QORN_ROOT"),
                 std::string("option --root"));
  }
}

std::string text_of(const SettingOrigin& origin) {
  std::string text = joined(origin.counted);
  text = text.empty() ? "default" : text;
  for (const auto& [each, value] : origin.unused) {
    text.append("; not ").append(each).append(": ").append(value);
  }
  return text;
}

Json json_of(const SettingOrigin& origin) {
  Json unused = Json::array();
  for (const auto& [each, value] : origin.unused) {
    unused.push_back({{"origin", each}, {"value", value}});
  }
  return {{"origin", origin.counted.empty() ? std::vector<std::string>{"default"} : origin.counted},
          {"unused", unused}};
}

void print_text(const Settings& settings, const std::vector<SettingOrigin>& origins) {
  for (std::size_t i = 0; i < settings.size(); ++i) {
    std::cout << str::printable(settings[i].first + " = " + settings[i].second);
    if (!origins.empty()) {
      std::cout << "  (" << str::printable(text_of(origins[i])) << ")";
    }
    std::cout << '\n';
  }
}

void print_json(const Settings& settings, const std::vector<SettingOrigin>& origins) {
  Json list = Json::array();
  for (std::size_t i = 0; i < settings.size(); ++i) {
    list.push_back({{"name", settings[i].first}, {"value", settings[i].second}});
    if (!origins.empty()) {
      list.back().update(json_of(origins[i]));
    }
  }
  std::cout << Json{{"settings", list}}.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace

int show_settings(const Question& question) {
  LoadedRun run;
  run.take_command_line(question.run_arguments);
  run.read_main_document();
  const Settings settings = settings_of(run.config);
  std::vector<SettingOrigin> origins;
  if (question.origin) {
    origins = origins_of(settings, question.run_arguments, run.config, run.notes());
    if (!question.roots.empty()) {
      name_root_option(origins);
    }
  }
  if (question.wants_json()) {
    print_json(settings, origins);
  } else {
    print_text(settings, origins);
  }
  return EXIT_SUCCESS;
}

}  // namespace qorn::inspect
