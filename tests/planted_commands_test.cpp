#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>

#include <qorn/preproc/config.h>

#include "record_json.h"
#include "test_installation.h"

namespace qorn::testing {
namespace {

/// A text that is word-expanded, at the place of WORD.
struct Field {
  enum class Place { FRAMEWORK, MAIN, ARGUMENTS };

  const char* name;
  Place place;
  std::string text;  // body of the document, or arguments
};

// Else the names of the tests end in the bytes of their fields.
void PrintTo(const Field& field, std::ostream* out) {
  *out << field.text;
}

using enum Field::Place;

const std::vector<Field> FIELDS = {
    {"Include", FRAMEWORK, "<includes><include>WORD.xml</include></includes>"},
    {"RuleDirectory", FRAMEWORK, "<kb_path>WORD</kb_path><kb_mods><mod>r.clp</mod></kb_mods>"},
    {"RuleFile", FRAMEWORK, "<kb_mods><mod>WORD/r.clp</mod></kb_mods>"},
    {"KnowledgeBase", FRAMEWORK, "<kb_mods config_file='WORD'/>"},
    {"KnowledgeBaseDirectory", FRAMEWORK, "<kb_mods config_file='x' config_path='WORD/'/>"},
    {"ProviderDirectory", FRAMEWORK, "<provider_path>WORD</provider_path>"},
    {"AuxiliaryDirectory", FRAMEWORK,
     "<provider_auxiliary_path>WORD</provider_auxiliary_path>"
     "<providers><provider>probe</provider></providers>"},
    {"CustomProviders", FRAMEWORK, "<providers config_file='WORD'/>"},
    {"CustomProviderDirectory", FRAMEWORK, "<providers config_file='x' config_path='WORD'/>"},
    {"Tables", FRAMEWORK, "<postproc_extensions config_file='WORD'/>"},
    {"TableDirectory", FRAMEWORK, "<postproc_extensions config_file='x' config_path='WORD'/>"},
    {"MessageSchema", FRAMEWORK, "<message_schemas><entry>WORD</entry></message_schemas>"},
    {"MainTables", MAIN,
     "<postprocessor><postproc_extensions config_file='WORD'/></postprocessor>"},
    {"Datastore", MAIN, "<datastore_extensions><datastore source='WORD'/></datastore_extensions>"},
    {"CollectorAuxiliary", MAIN,
     "<collector><provider_auxiliary_path>WORD</provider_auxiliary_path></collector>"},
    {"CollectorProviders", MAIN,
     "<collector><provider_config_dir>WORD</provider_config_dir></collector>"},
    {"CollectorOutput", MAIN, "<collector><async_output_dir>WORD</async_output_dir></collector>"},
    {"StandardProviders", MAIN, "<collector><standard_providers config_file='WORD'/></collector>"},
    {"FrameworkArgument", ARGUMENTS, "01|-f|nodes|-D|x.db|-F|./WORD.xml"},
    {"ListingArgument", ARGUMENTS, "-X|./WORD.xml"},
    {"DatastoreArgument", ARGUMENTS, "01|-f|nodes|-F|base|-D|WORD.db"},
    {"LogFileArgument", ARGUMENTS, "-f|nodes|-F|base|-D|x.db|-o|WORD.log"},
    {"RulesDocumentArgument", ARGUMENTS, "generate_rules|WORD.xml"},
};

/// Makes a run, and what the front-end and an engine do behind it, with `word` in the field.
/// Gives all that this left behind: messages, the record, files.
std::string all_traces(const Installation& installation, const Field& field,
                       const std::string& word) {
  const std::string text = str::replace(field.text, "WORD", word);
  if (field.place == FRAMEWORK) {
    installation.fwd("base", text);
  } else if (field.place == MAIN) {
    installation.configure(text);
  }
  RunResult result;
  installation.run(str::split(field.place == ARGUMENTS ? text : "01|-f|nodes|-F|base", '|', false),
                   result, field.place == ARGUMENTS ? Cause::ARGUMENT : Cause::NOT_KNOWN_YET);
  std::ostringstream traces;
  traces << result.errors << result.output;
  traces << printed([&] {
              if (field.place == MAIN) {
                preproc::read_config(result.config, result.config.config_file);
              }
              log::OutputLog::set_out_streams(result.config.log_file, std::ios_base::out);
              log::OutputLog::set_out_streams("", std::ios_base::out);
            }).errors;
  frontend::write_record(result.config, traces);
  for (const auto& entry : std::filesystem::directory_iterator(installation.path())) {
    traces << (entry.is_regular_file() ? entry.path().filename().string() : "") << '\n';
  }
  return traces.str();
}

class PlantedCommands : public ::testing::TestWithParam<Field> {
 protected:
  PlantedCommands() { std::filesystem::current_path(installation_.path()); }
  ~PlantedCommands() override { std::filesystem::current_path("/"); }

  Installation installation_;
};

TEST_P(PlantedCommands, AreNotRunThoughTheTextIsExpanded) {
  installation_.write("planted/r.clp", "(defrule r\n");
  for (const char* command :
       {"$(touch ran)", "`touch ran`", "${X:-$(touch ran)}", "~$(touch ran)", "\"$(touch ran)\"",
        "$((`touch ran`))", "x; touch ran", "x&touch ran"}) {
    const std::string word =
        GetParam().place == ARGUMENTS ? command : str::replace(command, "&", "&amp;");
    all_traces(installation_, GetParam(), word);
    EXPECT_FALSE(installation_.has("ran")) << command;
  }
  const EnvironmentVariable variable("PLANTED", "planted");
  EXPECT_NE(all_traces(installation_, GetParam(), "$PLANTED").find("planted"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(All, PlantedCommands, ::testing::ValuesIn(FIELDS),
                         [](const auto& field) { return field.param.name; });

}  // namespace
}  // namespace qorn::testing
