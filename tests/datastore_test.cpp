#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include "test_installation.h"

namespace qorn::testing {
namespace {

/// A database with one table.
void make_database(const std::string& file) {
  sqlite3* connection = nullptr;
  ASSERT_EQ(sqlite3_open(file.c_str(), &connection), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(connection, "CREATE TABLE t (x)", nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(connection);
}

TEST(Datastore, ParametersGiveTheirSourceAndWhetherTheyAreOnlyRead) {
  struct Case {
    std::string text;
    std::string path;
    bool read_only;
  };
  const std::vector<Case> cases = {
      {datastore::default_source_parameters(true), "~/.qorn/qorn.db", true},
      {datastore::default_source_parameters(false), "~/.qorn/qorn.db", false},
      {datastore::named_source_parameters("a\\ b", true), "a\\ b", true},
      {"source=\"q\"|read_only=false", "q", false},
      {"source=a|b|read_only=true|read_only=false", "a|b|read_only=true", false},
      {"source=|read_only=true", "", true},
      {"source=a", "a", false},
      {"", "", false}};
  for (const Case& each : cases) {
    std::string path = "earlier";
    bool read_only = !each.read_only;
    datastore::parse_sqlite_params(each.text, path, read_only);
    EXPECT_EQ(path, each.path) << each.text;
    EXPECT_EQ(read_only, each.read_only) << each.text;
  }
}

/// DIR stands for the test's directory.
struct StoreCase {
  const char* command;
  std::string sources;  // of the command line, with commas between them; "-" gives none
  std::string element;  // of the main document
  std::string stores;   // name:extension:parameters of each; "-" where the run fails
  std::string errors;   // the last lines
};

TEST(Datastore, AReadingRunRefusesWhatItCantReadAndAWritingRunMakesItsFile) {
  const std::string failed = "Database failed to initialize.\n";
  const std::string unparsed = "\nCould not parse configuration XML.\n\n";
  const std::string a = "DIR/new/a.db:sqlite:source=DIR/new/a.db|read_only=false ";
  const std::string good = "DIR/good.db:sqlite:source=DIR/good.db|read_only=true ";
  const std::string reading = "DATA:sqlite:read_only=true|source=\"~/.qorn/qorn.db\" ";
  const std::string writing = "DATA:sqlite:read_only=false|source=\"~/.qorn/qorn.db\" ";
  const std::vector<StoreCase> cases = {
      {"01", "DIR/new/a.db,DIR/new/a.db,~/b.db", "",
       a + a + "~/b.db:sqlite:source=~/b.db|read_only=false ", ""},
      {"10", "DIR/good.db", "<datastore name='ignored' source='DIR/text'/>", good, ""},
      {"01", "-", "", writing, ""},
      {"10", "-", "", reading,
       "DIR/home/.qorn/qorn.db: the default database doesn't exist yet; nothing was collected so "
       "far.\n"},
      {"01", "-",
       "<datastore/><datastore name='X' extension='e' source='~/x' read_only='false'/>"
       "<datastore read_only='true'/><datastore source='DIR/good.db' read_only='true'/>",
       writing + "X:e:source=~/x|read_only=false " + reading +
           "DATA:sqlite:source=DIR/good.db|read_only=true ",
       ""},
      {"10", "DIR/absent.db", "", "-", "DIR/absent.db: No such file or directory\n" + failed},
      {"10", "DIR/text", "", "-", "DIR/text: file is not a database\n" + failed},
      {"01", "DIR/text", "", "-", "DIR/text: file is not a database\n" + failed},
      {"10", "DIR", "", "-", "DIR: Is a directory\n" + failed},
      {"01", "DIR/pipe", "", "-", "DIR/pipe: not a regular file\n" + failed},
      {"01", "DIR/text/x.db", "", "-",
       "DIR/text/x.db: the directory can't be created: Not a directory\n" + failed},
      {"10", "$(touch DIR/ran)", "", "-", "No such file or directory\n" + failed},
      {"01", "", "", "-", "Cannot find any data source of type SQlite 'DATA'.\n" + unparsed},
      {"10", "", "", "-", "Cannot find any data sources type for 'DATA'.\n" + unparsed},
      {"10", ",DIR/good.db", "", "-", "The datastore '' names no file.\n" + failed},
      {"10", "-", "<datastore type='oracle'/>", "-", unparsed.substr(1)},
      {"10", "-", "\n<datastore name='X' source='DIR/good.db' read_only='ture'/>",
       "X:sqlite:source=DIR/good.db|read_only=true ",
       "DIR/etc/qorn.xml:2: the datastore 'X' has read_only 'ture', which is neither 'true' nor "
       "'false'. Using the default instead.\n"},
  };
  for (const StoreCase& each : cases) {
    const Installation installation;
    const auto fill = [&](const std::string& text) {
      return str::replace(text, "DIR", installation.path());
    };
    make_database(installation.path("good.db"));
    installation.write("text", std::string(2000, 'x'));
    mkfifo(installation.path("pipe").c_str(), 0600);
    installation.configure("<datastore_extensions>" + fill(each.element) +
                           "</datastore_extensions>");
    const EnvironmentVariable delay("QORN_COLLECT_DATABASE_CLOSE_DELAY", "0");
    std::vector<std::string> arguments{each.command, "-l", "warning",         "-F",
                                       "base",       "-f", installation.nodes};
    if (each.sources != "-") {
      for (const std::string& source : str::split(each.sources, ',', true)) {
        arguments.insert(arguments.end(), {"-D", fill(source)});
      }
    }
    RunResult result;
    EXPECT_EQ(installation.run(arguments, result, Cause::STORE), each.stores == "-" ? 1 : 0)
        << result.errors;
    std::string stores;
    for (const auto& store : result.config.datastores) {
      stores += store.name + ':' + store.extension_name + ':' + store.parameters + ' ';
    }
    EXPECT_EQ(each.stores == "-" ? "-" : stores, fill(each.stores));
    const std::string errors = fill(each.errors);
    ASSERT_LE(errors.size(), result.errors.size());
    EXPECT_EQ(result.errors.substr(result.errors.size() - errors.size()), errors);
    EXPECT_EQ(result.errors.empty(), errors.empty());
    EXPECT_FALSE(installation.has("ran"));
    for (const char* made : {"new/a.db", "home/b.db"}) {
      EXPECT_EQ(installation.has(made), each.sources.find("~/b.db") != std::string::npos) << made;
    }
  }
}

TEST(Datastore, TheDatabasesOfARunAreNamedAsWritten) {
  const Installation installation;
  make_database(installation.path("a b.db"));
  RunResult result;
  ASSERT_EQ(
      installation.run({"10", "-l", "notice", "-F", "base", "-D", "$QORN_ROOT/a b.db"}, result), 0)
      << result.errors;
  EXPECT_EQ(result.config.database_names, std::vector<std::string>{"$QORN_ROOT/a\\ b.db"});
  EXPECT_EQ(result.errors, "Database: $QORN_ROOT/a\\ b.db, at: $QORN_ROOT/a\\ b.db.\n\n");
  const auto& stores = datastore::DataStoreParseUtility::get_datastore_vector();
  ASSERT_EQ(stores.size(), 1U);
  EXPECT_NE(stores[0].extension, nullptr);
  EXPECT_TRUE(stores[0].flags.test(datastore::DataStore::IN_USE));
}

}  // namespace
}  // namespace qorn::testing
