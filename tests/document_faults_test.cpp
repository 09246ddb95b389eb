#include <chrono>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "test_installation.h"
#include "test_tables.h"

namespace qorn::testing {
namespace {

using Texts = std::vector<std::string>;

enum class Content { VALIDATED, PARSED, RULES, NODES };

/// One kind of document: where it is, what makes a run read it, and what follows the reason.
struct Kind {
  const char* file;       // below the installation
  std::string base;       // body of the framework definition
  std::string arguments;  // FILE is its path
  std::string behind;     // the caller's own lines
  int status = 1;
  Content content = Content::VALIDATED;
};

void PrintTo(const Kind& kind, std::ostream* out) {
  *out << kind.file;
}

const std::string PROBE = "<providers><provider>probe</provider></providers>";
const std::string ANALYZE = "10 -F base";
const std::string BOTH = "-F base -D x.db -f ";
const std::string VALIDATE = "Could not validate the xml file:FILE\n";
const std::string OPEN = "Failed to open and validate ";
const std::string MAIN = VALIDATE + "Could not parse configuration XML.\n\n";
const std::string FWDS = "Could not load framework definitions.\n\n";
const std::string SCHEMA = VALIDATE + "Could not load message category mapping files\n";

const std::vector<Kind> KINDS = {
    {"etc/qorn.xml", "", "10", MAIN},
    {"etc/other.xml", "", "10 -c FILE", MAIN},
    {"etc/fwd/base.xml", "", ANALYZE,
     OPEN + "framework definition FILE\n" +
         "Please use the -X list option to print list of valid frameworks.\n" + FWDS},
    {"etc/providers/own.xml", "<providers config_file='own.xml'/>", ANALYZE,
     "Could not validate the xml file\n:FILE\n"
     "Failed to parse provider tag in framework definition\n" +
         FWDS},
    {"etc/CLIPS_type_map.xml", PROBE, ANALYZE, VALIDATE + "Could not parse CLIPS type map.\n\n"},
    {"kb/data/msg_schema.xml", PROBE, ANALYZE, SCHEMA},
    {"kb/data/m.xml", PROBE + "<message_schemas><entry>m.xml</entry></message_schemas>", ANALYZE,
     SCHEMA},
    {"etc/postprocessor/table.xml", PROBE, ANALYZE, OPEN + "xml FILE\n" + FWDS},
    {"etc/postprocessor/r.xml", PROBE + "<postproc_extensions config_file='r.xml'/>", ANALYZE,
     OPEN + "xml FILE\n" + FWDS},
    {"etc/kb/kb.xml", PROBE + "<kb_mods config_file='kb.xml'/>", ANALYZE,
     OPEN + "xml FILE\n" + FWDS},
    {"groups.xml", PROBE, BOTH + "nodes -g FILE", OPEN + "group file FILE\n\n"},
    {"rules.xml", PROBE, "generate_rules FILE", VALIDATE},
    {"etc/providers/p.xml",
     "<providers><provider>p</provider><provider>probe</provider></providers>", ANALYZE,
     "xml parse error: 'FILE'\nError reading provider configuration 'FILE'\n", 0, Content::PARSED},
    {"kb/rules/x.clp", PROBE + "<kb_mods><mod>rules/x.clp</mod></kb_mods>", ANALYZE,
     "Exception closing file FILE\n", 0, Content::RULES},
    {"kb/rules/diagnosis.clp", PROBE, BOTH + "nodes", "Error closing file FILE\n", 0,
     Content::RULES},
    {"listed", PROBE, BOTH + "FILE", "", 1, Content::NODES},
};

struct Fault {
  std::string name;
  std::string content;
  std::string reason;
};

const std::vector<Fault> FAULTS = {
    {"missing", "", "FILE: No such file or directory\n"},
    {"unreadable", "<a/>", "FILE: Permission denied\n"},
    {"directory", "", "FILE: Is a directory\n"},
    {"pipe", "", "FILE: not a regular file\n"},
    {"empty", "", "FILE: the document is empty\n"},
    {"blank", "\n \n", "FILE:3: WORDS\n"},
    {"malformed", "<a>\n<b>\n</a>\n</b>", "FILE:3: WORDS\nFILE:4: WORDS\n"},
    {"schema", "\n<bogus/>", "FILE:2: WORDS\n"},
    {"entity", "<!DOCTYPE a [\n<!ENTITY e 'x'>]>\n<a b='&e;'/>",
     "FILE:2: the document declares an entity, which no document may do\n"},
};

void put(const std::string& path, const Fault& fault) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::filesystem::remove(path);
  if (fault.name == "directory") {
    std::filesystem::create_directory(path);
  } else if (fault.name == "pipe") {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  } else if (fault.name != "missing") {
    std::ofstream(path) << fault.content;
    ASSERT_EQ(chmod(path.c_str(), fault.name == "unreadable" ? 0 : 0600), 0);
  }
}

bool applies(const Kind& kind, const Fault& fault) {
  if (fault.name == "unreadable" && geteuid() == 0) {
    return false;  // root reads everything
  }
  switch (kind.content) {
    case Content::VALIDATED:
      return true;
    case Content::PARSED:
      return fault.name != "schema";
    case Content::RULES:
      return fault.name == "missing" || fault.name == "directory" || fault.name == "pipe";
    default:  // a pipe is as good as a file
      return fault.name == "missing" || fault.name == "directory";
  }
}

std::string expected_errors(const Kind& kind, const Fault& fault) {
  const bool inaccessible = fault.name == "missing" || fault.name == "unreadable";
  if (kind.content == Content::RULES) {
    return inaccessible ? "" : kind.behind;  // what can't be opened is passed over
  }
  if (kind.content == Content::PARSED && inaccessible) {
    return fault.name == "missing"
               ? "Error reading provider configuration 'FILE' (2): No such file or directory\n"
               : "Error reading provider configuration 'FILE' (13): Permission denied\n";
  }
  return with_words(fault.reason, fault.content) + kind.behind;
}

class DocumentFaults : public ::testing::TestWithParam<Kind> {};

/// The check looks at the files that there are: it doesn't miss one that a run reads unasked.
Cause cause_of(const Kind& kind, const Fault& fault) {
  const std::string file = kind.file;
  const std::string name = fault.name;
  if (file == "etc/other.xml" || file == "rules.xml") {
    return Cause::ARGUMENT;
  }
  return name == "missing" || name == "directory" || name == "pipe" ? Cause::NOT_KNOWN_YET
                                                                    : Cause::DOCUMENTS;
}

TEST_P(DocumentFaults, TheReasonStandsOnceThenTheSystemsOwnLines) {
  const Kind& kind = GetParam();
  for (const Fault& fault : FAULTS) {
    if (!applies(kind, fault)) {
      continue;
    }
    SCOPED_TRACE(fault.name);
    const Installation installation;
    const std::string file = installation.path(kind.file);
    installation.fwd("base", kind.base);
    put(file, fault);
    Texts arguments = str::split(kind.arguments, ' ', false);
    for (std::string& argument : arguments) {
      argument = argument == "FILE"                          ? file
                 : argument == "nodes" || argument == "x.db" ? installation.path(argument)
                                                             : argument;
    }
    RunResult result;
    EXPECT_EQ(installation.run(arguments, result, cause_of(kind, fault)), kind.status);
    EXPECT_EQ(str::replace(result.errors, file, "FILE"), expected_errors(kind, fault));
  }
}

INSTANTIATE_TEST_SUITE_P(All, DocumentFaults, ::testing::ValuesIn(KINDS), [](const auto& kind) {
  std::string name = kind.param.file;
  for (char& c : name) {
    c = std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
  }
  return name;
});

/// The one line that a hostile main document ends in, and how long that took.
std::string refusal(const Installation& installation) {
  RunResult result;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(installation.run({"10", "-F", "base"}, result), 1);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
  const std::size_t end = result.errors.find("Could not validate the xml file:");
  return str::replace(result.errors.substr(0, end), installation.path("etc/qorn.xml"), "");
}

std::string many_namespaces(const std::string& prefix) {
  std::string text;
  for (int i = 0; i < 200; ++i) {
    text.append("xmlns:").append(prefix).append(std::to_string(i)).append("='u' ");
  }
  return text;
}

TEST(HostileXml, EndsInItsReasonAtOnce) {
  const std::string entity = ": the document declares an entity, which no document may do\n";
  const std::string too_long = ":1: a text is longer than the limit of 10,000,000 bytes\n";
  const auto text = [](std::size_t bytes) { return std::string(bytes, 'x'); };
  const std::string open = "<configuration><analyzer><log_level>";
  const std::string close = "</log_level></analyzer></configuration>";
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"<!DOCTYPE a [<!ENTITY a 'x'>]><a/>", ":1" + entity},
      {"<!DOCTYPE a [\n\n<!ENTITY % p SYSTEM 'file:///etc/passwd'>\n%p;]><a/>", ":3" + entity},
      {"<!DOCTYPE a [<!ENTITY x SYSTEM 'file:///etc/passwd'>]><a>&x;</a>", ":1" + entity},
      {"<!DOCTYPE a [<!NOTATION n SYSTEM 'n'>\n<!ENTITY x SYSTEM 'y' NDATA n>]><a/>",
       ":2" + entity},
      {"<!DOCTYPE a [<!ENTITY a '&b;'><!ENTITY b '&a;'>]><configuration c='&a;'/>", ":1" + entity},
      {"<!DOCTYPE a SYSTEM 'http://localhost:1/x.dtd'>\n<configuration>&e;</configuration>",
       ":2: WORDS\n:2: an entity without a declaration can't be validated\n"},
      {repeated("<a>", 257) + repeated("</a>", 257),
       ":1: elements are nested deeper than the limit of 256 levels\n"},
      {repeated("<a>", 256) + repeated("</a>", 256), ":1: WORDS\n"},
      {open + text(20'000'000) + close, too_long},
      // The parser cut such a text and went on.
      {open + text(9'000'000) + "&amp;" + text(9'000'000) + close, too_long},
      {"<configuration a='" + text(20'000'000) + "'/>",
       ":1: a name, a value or a comment is longer than the parser's limit\n"},
      {std::string("\x1f\x8b\x08\0\0\0\0\0", 8), ":1: WORDS\n"},
      {"<configuration xmlns:xi='http://www.w3.org/2001/XInclude'>\n<xi:include href='x'/>"
       "</configuration>",
       ":2: WORDS\n"},
      {"<a>\n<a " + repeated("a='' ", 257) + "/></a>",
       ":2: an element has more than 256 attributes\n"},
      {"<!-- a <b\n" + repeated("=", 2000) + "\n-->\n<b/>",  // which has none
       ":4: WORDS\n"},
      {"<a " + many_namespaces("a") + ">\n<a " + many_namespaces("b") + "/></a>",
       ":2: more than 256 namespaces are in force\n"},
      {"<a>\n<a " + many_namespaces("a") + "/><a " + many_namespaces("b") + "/></a>",
       ":1: WORDS\n"},
      {"<configuration xmlns:a='x y'/>\n<a/>",
       ":1: WORDS\n:2: Extra content at the end of the document\n"},
      {std::string("<configuration/>\n\0<a/>", 22), ":2: a NUL byte is no character\n"},
  };
  for (const auto& [document, words] : cases) {
    const std::string reason = with_words(words, document);
    const Installation installation;
    installation.write("etc/qorn.xml", document);
    EXPECT_EQ(refusal(installation).substr(0, reason.size()), reason) << document.substr(0, 60);
  }
}

TEST(HostileXml, OtherFilesThanRegularOnesAndLargeOnesAreNotRead) {
  const Installation installation;
  const std::string file = installation.path("etc/qorn.xml");
  std::filesystem::resize_file(file, 100'000'001);  // sparse
  EXPECT_EQ(refusal(installation), ": the file is larger than 100 MB\n");
  std::filesystem::remove(file);
  std::filesystem::create_symlink("/dev/zero", file);
  EXPECT_EQ(refusal(installation), ": not a regular file\n");
}

TEST(HostileXml, PartsOfASchemaAreReadLikeDocuments) {
  const Installation installation;
  installation.write("etc/entity.xsd", "<!DOCTYPE a [\n<!ENTITY e 'x'>]><a/>");
  installation.write("etc/nul.xsd", std::string("<a>\n\0</a>", 9));
  installation.write("etc/packed.xsd", "\x1f\x8b\x08");
  ASSERT_EQ(mkfifo(installation.path("etc/pipe.xsd").c_str(), 0600), 0);
  const Texts parts = {"entity.xsd:2: the document declares an entity, which no document may do",
                       "nul.xsd:2: a NUL byte is no character",
                       with_words("packed.xsd:1: WORDS", "\x1f\x8b\x08"),
                       "pipe.xsd: not a regular file", "missing.xsd: No such file or directory"};
  for (const std::string& part : parts) {
    installation.write("etc/qorn.xsd",
                       "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:include "
                       "schemaLocation='" +
                           part.substr(0, part.find(':')) +
                           "'/><xs:element name='configuration'/></xs:schema>");
    const std::string errors = refusal(installation);
    EXPECT_NE(errors.find(installation.path("etc/") + part + "\n"), std::string::npos) << errors;
  }
  // Without what it imports, other than without what it includes, a schema can be used.
  const std::string xsd = installation.write(
      "etc/import.xsd",
      "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:import namespace='u' "
      "schemaLocation='missing.xsd'/><xs:element name='a'/></xs:schema>");
  std::vector<xml::Fault> faults;
  EXPECT_NE(xml::read_valid_document(installation.write("a.xml", "<a/>"), xsd, faults), nullptr);
  EXPECT_EQ(xml::to_string(faults.at(0)),
            installation.path("etc/missing.xsd") + ": No such file or directory");
}

TEST(ReadOptions, BlanksGetNoNodesWhereTheCallerSaysSo) {
  const TemporaryDirectory directory;
  const std::string file = directory.write("a.xml", "<a> <b> <c/>\n<c> </c> x </b> </a>");
  const auto text_of = [&](const xml::ReadOptions& options) {
    std::vector<xml::Fault> faults;
    return xml::content_of(xml::root_of(xml::read_document(file, faults, options)));
  };
  EXPECT_EQ(text_of({}), "  \n  x  ");
  EXPECT_EQ(text_of({[](const xmlNode& node) { return xml::name_of(&node) == "b"; }}), "   x  ");
}

}  // namespace
}  // namespace qorn::testing
