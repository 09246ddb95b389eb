#include <filesystem>

#include <gtest/gtest.h>

#include "test_installation.h"

namespace qorn {
namespace {

using Arguments = std::vector<std::string>;

const std::string DASHES = std::string(80, '-') + "\n";

class FwdListingTest : public ::testing::Test {
 protected:
  /// What a run prints, with another name for the installation's root.
  std::string output_of(const Arguments& arguments, int status = 2) {
    testing::RunResult result;
    EXPECT_EQ(installation.run(arguments, result, testing::Cause::NOT_KNOWN_YET), status)
        << result.errors;
    errors = installation.without_root(result.errors);
    return installation.without_root(result.output);
  }

  void write_diamond() const {
    const std::string d = "<includes><include>fwd/d.xml</include></includes>";
    installation.fwd("a",
                     "<includes><include>fwd/b.xml</include><include>fwd/c.xml</include></includes>"
                     "<providers><provider>q</provider><provider>probe</provider></providers>");
    installation.fwd("b", d);
    installation.fwd("c", d);
    installation.fwd("d", "<fwd_desc>What all have.</fwd_desc>");
  }

  testing::Installation installation;
  std::string errors;
};

/// The part of one definition.
std::string part(const std::string& name, const std::string& description) {
  return DASHES + "Framework definition name: " + name +
         "\nFramework definition path: ROOT/etc/fwd/" + name +
         ".xml\nRule Path: ROOT/kb/rules/\nProvider Path: ROOT/etc/providers\n\nDescription:\n" +
         description + "\n";
}

std::string included(const std::string& names) {
  return "\nIncludes the following framework definitions:\n"
         "---------------------------------------------\n\n" +
         names;
}

TEST_F(FwdListingTest, ADiamondIsShownOnceForEveryWay) {
  write_diamond();
  const std::string expected =
      DASHES + "Framework Definition Dependencies\n" + DASHES +
      "`- a\n   |- b\n   |  `- d\n   `- c\n      `- d\n" + part("a", "") +
      "\nIncludes the following providers:\n---------------------------------\n\n  q\n  probe\n" +
      included("  b\n  c\n") + part("b", "") + included("  d\n") + part("d", "What all have.") +
      part("c", "") + included("  d\n") + part("d", "What all have.") + DASHES;
  for (const Arguments& arguments : {Arguments{"-X", "a"},
                                     {"01", "-X", "a"},
                                     {"10", "--FWD_description", "a"},
                                     {"-X", installation.path("etc/fwd/a.xml")},
                                     {"01", "-F", "base", "-X", "a"}}) {
    EXPECT_EQ(output_of(arguments), expected) << arguments[0] << arguments[1];
  }
}

TEST_F(FwdListingTest, TextsAreWrappedToTheTerminal) {
  const testing::EnvironmentVariable columns("COLUMNS", "40");
  installation.write("k/r.clp",
                     "(defrule zz\n  \"Nodes of one   subcluster\n"
                     "   have the same number of processors.\"\n");
  installation.write("k/s.clp", "(defrule aa-silent\n");
  installation.fwd(
      "rules",
      "<fwd_desc>One line that is longer than the terminal.\n  A second one.</fwd_desc>"
      "<kb_path>" +
          installation.path("k") + "</kb_path><kb_mods><mod>r.clp</mod><mod>s.clp</mod></kb_mods>");
  EXPECT_EQ(output_of({"-X", "rules"}),
            DASHES + "Framework Definition Dependencies\n" + DASHES + "`- rules\n" +
                "----------------------------------------\n"
                "Framework definition name: rules\n"
                "Framework definition path:\nROOT/etc/fwd/rules.xml\n"
                "Rule Path:\nROOT/k/rules/\n"
                "Provider Path:\nROOT/etc/providers\n\n"
                "Description:\nOne line that is longer than the\nterminal.\nA second one.\n\n"
                "Includes the following rules:\n-----------------------------\n\n"
                "  aa-silent\n"
                "  zz\n     Nodes of one subcluster have the\n     same number of processors.\n" +
                DASHES);
}

TEST_F(FwdListingTest, ControlCharactersDoNotReachTheTerminal) {
  installation.write("kb/r.clp", "(defrule a\x1b[2J \"b\x07\"\n");
  installation.fwd("bytes",
                   "<fwd_desc>c&#127;\nd&#155;2J</fwd_desc><providers><provider>p&#127;</provider>"
                   "</providers><kb_mods><mod>r.clp</mod></kb_mods>");
  const std::string listing = output_of({"-X", "bytes"});
  for (const char* text : {"c\\x7f\nd\\xc2\\x9b2J\n", "  a\\x1b[2J\n", "  p\\x7f\n"}) {
    EXPECT_NE(listing.find(text), std::string::npos) << listing;
  }
}

TEST_F(FwdListingTest, TheListHoldsInstalledFilesByBareName) {
  for (const char* name : {"etc/fwd/notes.old.txt", "etc/fwd/plain", "etc/fwd/folder.xml/inner"}) {
    installation.write(name, "");
  }
  const std::string header = util::EngineHelper::format_header() +
                             "Framework definition file path: ROOT/etc/fwd/\n\n"
                             "Framework definition list: \n";
  for (const Arguments& arguments :
       {Arguments{"-X", "list"}, {"01", "-X", "list"}, {"10", "-X", "list"}}) {
    EXPECT_EQ(output_of(arguments), header + "  base\n  notes.old\n  plain\n");
  }
  std::filesystem::remove_all(installation.path("etc/fwd"));
  EXPECT_EQ(output_of({"-X", "list"}), "");
  EXPECT_EQ(errors,
            "Printing list of framework definitions failed, exception filesystem error: directory "
            "iterator cannot open directory: No such file or directory [ROOT/etc/fwd/] thrown.\n");
  std::filesystem::create_directory(installation.path("etc/fwd"));
  EXPECT_EQ(output_of({"-X", "list"}), header);
}

TEST_F(FwdListingTest, WhatDoesNotLoadIsReportedWithoutATree) {
  EXPECT_EQ(output_of({"-X", "none"}), "");
  EXPECT_EQ(errors,
            "ROOT/etc/fwd/none.xml: No such file or directory\n"
            "Failed to open and validate framework definition ROOT/etc/fwd/none.xml\n"
            "Please use the -X list option to print list of valid frameworks.\n"
            "Invalid XML File\n");
}

TEST_F(FwdListingTest, AGraphThatExplodesLoadsButIsNotListed) {
  for (int layer = 0; layer < 20; ++layer) {
    std::string below;
    for (int i = 0; i < 5 && layer < 19; ++i) {
      below += "<include>fwd/l" + std::to_string(layer + 1) + std::to_string(i) + ".xml</include>";
    }
    for (int i = 0; i < 5; ++i) {
      installation.fwd(
          "l" + std::to_string(layer) + std::to_string(i),
          "<providers><provider>probe</provider></providers><includes>" + below + "</includes>");
    }
  }
  const std::string words =
      "The framework definition ROOT/etc/fwd/l00.xml unfolds into a tree of more than 1,000,000 "
      "definitions: its includes lead to the same definitions on too many ways.\n";
  EXPECT_EQ(output_of({"-X", "l00"}, 1), DASHES + "Framework Definition Dependencies\n" + DASHES);
  EXPECT_EQ(errors, words);
  output_of({"01", "-f", installation.nodes, "-F", "l00"}, 0);
  const std::string groups = installation.write(
      "groups.xml",
      "<nodegroup_config><nodegroup name='g'><nodes><node>node1</node></nodes></nodegroup>"
      "<fwd name='l00'><nodegroups><group>g</group></nodegroups></fwd></nodegroup_config>");
  output_of({"-f", installation.nodes, "-F", "l00", "-g", groups}, 1);
  EXPECT_EQ(errors, words);
}

}  // namespace
}  // namespace qorn
