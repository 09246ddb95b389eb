#include <sstream>

#include <gtest/gtest.h>

#include "test_installation.h"
#include "test_tables.h"

namespace qorn::testing {
namespace {

using Texts = std::vector<std::string>;

std::string describe(const std::vector<ConfigParam>& params) {
  std::string text;
  for (const ConfigParam& param : params) {
    text += param.group + '/' + param.name + '=' + joined(param.values) + ';';
  }
  return text;
}

std::string describe(const std::vector<Suppression>& suppressions) {
  std::string text;
  for (const Suppression& each : suppressions) {
    text += each.node_id + '/' + std::to_string(each.severity) + '/' + each.id + '/' +
            std::to_string(each.confidence) + ';';
  }
  return text;
}

class ConfigParserTest : public ::testing::Test {
 protected:
  /// Lets a parser read the document of a row and compares its status and lines with the row's.
  void check(const std::vector<std::string>& row, const std::function<int()>& call) const {
    const Printed text = printed([&] { EXPECT_EQ(std::to_string(call()), row[1]) << row[0]; });
    EXPECT_EQ(installation_.without_root(text.errors), row[2]) << row[0];
  }

  std::string file(const std::string& root, const std::string& body) const {
    return installation_.write("doc.xml", "<" + root + ">" + body + "</" + root + ">");
  }

  const std::string reports_xsd_ = installed("etc/postprocessor/postproc.xsd");
  Installation installation_;
  preproc::ConfigParser parser_;
};

// A document, its status, the lines about it, and the record: log level, group file, framework
// definitions, collect extension (X/ is ROOT/collect/qorn64/), re-collection, environment
// propagation, option flags and postprocessor extensions.
constexpr const char* SECTIONS = R"(
<!-- --> => 0 =>  => |||X/pdsh.so|0|1|0||
<postprocessor><postproc_extensions><entry>a</entry><entry> b </entry></postproc_extensions></postprocessor> => 0 =>  => |||X/pdsh.so|0|1|0|a, b |
<postprocessor><postproc_extensions><entry/></postproc_extensions></postprocessor> => 1 => ROOT/etc/qorn.xml:1: an entry of the element <postproc_extensions> is empty\n => ||||0|1|0||
<plugins><framework_definitions/></plugins> => 0 =>  => |||X/pdsh.so|0|1|0||
<plugins><framework_definitions><framework_definition>b</framework_definition><framework_definition>a</framework_definition></framework_definitions></plugins> => 0 =>  => ||b,a|X/pdsh.so|0|1|1||
<analyzer><log_level/></analyzer> => 0 =>  => |||X/pdsh.so|0|1|0||
<analyzer><log_level>Debug</log_level><node_group_configuration_file>g</node_group_configuration_file></analyzer> => 1 => Invalid value specified for log-level': Debug\n => Debug||||0|1|0||
<analyzer><node_group_configuration_file>g</node_group_configuration_file></analyzer> => 0 =>  => |g||X/pdsh.so|0|1|0||
<collector><extension>foo.so</extension><re-collect>on</re-collect><turn-off-environment-propagation>on</turn-off-environment-propagation></collector> => 0 =>  => |||X/foo.so|1|0|0||
<collector><extension>./foo.so</extension><re-collect>ON</re-collect><turn-off-environment-propagation>On</turn-off-environment-propagation></collector> => 0 =>  => |||./foo.so|0|1|0||
<collector><extension/></collector> => 0 =>  => |||X/|0|1|0||)";

TEST_F(ConfigParserTest, SectionsOfTheMainDocument) {
  for (const auto& row : rows_of(SECTIONS)) {
    Config config;
    config.root = installation_.path();
    config.config_xsd = installed("etc/qorn.xsd");
    config.config_file = installation_.configure(row[0]);
    config.operations = operation::COLLECT;
    check(row, [&] { return parser_.parse_configuration_xml(config); });
    Texts extensions;
    for (const PostprocessorExtension& postprocessor : config.postprocessor_extensions) {
      extensions.push_back(postprocessor.name);
    }
    std::ostringstream out;
    out << config.log_level << '|' << config.node_group_file << '|' << joined(config.fwds->names)
        << '|' << config.collect_extension << '|' << config.re_collect << '|'
        << config.env_propagation << '|' << config.option_flags << '|' << joined(extensions) << '|';
    EXPECT_EQ(str::replace(out.str(), config.root + "/collect/qorn64/", "X/"), row[3]) << row[0];
    EXPECT_EQ(config.common_options.config_parsed, row[1] == "0");
  }
}

TEST_F(ConfigParserTest, AnInvalidLevelOfTheCommandLineCountsOnlyWithAnAnalyzer) {
  for (const bool analyzer : {false, true}) {
    Config config;
    config.log_level = "Loud";
    config.config_file = installation_.configure(analyzer ? "<analyzer/>" : "");
    config.config_xsd = installed("etc/qorn.xsd");
    const Printed text =
        printed([&] { EXPECT_EQ(parser_.parse_configuration_xml(config), analyzer ? 1 : 0); });
    EXPECT_EQ(text.errors, analyzer ? "Invalid value specified for log-level': Loud\n" : "");
  }
}

// An analyzer's elements, the parameters, the age in seconds, and the suppressions, which nobody
// reads without a config element.
constexpr const char* PARAMETERS = R"(
SUPPRESS =>  => 0
SUPPRESS<config/> =>  => 0 => n/75/i/0;/0//0;
<config><a>1</a><empty/><b><!--c-->2</b><d> 3 </d><e><?p?>4</e><f><?p d?></f></config> => /a=1;/b=c;/d= 3 ;/e=;/f=d; => 0
<config><a><entry>1</entry><other>x</other><entry>2</entry></a></config> => /a=1,2; => 0
<config><g><a>1</a><b>2</b></g><h><c>3</c></h></config> => g/a=1;g/b=1,2;h/c=3; => 0
<config><g><a>1</a><l><entry>x</entry></l><e/><b>2</b><m><z/></m></g></config> => g/a=1;g/l=x;g/b=x,2;g/m=; => 0
<config><data-age-threshold> 7 </data-age-threshold></config> => /data-age-threshold=604800; => 604800
<config><data-age-threshold>50000 days</data-age-threshold><g><data-age-threshold><entry>1</entry><entry>2</entry></data-age-threshold></g></config> => /data-age-threshold=25032704;g/data-age-threshold=86400,2; => 86400)";

TEST_F(ConfigParserTest, AnalyzerParametersAndSuppressions) {
  const std::string suppress =
      "<suppressions><suppress><id>i</id><node_id>n</node_id><severity>75x</severity>"
      "<confidence>high</confidence></suppress><suppress/></suppressions>";
  for (const auto& row : rows_of(PARAMETERS)) {
    SCOPED_TRACE(row[0]);
    installation_.configure("<analyzer>" + str::replace(row[0], "SUPPRESS", suppress) +
                            "</analyzer>");
    RunResult result;
    ASSERT_EQ(installation_.run({"10", "-F", "base"}, result), 0) << result.errors;
    EXPECT_EQ(describe(result.config.config_params), row[1] + "/qorn-checks=;");
    EXPECT_EQ(std::to_string(result.config.data_age_threshold), row[2]);
    EXPECT_EQ(describe(result.config.suppressions), row[3]);
  }
}

TEST_F(ConfigParserTest, AnAgeIsConvertedWhereverItCameFromAndMustBeANumber) {
  installation_.configure("<analyzer><config><x>1</x></config></analyzer>");
  RunResult line;
  EXPECT_EQ(installation_.run({"10", "-F", "base", "-t", "2", "-t", "1"}, line), 0);
  EXPECT_EQ(line.config.data_age_threshold, 86400U);
  EXPECT_EQ(describe(line.config.config_params),
            "/data-age-threshold=172800;/data-age-threshold=86400;/x=1;/qorn-checks=;");
  for (const char* text : {"abc", "99999999999999999999"}) {
    installation_.configure(std::string("<analyzer><config><data-age-threshold>") + text +
                            "</data-age-threshold></config></analyzer>");
    RunResult result;
    EXPECT_EQ(installation_.run({"10", "-F", "base"}, result), 1);
    EXPECT_EQ(result.errors, "stoul\n");
  }
}

// 10,000,000 values, which the parameters of one group multiply to.
TEST_F(ConfigParserTest, AGroupsValuesAreBounded) {
  installation_.configure("<analyzer><config>\n<g><l>" + repeated("<entry/>", 100'000) + "</l>\n" +
                          repeated("<p>1</p>", 98) +
                          "\n<q>2</q><r/>\n<s>3</s></g></config></analyzer>");
  RunResult result;
  EXPECT_EQ(installation_.run({"10", "-F", "base"}, result, Cause::NOT_KNOWN_YET), 1);
  EXPECT_EQ(
      installation_.without_root(result.errors),
      "ROOT/etc/qorn.xml:4: the group 'g' brings the values of grouped parameters to more than "
      "10,000,000: each parameter of a group holds the values of those ahead of it.\n");
  EXPECT_EQ(result.config.config_params.size(), 99U);
}

TEST_F(ConfigParserTest, SuppressionsOfACallerAreTheProductOfTheirKeys) {
  using Request = std::map<std::string, Texts>;
  Config config;
  EXPECT_EQ(set_suppressions(config, {}), 1);
  EXPECT_EQ(set_suppressions(config, {Request{{"other", {"x"}}}}), 1);
  EXPECT_EQ(config.suppressions.size(), 0U);
  EXPECT_EQ(set_suppressions(config, {Request{{"nodes", {"a", "b"}},
                                              {"severities", {"warning", "critical"}},
                                              {"message_ids", {"m", "n"}}}}),
            1);
  EXPECT_EQ(describe(config.suppressions),
            "a/25/m/0;b/25/m/0;a/75/m/0;b/75/m/0;a/25/n/0;b/25/n/0;a/75/n/0;b/75/n/0;");
  config.suppressions.clear();
  const Printed text = printed([&] {
    EXPECT_EQ(set_suppressions(config, {Request{{"severities", {"critical", "informational"}}},
                                        Request{{"nodes", {"a"}}, {"severities", {"Warning"}}},
                                        Request{{"nodes", {"c"}}}}),
              0);
  });
  EXPECT_EQ(describe(config.suppressions), "/75//0;/0//0;");
  EXPECT_EQ(text.errors.find("Invalid value specified for severity: Warning\n"), 0U);
  init_api_config(config);
  EXPECT_EQ(config.root, installation_.path());
  EXPECT_EQ(config.config_file, installation_.path("etc/qorn.xml"));
}

// The elements, the status, the lines, and the types of the map (name=type), then of multifields.
constexpr const char* TYPES = R"(
<!-- --> => 0
<entry type='LONG'>l</entry><entry type='string' data_type='MULTI'>s</entry><entry type='MULTI' data_type='double'>m</entry><entry type='SYMBOL'/> => 0 =>  => =3;l=0;m=4;s=2;m:1;
<entry type='MULTI' data_type='LONG'>a</entry><entry type='DOUBLE'>a</entry><entry type='multi' data_type='LONG'>b</entry> => 0 =>  => a=1;b=4;a:0;
<entry type='LONG'>a</entry><entry type='MULTI' data_type='MULTI'>b</entry> => 1 => MULTI is not allowed as a data_type. Allowed values are: LONG/long, DOUBLE/double, STRING/string, SYMBOL/symbol.\n => a=0;
<entry type='MULTI'>b</entry> => 1 => MULTI type has to be associated with a data type. Please define the data_type attribute for: b\n
<entry type='MULTI' data_type=''>b</entry> => 1 =>  => b=4;
<entry type='MULTI' data_type='multi'>b</entry> => 0 =>  => b=4;b:4;
<entry type='Long'>b</entry> => 1
<entry>b</entry> => 1)";

TEST_F(ConfigParserTest, TypeMap) {
  for (const auto& row : rows_of(TYPES)) {
    Config config;
    check(row, [&] {
      return parser_.parse_type_map(config, file("type_map", row[0]),
                                    installed("etc/type_map.xsd"));
    });
    std::string result;
    for (const auto& [name, type] : config.type_map) {
      result += name + '=' + std::to_string(static_cast<int>(type)) + ';';
    }
    for (const auto& [name, type] : config.multi_type_map) {
      result += name + ':' + std::to_string(static_cast<int>(type)) + ';';
    }
    EXPECT_EQ(result, row[3]) << row[0];
  }
}

TEST_F(ConfigParserTest, MessageCategories) {
  Config config;
  config.message_schema_files = {
      file("message_schema",
           "<category><message_id>a</message_id><message_id> b </message_id></category>"
           "<category name=' security '><message_id>c</message_id></category>"
           "<category name='Empty'/><category name='late'><message_id>a</message_id></category>")};
  EXPECT_EQ(parser_.parse_tag_message_schema(config, installed("etc/schema_map.xsd")), 0);
  EXPECT_EQ(config.message_category_names,
            (std::set<std::string>{"EMPTY", "FUNCTIONALITY", "LATE", "SECURITY"}));
  EXPECT_EQ(config.message_categories,
            (std::unordered_map<std::string, std::string>{
                {"a", "LATE"}, {" b ", "FUNCTIONALITY"}, {"c", "SECURITY"}}));
}

TEST_F(ConfigParserTest, KnowledgeBaseConfiguration) {
  Config config;
  const auto read = [&](const Texts& row) {
    config.kb_config_files = {file("kb_config", row[0])};
    check(row, [&] { return parser_.parse_kb_config(config, reports_xsd_); });
  };
  read(
      {"<replaced><a>1</a></replaced><foo><bar kind='x' level='2'>1</bar><bar>2</bar>"
       "<bar kind='y' none=''>3</bar><only none=''>4</only></foo><replaced/>",
       "0", ""});
  using Expected = decltype(Solution::expected);
  const Expected foo = {{"expected-bar",
                         {{"default", {{"default", "2"}}},
                          {"kind", {{"x", "1"}, {"y", "3"}}},
                          {"level", {{"2", "1"}}}}}};
  EXPECT_EQ(config.solutions.at("foo").expected, foo);
  EXPECT_EQ(config.solutions.at("replaced").expected, Expected());
  EXPECT_EQ(config.solutions.at("replaced").name, "replaced");
  read({"<good/><bad><a>1</a><b/></bad>", "1",
        "XML validation failed: <b> tag cannot be empty in:ROOT/doc.xml\n"});
  EXPECT_EQ(config.solutions.count("good"), 1U);
  EXPECT_EQ(config.solutions.count("bad"), 0U);
}

// A document, its status, the lines, and message id, constraints and columns of each variant of the
// report "r". A later document replaces a report of an earlier one, which has the column "first".
constexpr const char* REPORTS = R"(
<r><message_id>m</message_id></r> => 0 =>  => m||;
<r><c/><constraints zeta=' ' alpha='1' none=''><a/></constraints><message_id>m</message_id><constraints><b/><message_id>own</message_id></constraints></r> => 0 =>  => m|alpha=1,zeta= |a,c;own||b,c;
<r><c/><constraints alpha='1'/></r> => 0 =>  => ||c;
<r><c/><constraints><a/><message_id/></constraints></r> => 0 => XML validation failed: <message_id> tag cannot be empty\n => ||c;
<r><c/></r><r><d/></r> => 0 =>  => ||d;
<s/> => 0
<s><message_id/></s> => 1 => XML validation failed: <message_id> tag cannot be empty\n => ||first;)";

TEST_F(ConfigParserTest, Reports) {
  for (const auto& row : rows_of(REPORTS)) {
    Config config;
    config.postproc_config_files = {
        installation_.write("1.xml", "<postproc_reports><r><first/></r></postproc_reports>"),
        file("postproc_reports", row[0])};
    check(row, [&] { return parser_.parse_postproc_reports_config(config, reports_xsd_); });
    std::string result;
    for (const templates::Reports_kb_t& variant : config.postproc_reports["r"].variants) {
      Texts constraints;
      for (const auto& [attribute, value] : variant.constraints) {
        constraints.push_back(attribute + '=' + std::get<0>(value) + std::get<1>(value));
      }
      result +=
          variant.message_id + '|' + joined(constraints) + '|' + joined(variant.columns) + ';';
    }
    EXPECT_EQ(result, row[3]) << row[0];
  }
  templates::Reports_kb_t variant;
  EXPECT_EQ(parse_constraints(nullptr, variant), 1);
  std::vector<xml::Fault> faults;
  const xml::DocumentPtr doc =
      xml::read_document(file("c", "<message_id>good</message_id><message_id/>"), faults);
  printed([&] { EXPECT_EQ(parse_constraints(xml::root_of(doc), variant), 1); });
  EXPECT_EQ(variant.message_id, "good");
}

// A document is tried as a table first; what that says against it counts only when it is no
// report either.
TEST_F(ConfigParserTest, TablesComeBeforeReports) {
  installation_.write(
      "etc/postprocessor/t.xml",
      "<postproc_tables><table id='t'><column name='lost' msg-id='m'/></table><table id='t'>"
      "<column name='n' msg-id='m'/><column name='half'/></table><table><column/></table>"
      "<table id='none'/></postproc_tables>");
  installation_.write("etc/postprocessor/r.xml",
                      "<postproc_reports><r><c/></r></postproc_reports>");
  installation_.write("etc/postprocessor/bad.xml", "<neither/>");
  const std::string bad_table =
      with_words("ROOT/etc/postprocessor/bad.xml:1: WORDS\n", "<neither/>");
  const std::string column =
      "Postprocessor table config parse fail for col namehalf col message-id\n";
  const std::string failed =
      "Failed to open and validate xml ROOT/etc/postprocessor/bad.xml\n"
      "Could not load framework definitions.\n\n";
  struct Case {
    std::string files;
    int status;
    std::size_t tables;
    std::size_t reports;
    std::string errors;
  };
  const std::vector<Case> cases = {{"t.xml", 0, 2, 0, column},
                                   {"r.xml", 0, 0, 1, ""},
                                   {"r.xml t.xml", 0, 2, 0, column},
                                   {"bad.xml t.xml", 0, 2, 0, column + bad_table},
                                   {"r.xml bad.xml", 1, 0, 1, bad_table + failed},
                                   {"bad.xml r.xml", 1, 0, 0, bad_table + failed}};
  for (const Case& each : cases) {
    SCOPED_TRACE(each.files);
    Texts arguments{"10", "-l", "warning", "-F", "base", "-D", installation_.write("x.db", "")};
    for (const std::string& file : str::split(each.files, ' ', false)) {
      installation_.fwd(file, "<postproc_extensions config_file='" + file + "'/>");
      arguments.insert(arguments.end(), {"-F", installation_.path("etc/fwd/" + file + ".xml")});
    }
    RunResult result;
    EXPECT_EQ(installation_.run(arguments, result), each.status);
    EXPECT_EQ(installation_.without_root(result.errors), each.errors);
    EXPECT_EQ(result.config.postproc_tables.size(), each.tables);
    EXPECT_EQ(result.config.postproc_reports.size(), each.reports);
    EXPECT_EQ(result.notes.passed_over.size(), each.files == "r.xml t.xml" ? 1U : 0U);
    for (const auto& note : result.notes.passed_over) {
      EXPECT_EQ(note.kind, RunNotes::PassedOver::Kind::REPORT);
      EXPECT_EQ(note.what, installation_.path("etc/postprocessor/r.xml"));
    }
    if (each.tables > 0) {
      const std::pair<std::string, std::string> only{"n", "m"};
      EXPECT_EQ(result.config.postproc_tables.at("t"), std::vector{only});
    }
  }
}

// Engines take their addresses, and call them with names that they compute.
TEST_F(ConfigParserTest, OperationsHaveOneFormEach) {
  const std::vector readers = {&preproc::ConfigParser::parse_postproc_table_config,
                               &preproc::ConfigParser::parse_postproc_reports_config};
  Config config;
  config.postproc_config_files = {file("postproc_reports", "")};
  EXPECT_EQ((parser_.*readers[1])(config, reports_xsd_), 0);
  std::vector<xml::Fault> faults;
  const xml::DocumentPtr doc =
      xml::read_document(installation_.write("a.xml", "<a b='c'/>"), faults);
  std::string value;
  EXPECT_TRUE(xml::get_attr(xml::root_of(doc), std::string("b"), value));
  const datastore::DataStoreParseUtility utility;
  EXPECT_EQ(utility.parse_db_configs(nullptr, {}).size(), 1U);
}

TEST_F(ConfigParserTest, TheDefaultFrameworkDefinitionIsForRunsThatCollect) {
  for (const std::uint64_t operations : {0U, 1U, 6U, 7U}) {
    Config config;
    config.root = "/r";
    config.operations = operations;
    const bool refused = operations == 6;
    const Printed text =
        printed([&] { EXPECT_EQ(parser_.load_default_fwds(config), refused ? 1 : 0); });
    EXPECT_EQ(joined(config.fwds->names), refused ? "" : "/r/etc/fwd/health_base.xml");
    EXPECT_EQ(text.errors, refused ? "Please use the -F command line option to specify a "
                                     "Framework Definition to analyze.\n"
                                   : "");
    EXPECT_EQ(config.option_flags, 0U);
  }
}

}  // namespace
}  // namespace qorn::testing
