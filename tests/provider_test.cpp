#include <cerrno>
#include <limits>

#include <gtest/gtest.h>

#include "test_installation.h"
#include "test_tables.h"

namespace qorn {
namespace {

using preproc::Preprocessor;
using testing::elements;
using testing::joined;
using testing::rows_of;

/// The fields of a provider that differ from those of a document with the command "c" alone.
std::string changes(const provider_config& p) {
  std::ostringstream text;
  const auto field = [&](const char* name, const auto& value, const auto& usual) {
    if (value != usual) {
      text << " " << name << "=" << value;
    }
  };
  field("command", p.command, std::string("c"));
  field("max", p.max_nodes, 1);
  field("min", p.min_nodes, 1);
  field("encoding", static_cast<int>(p.encoding), 0);
  field("timeout", p.timeout, 77);
  field("scale", static_cast<int>(p.timeout_scale), 0);
  field("architecture", static_cast<int>(p.architecture), 2);
  field("cluster", static_cast<int>(p.cluster), 2);
  field("version", p.version, 1);
  field("method", static_cast<int>(p.nodelist_method), 0);
  field("permutations", p.permutations, 1U);
  field("roles", joined(p.roles, ","), joined(NODE_ROLES, ","));
  field("codes", joined(p.success_codes, ","), std::string("0"));
  return str::stripws(text.str());
}

class ProviderTest : public ::testing::Test {
 protected:
  ProviderTest() {
    config.root = installation.path();
    config.config_xsd = installation.path("etc/qorn.xsd");
    config.collector_timeout = 77;
  }

  /// Reads a provider document; its path is "F" in `errors`.
  int read_file(const std::string& path, provider_config& provider,
                int level = log::level::WARNING) {
    int status = 0;
    const auto call = [&] {
      errno = ENOMEM;  // an earlier failure of something else doesn't count
      status = Preprocessor::parse_provider_config_xml(provider, path, config, "/aux");
    };
    errors = str::replace(testing::printed(call, level).errors, path, "F");
    return status;
  }

  int read(const std::string& document, provider_config& provider) {
    return read_file(installation.write("p/probe.xml", document), provider);
  }

  /// Reads each row's document: elements in `before` and `after`, the record's changes, the lines.
  void check(const char* table, const std::string& before, const std::string& after, int status) {
    for (const auto& row : rows_of(table)) {
      SCOPED_TRACE(row[0]);
      provider_config provider;
      const std::string document = std::string(before).append(row[0]).append(after);
      EXPECT_EQ(read(document, provider), status);
      EXPECT_EQ(changes(provider), row[1]);
      EXPECT_EQ(errors, testing::with_words(row[2], document));
      EXPECT_EQ(provider.aux_path, "/aux");
    }
  }

  /// Reads a collector section.
  int collect(const std::string& body, int level = log::level::WARNING) {
    const std::string file = installation.write(
        "c.xml", "<configuration><collector>" + body + "</collector></configuration>");
    int status = 0;
    errors = testing::printed([&] { status = preproc::read_config(config, file); }, level).errors;
    errors = installation.without_root(errors);
    return status;
  }

  testing::Installation installation;
  Config config;
  std::string errors;
};

constexpr const char* ELEMENTS = R"(
<architecture>x86_64</architecture> => architecture=1
<architecture cluster='UNIFORM'>qorn64</architecture> => architecture=1 cluster=1
<architecture cluster='uniform'>ANY</architecture> => cluster=1
<architecture cluster='ANY'>any</architecture>
<architecture cluster='Any'> any</architecture> =>  => Unknown architecture element in 'F'. Using the default instead (Will run on all architectures)\nUnknown cluster attribute in 'F'. Using the default instead (will use a cluster of nodes with any architecture\n
<architecture>qorn64</architecture><architecture>any</architecture> => architecture=1 => Multiple architecture elements found in 'F'. Using the first one.\n
<command>second</command> =>  => Multiple command elements in 'F'. Using first one.\n
<encoding>base64</encoding> => encoding=1
<encoding>raw</encoding><encoding>none</encoding> => encoding=2 => Multiple encoding elements found in 'F'. Using the first one.\n
<encoding>RAW</encoding> =>  => Unknown encoding element in 'F'. Using the default instead.\n
<max_nodes>9</max_nodes><max_nodes>8</max_nodes> => max=9 => Multiple max node elements in 'F'. Using first one.\n
<min_nodes>0</min_nodes><min_nodes>9</min_nodes> => min=0 => Multiple min node elements in 'F'. Using first one.\n
<max_nodes> 3.99 </max_nodes> => max=3
<max_nodes>70000</max_nodes> => max=4464
<max_nodes>-1</max_nodes> => max=65535
<max_nodes>99999999999</max_nodes><min_nodes>-99999999999</min_nodes> => max=65535 min=0
<max_nodes>many</max_nodes><min_nodes/> =>  => The element <max_nodes> in 'F' holds no number: 'many'. Using the default instead.\nThe element <min_nodes> in 'F' holds no number: ''. Using the default instead.\n
<success_codes><entry> 3</entry><entry>-1</entry><entry>+7</entry><entry>3x</entry><entry>4 </entry></success_codes> => codes=-1,0,3,7
<success_codes><entry>x</entry><entry/></success_codes> =>  => Invalid value x for succesfull exit code in F, ignoring\nInvalid value  for succesfull exit code in F, ignoring\n
<success_codes><entry>2147483648</entry><entry>99999999999999999999</entry></success_codes> =>  => Invalid value 2147483648 for succesfull exit code in F, ignoring\nInvalid value 99999999999999999999 for succesfull exit code in F, ignoring\n
<version>2</version><version>3</version> => version=2 => Multiple version elements in 'F'. Using first one.\n
<version>40000</version> => version=-25536
<version>v2</version> =>  => The element <version> in 'F' holds no number: 'v2'. Using the default instead.\n
<role>zz</role><role/><role>head</role> => roles=head,zz
<role/>
<timeout>5</timeout><timeout>6</timeout> => timeout=5 => Multipe timeout value elements in 'F'. Using first one.\n
<timeout scale='squared'>-5.9</timeout> => timeout=-5 scale=2
<timeout scale='Linear'>99999999999999999999</timeout> => timeout=9223372036854775807 => Timeout scaling option 'Linear' did not match known options, using default scaling value\n
<timeout scale='logarithmic'>soon</timeout> => timeout=60 scale=3 => The element <timeout> in 'F' holds no number: 'soon'. Using the default instead.\n
<nodelist method='round_robin' number='4'/><nodelist method='random'/> => method=3 permutations=4 => Multiple nodelist tags in 'F'. Using first one.\n
<nodelist number='ALL' method='rotate_left'/> => method=2 permutations=4294967295
<nodelist method='Random' number='x'/> =>  => Invalid value for method attribute in 'F'. Valid values are: none, rotate_right, rotate_left, round_robin, random\nInvalid number of node list permutations 'x' in F, using 1 instead.\n)";

// Elements stand below any configuration element; exit codes below the root alone.
constexpr const char* PLACES = R"(
<x><y><configuration><command>c</command><role>r</role></configuration></y></x> => roles=r
<x><configuration><command>c</command><a><command>no child</command></a></configuration><configuration><command>d</command><timeout>4</timeout></configuration></x> => timeout=4 => Multiple command elements in 'F'. Using first one.\n
<configuration><a><configuration><command>inner</command></configuration></a><command>d</command></configuration> => command=inner => Multiple command elements in 'F'. Using first one.\n
<x><success_codes><entry>5</entry></success_codes><configuration><command>c</command><success_codes><entry>6</entry></success_codes></configuration></x> => codes=0,5
<configuration><command><![CDATA[a <]]><b> b</b><!-- no --></command></configuration> => command=a < b
<configuration xmlns:n='urn:n'><n:timeout>3</n:timeout><command>c</command></configuration>)";

// What was read before the fault stays in the record.
constexpr const char* FAULTS = R"(
<max_nodes>0</max_nodes> => max=0 => Can not create cluster with a minimum of 1 and maximum of 0 nodes\nError reading provider configuration 'F'\n
<max_nodes>65536</max_nodes><min_nodes>3</min_nodes> => max=0 min=3 => Can not create cluster with a minimum of 3 and maximum of 0 nodes\nError reading provider configuration 'F'\n
<max_nodes>4</max_nodes><min_nodes>2</min_nodes><architecture cluster='any'>x86_64</architecture> => max=4 min=2 => Can not set a specific target architecture for a cluster provider when there are no specific architecture requirements on the cluster nodes\nError reading provider configuration 'F'\n)";

constexpr const char* NO_COMMAND = R"(
<configuration><encoding>raw</encoding></configuration> => command= timeout=60 roles= => Error reading provider configuration 'F'\n
<configuration> => command= timeout=60 roles= => F:1: WORDS\nxml parse error: 'F'\nError reading provider configuration 'F'\n)";

TEST_F(ProviderTest, DocumentsAndTheirLines) {
  check(ELEMENTS, "<configuration><command>c</command>", "</configuration>", 0);
  check(PLACES, "", "", 0);
  check(FAULTS, "<configuration><command>c</command>", "</configuration>", 1);
  check(NO_COMMAND, "", "", 1);
}

TEST_F(ProviderTest, OnlyAFailedAccessGivesItsErrorNumber) {
  provider_config provider;
  EXPECT_EQ(read_file(installation.path("none.xml"), provider, log::level::DEBUG), -ENOENT);
  EXPECT_EQ(errors,
            "provider xml file not readable: 'F'\n"
            "Error reading provider configuration 'F' (2): No such file or directory\n");
  EXPECT_EQ(provider.name + provider.config_file + provider.aux_path, "/aux");
  EXPECT_EQ(read_file(installation.path("nodes/x.xml"), provider), -ENOTDIR);
  EXPECT_EQ(read_file(installation.path("etc"), provider), 1);
}

TEST_F(ProviderTest, TheNameComesFromTheFileAndLongTextsAreCut) {
  const std::string long_name(70, 'n');
  for (const auto& [file, name] : std::map<std::string, std::string>{
           {"abc", ""}, {"abcdef", "ab"}, {long_name + ".xml", long_name.substr(0, 64)}}) {
    const std::string path = installation.write(
        file, "<configuration><command>" + std::string(300, 'x') + "</command></configuration>");
    provider_config provider;
    EXPECT_EQ(read_file(path, provider), 0);
    EXPECT_EQ(provider.name, name);
    EXPECT_EQ(provider.config_file, path);
    EXPECT_EQ(provider.command, std::string(256, 'x'));
  }
}

TEST_F(ProviderTest, ReadingAgainKeepsWhatTheDocumentDoesNotState) {
  const std::string command = "<configuration><command>c</command>";
  provider_config provider;
  read(command +
           "<max_nodes>4</max_nodes><role>head</role><nodelist number='6'/><success_codes>"
           "<entry>1</entry></success_codes></configuration>",
       provider);
  EXPECT_EQ(changes(provider), "max=4 permutations=6 roles=head codes=0,1");
  read(command +
           "<role>boot</role><nodelist number='?'/><success_codes><entry>2</entry>"
           "</success_codes></configuration>",
       provider);
  EXPECT_EQ(changes(provider), "max=4 permutations=6 roles=boot,head codes=0,1,2");
  EXPECT_EQ(errors, "Invalid number of node list permutations '?' in F, using 6 instead.\n");
}

TEST_F(ProviderTest, TheCollectorSectionFillsItsFields) {
  const testing::EnvironmentVariable variable("COLLECT_DIR", "/v");
  const std::string first = R"(
<network_interface>ib0</network_interface><network_interface>x</network_interface>
<provider_auxiliary_path>$COLLECT_DIR/a</provider_auxiliary_path>
<provider_config_dir>$COLLECT_DIR/c</provider_config_dir><async_output_dir>LONG</async_output_dir>
<timeout scale='linear'>30.7</timeout><qorn_collection_timeout>-9</qorn_collection_timeout>)";
  EXPECT_EQ(collect(str::replace(first, "LONG", std::string(5000, 'd'))), 0) << errors;
  EXPECT_EQ(config.collector_network_interface, "ib0");
  EXPECT_STREQ(config.provider_auxiliary_path, "/v/a");
  EXPECT_STREQ(config.provider_config_dir, "/v/c");
  EXPECT_EQ(config.async_output_dir, std::string(4095, 'd'));
  EXPECT_EQ(config.collector_timeout, 30);
  EXPECT_EQ(config.collection_timeout, -9);
  const std::string second =
      "<timeout scale='Squared'>x</timeout>"
      "<qorn_collection_timeout>1e30</qorn_collection_timeout>";
  EXPECT_EQ(collect(second), 0);
  EXPECT_EQ(errors, "The element <timeout> in 'ROOT/c.xml' holds no number: 'x'.\n");
  EXPECT_EQ(config.collector_timeout, 30);
  EXPECT_EQ(config.collector_timeout_scale, ScaleType::LINEAR) << "an unknown scale is no scale";
  EXPECT_EQ(config.collection_timeout, std::numeric_limits<std::int64_t>::max());
  EXPECT_STREQ(config.provider_config_dir, "/v/c");
}

TEST_F(ProviderTest, StandardProvidersAreReadAtOnce) {
  const auto tag = [](const std::string& names) {
    return "<standard_providers>" + elements("provider", names) + "</standard_providers>";
  };
  installation.write("etc/providers/zz.xml", "<configuration><command>z</command></configuration>");
  installation.write("etc/providers/bad.xml", "<configuration/>");
  EXPECT_EQ(collect(tag(""), log::level::DEBUG), 0);
  EXPECT_EQ(errors, "");
  config.providers = {{"", std::make_shared<provider_config>()}};
  const std::string unnamed = "<standard_providers><provider/><provider>probe</provider>";
  EXPECT_EQ(collect(unnamed + "</standard_providers>", log::level::DEBUG), 0);
  EXPECT_EQ(errors, "provider(s): , probe\n");
  config.providers.clear();
  const std::string timeout = "<timeout scale='squared'>8</timeout>";
  EXPECT_EQ(collect(timeout + tag("zz probe zz"), log::level::DEBUG), 0);
  EXPECT_EQ(errors, "provider(s): probe, zz\n");
  const provider_config& zz = *config.providers.at("zz");
  EXPECT_EQ(changes(zz), "command=z timeout=8 scale=2");
  EXPECT_EQ(installation.without_root(zz.config_dir + zz.aux_path),
            "ROOT/etc/providersROOT/provider/share");
  // What can't be accessed stays, half-filled; what fails otherwise ends the reading.
  EXPECT_EQ(collect(tag("none bad later")), 1);
  EXPECT_EQ(config.providers.size(), 3U);
  EXPECT_EQ(config.providers.at("none")->command, "");
}

// What two definitions note, ";" between them, the documents beside etc/providers/NAME.xml that
// exist (those that begin with "!" are bad), and then NAME=definitions of each provider of the run.
constexpr const char* NOTED_NAMES = R"(
site/gpu;site/gpu => site/gpu => gpu=a b
site/gpu site/gpu; => site/gpu => gpu=a
sub/inner;inner => sub/inner inner => inner=b
inner;sub/inner => sub/inner inner => inner=a
sub/inner;inner => sub/inner !inner => inner=a
b/inner;a/inner => a/inner b/inner => inner=a
b/inner;a/inner => a/inner !b/inner => inner=b
gone probe;!none => !none => probe=a)";

TEST_F(ProviderTest, AProviderIsKnownByTheNameThatItsFileGives) {
  for (const auto& row : rows_of(NOTED_NAMES)) {
    SCOPED_TRACE(row[0]);
    const testing::Installation at;
    for (const std::string& file : str::split(row[1], ' ', false)) {
      at.write("etc/providers/" + str::strip(file, "!") + ".xml",
               file[0] == '!' ? "<configuration/>"
                              : "<configuration><command>" + file + "</command></configuration>");
    }
    const std::vector<std::string> noted = str::split(row[0], ';', true);
    at.fwd("a", "<providers>" + elements("provider", noted[0]) + "</providers>");
    at.fwd("b", "<providers>" + elements("provider", noted[1]) + "</providers>");
    testing::RunResult result;
    EXPECT_EQ(at.run({"01", "-f", at.nodes, "-F", "a", "-F", "b"}, result), 0) << result.errors;
    std::vector<std::string> providers;
    for (const auto& [name, provider] : result.config.providers) {
      EXPECT_EQ(provider->name, name);
      std::set<std::string> fwds;
      for (const Fwd* fwd : provider->fwds) {
        fwds.insert(fwd->name);
      }
      providers.push_back(name + "=" + joined(fwds, " "));
    }
    EXPECT_EQ(joined(providers, ";"), row[2]);
  }
}

// Options of the provider "p", its sets as id/timeout/scale and environment (QP_ is
// QORN_PROVIDER_P_), and the lines; a set's own options win over the common ones.
constexpr const char* OPTION_SETS = R"(
text => None/0/0:.
<!-- x --><common> <b> v </b><a><i>w</i></a></common><more><c/></more> => None/0/0:QP_A="w" QP_B="v" QP_C="" .
<common><timeout scale='linear'> 600 </timeout></common> => None/600/1:.
<optionset id='1'><a>own</a></optionset><common><a>c</a><b>c</b></common><optionset id=''><b>x</b><b>y</b></optionset> => 1/0/0:QP_A="own" QP_B="c" .;/0/0:QP_A="c" QP_B="y" .
<common><timeout scale='squared'>9</timeout></common><optionset id='1'><timeout>7</timeout></optionset><optionset id='2'><timeout>1</timeout></optionset> => 1/7/0:.;2/9/2:. => Timeout specification for provider p, with option set 2 is invalid, with the given value of, 1 and will be ignored\n
<optionset><a>x</a></optionset><common><b>y</b></common> => None/0/0:QP_B="y" . => Unable to find ID for optionset. Options will be ignored for provider p\n
<optionset id='1'><a>say "x"</a></optionset><common><a>c</a></common> => 1/0/0:QP_A="c" . => Environment variables intended to be passed to providers should not contain double quotes. The value <say "x"> will be ignored.\n
<optionset id='1'><timeout/><timeout> </timeout><timeout>99999999999999999999</timeout></optionset> => 1/0/0:. => empty timeout tag specified in the provider configuration.\nTimeout specification for provider p, with option set 1 is invalid, with the given value of,  and will be ignored\nTimeout specification for provider p, with option set 1 is invalid, with the given value of, 99999999999999999999 and will be ignored\n
<common><timeout>3s</timeout><timeout>-5</timeout></common> => None/0/0:. => Timeout specification for provider p, with option set  is invalid, with the given value of, 3s and will be ignored\nTimeout specification for provider p, with option set  is invalid, with the given value of, -5 and will be ignored\n
<optionset id='1'><timeout scale='Linear'>+2</timeout></optionset> => 1/2/0:. => Timeout scaling option 'Linear' did not match known options, using default scaling value, for provider pwith option set ,1\n
<common><timeout scale='x'>9</timeout></common> => None/9/0:. => Timeout scaling option 'x' did not match known options, using default scaling value, for provider p\n)";

TEST_F(ProviderTest, OptionSets) {
  for (const auto& row : rows_of(OPTION_SETS)) {
    SCOPED_TRACE(row[0]);
    config.option_flags = 0;
    installation.write("etc/providers/custom.xml",
                       "<configuration><collector><provider> <p>" + row[0] +
                           "</p><q/></provider></collector></configuration>");
    EXPECT_EQ(collect("<standard_providers config_file='custom.xml'/>"), 0);
    EXPECT_EQ(errors, row[2]);
    std::vector<std::string> sets;
    for (const auto& set : preproc::populate_option_vars_map(config, "P")) {
      sets.push_back(set.id + "/" + std::to_string(set.timeout) + "/" +
                     std::to_string(static_cast<int>(set.scale)) + ":" + set.environment + ".");
    }
    EXPECT_EQ(str::replace(joined(sets, ";"), "QORN_PROVIDER_P_", "QP_"), row[1]);
    EXPECT_EQ(config.provider_options.size(), 2U);
  }
  for (const char* unknown : {"", "p", "X"}) {
    EXPECT_TRUE(preproc::populate_option_vars_map(config, unknown).empty());
  }
  EXPECT_EQ(installation.without_root(config.custom_provider_file),
            "ROOT/etc/providers/custom.xml");
  EXPECT_EQ(collect("<standard_providers config_path='/none'/>"), 0) << "nothing is opened";
  EXPECT_EQ(collect("<standard_providers config_file='custom.xml'/>"), 1) << "a second one";
  EXPECT_EQ(errors.find("Only one provider configuration file supported. "), 0U) << errors;
  // Numbers too low are errors, texts that are none are warnings.
  const testing::EnvironmentVariable variable("CUSTOM_DIR", installation.path("x").c_str());
  installation.write("x/custom.xml",
                     "<configuration><collector><provider><p><c><timeout>1</timeout><timeout>x"
                     "</timeout></c></p></provider></collector></configuration>");
  const std::string tag =
      "<standard_providers config_path='$CUSTOM_DIR' config_file='custom.xml'/>";
  config.option_flags = 0;
  EXPECT_EQ(collect(tag, log::level::ERROR), 0);
  EXPECT_NE(errors.find("value of, 1 and"), std::string::npos);
  EXPECT_EQ(errors.find("value of, x and"), std::string::npos);
}

}  // namespace
}  // namespace qorn
