#include "record_json.h"

#include <regex>
#include <sstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "example_record.h"
#include "record_fields.h"
#include "test_installation.h"
#include "test_tables.h"

namespace qorn::frontend {
namespace {

using Json = nlohmann::ordered_json;
using Words = std::vector<std::string>;

std::string text_of(const Config& config) {
  std::ostringstream out;
  write_record(config, out);
  return out.str();
}

/// The names of the members that the record's header declares for a struct, in its order.
Words declared_members(const std::string& name) {
  std::string text = testing::read_file(QORN_SOURCES "/common/include/qorn/config.h");
  text.erase(0, text.find("struct " + name + " {\n") + name.size() + 9);
  text.erase(text.find("\n};"));
  text = std::regex_replace(text, std::regex("//[^\n]*"), "");
  Words members;
  for (std::string& declaration : str::split(text, ';', false)) {
    declaration = str::stripws(declaration);
    if (!declaration.empty() && !declaration.starts_with("static ")) {
      declaration = str::stripws(declaration.substr(0, declaration.find_first_of("=[{")));
      EXPECT_EQ(declaration.find(',', declaration.rfind('>') + 1), std::string::npos)
          << "one member for each declaration: " << declaration;
      members.push_back(declaration.substr(declaration.find_last_of(" >") + 1));
    }
  }
  return members;
}

Words keys_of(const Json& object) {
  Words keys;
  for (const auto& item : object.items()) {
    keys.push_back(item.key());
  }
  return keys;
}

TEST(RecordJson, HoldsEveryMemberOfTheRecordInDeclaredOrder) {
  const Json record = Json::parse(text_of(example::Record()));
  Words expected = declared_members("Config");
  expected.insert(expected.begin(), "record_version");
  EXPECT_EQ(testing::joined(keys_of(record)), testing::joined(expected));
  EXPECT_EQ(testing::joined(keys_of(record["common_options"])),
            testing::joined(declared_members("CommonOptions")));
}

TEST(RecordFields, NameTheMemberThatTheyShowAndAreDocumented) {
  const std::string manual = testing::read_file(QORN_DOCS "/record.md");
  const Config config;
  const void* before = nullptr;
  for_each_field(config, [&](const auto& field, const auto& value) {
    EXPECT_LT(before, &value) << field.name << " is another member";
    before = &value;
    EXPECT_NE(manual.find("`" + std::string(field.name) + "`"), std::string::npos) << field.name;
  });
}

TEST(RecordJson, WritesEachKindOfValueInItsForm) {
  const std::pair<const char*, const char*> cases[] = {
      {"/sort_fields", R"([{"ascending": true, "field": "node"}])"},
      {"/suppressions", R"([{"confidence": 5, "id": "id", "node_id": "node1", "severity": 4}])"},
      {"/message_categories", R"({"a": "CPU", "b": "SYSTEM"})"},
      {"/fwds/roots", R"(["/q/etc/fwd/base.xml"])"},
      {"/fwds/by_path/~1q~1etc~1fwd~1cpu.xml", R"({
          "kb_mods": ["/q/kb/rules/cpu.clp", "/q/kb/rules/gone.clp"], "rules": [{
            "name": "cpu-count", "file": "/q/kb/rules/cpu.clp", "description": "Counts\nthem."}],
          "provider_path": "", "provider_aux_path": "", "kb_path": "", "description": "",
          "name": "cpu", "postproc_extensions": [], "analyzer_extensions": [{"name": "ext"}],
          "message_catalogs": [], "custom_result": "", "path": "/q/etc/fwd/cpu.xml",
          "provider_groups": [{"attributes": {"a": "", "b": ""}, "members": ["lscpu"]},
                              {"attributes": {"a": "", "b": ""}, "members": ["lost"]}],
          "state": 2, "node": {"blocking_count": 0, "visited": true, "groups": [{
              "attributes": {"passing_constraint": "0"}, "members": ["/q/etc/fwd/sensors.xml"]}],
            "parents": ["/q/etc/fwd/base.xml"]}})"},
      {"/providers/imb", R"({"name": "imb", "config_file": "/q/etc/providers/imb.xml",
          "config_dir": "", "aux_path": "", "command": "mpirun imb", "max_nodes": 16,
          "min_nodes": 2, "encoding": "none", "timeout": 60, "architecture": "any",
          "cluster": "any", "timeout_scale": "linear", "version": 1, "nodelist_method": "none",
          "permutations": 1, "roles": ["compute", "head"], "success_codes": [0],
          "fwds": ["/q/etc/fwd/memory.xml"]})"},
      {"/providers/lscpu/fwds", R"(["/q/etc/fwd/cpu.xml", "/q/etc/fwd/sensors.xml"])"},
      {"/datastores", R"([{"type": 0, "name": "DATA", "extension_name": "sqlite",
          "extension_text": "", "parameters": "read_only=true|source=\"~/x.db\""}])"},
      {"/cluster_definition", "null"},
      {"/node_groups/All-except-nodegroup-gpu", R"({"name": "All-except-nodegroup-gpu",
          "fwd_nodes": [{"path": "/q/etc/fwd/base.xml", "members": [
              {"path": "/q/etc/fwd/cpu.xml",
               "members": [{"path": "/q/etc/fwd/sensors.xml", "members": []}]},
              {"path": "/q/etc/fwd/memory.xml",
               "members": [{"path": "/q/etc/fwd/sensors.xml", "members": []}]}]},
            {"path": "/q/etc/fwd/cpu.xml",
             "members": [{"path": "/q/etc/fwd/sensors.xml", "members": []}]}],
          "implicit": true, "excluded_groups": ["gpu"],
          "removed_fwds": {"/q/etc/fwd/base.xml": ["/q/etc/fwd/cpu.xml"]},
          "nodes": ["node1", "node2"]})"},
      {"/postproc_tables", R"({"summary": [["node", "msg-1"], ["value", "msg-2"]]})"},
      {"/postproc_reports/r/variants", R"([{"columns": ["a", "c"], "message_id": "m",
          "constraints": [["alpha", ["1", "", ""]]]}])"},
      {"/solutions/kernel", R"({"name": "kernel",
          "expected": {"expected-release": {"arch": [["x86_64", "6.1"]]}}})"},
      {"/type_map", R"({"count": "LONG"})"},
      {"/nodes/2", R"({"subcluster": "old", "hostname": "hä\"�", "roles": ["compute", "head"]})"},
      {"/config_params", R"([{"group": "checks", "name": "qorn-checks", "values": ["1", "2"]}])"},
      {"/async_output_dir", R"("/")"},
      {"/collector_timeout_scale", R"("logarithmic")"},
      {"/provider_options/IMB", R"([{"scale": "constant", "timeout": 600, "id": "small",
          "variables": {"SIZE": "4", "timeout": "600"}}])"},
      {"/rule_elements", R"([{"type": "rule", "class_name": "CPU", "msg_id": "slow",
          "analysis_extension": "", "severity": 8, "list": false, "nodes": ["node1"],
          "children": [{"type": "control", "control": "not", "children": [
            {"type": "slot", "name": "speed", "value_constraint": "ge",
             "multislot_constraint": "", "value": "2000"}]}]}])"}};
  const Json record = Json::parse(text_of(example::Record()));
  for (const auto& [place, json] : cases) {
    EXPECT_EQ(record.at(Json::json_pointer(place)).dump(2), Json::parse(json).dump(2)) << place;
  }
}

TEST(RecordJson, IsLaidOutAsIfWrittenInOnePiece) {
  example::Record config;
  for (int i = 0; i < 3000; ++i) {  // several pieces
    example::add_node(config, i % 7 == 0 ? "a\\b" : "", "n" + std::to_string(i),
                      std::vector<std::string>(static_cast<std::size_t>(i % 3), "r\n"));
  }
  const std::string text = text_of(config);
  EXPECT_EQ(text, Json::parse(text).dump(2) + "\n");
}

TEST(RecordJson, RefusesATreeDeeperThanItsLimitAheadOfAnyOutput) {
  example::Record config;
  const std::shared_ptr<FwdNode> bottom = example::add_fwd(config, "bottom", {});
  std::shared_ptr<FwdNode> top = bottom;
  for (std::size_t level = 1; level < MOST_TREE_LEVELS; ++level) {
    top = example::add_fwd(config, "f" + std::to_string(level), {top});
  }
  config.node_groups.begin()->second->fwd_nodes.insert(top);
  EXPECT_EQ(text_of(config).size(), Json::parse(text_of(config)).dump(2).size() + 1);

  bottom->groups.push_back({{}, {example::add_fwd(config, "deeper", {})}});
  std::ostringstream out;
  EXPECT_EQ(testing::what_is_thrown([&] { write_record(config, out); }),
            "The tree of the framework definition /q/etc/fwd/f499.xml in the node group "
            "All-except-nodegroup-gpu has more than 500 levels.");
  EXPECT_EQ(out.str(), "");
}

}  // namespace
}  // namespace qorn::frontend
