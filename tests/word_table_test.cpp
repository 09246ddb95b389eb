#include <iterator>

#include <gtest/gtest.h>

#include <qorn/constants.h>
#include <qorn/rule_element.h>
#include <qorn/sorting.h>
#include <qorn/templates/data_pt_types.h>

namespace qorn::testing {
namespace {

/// The words of a table as "word=written word", in its order.
template <typename Table>
std::string words_of(const Table& table) {
  std::string text;
  for (const auto& [word, value] : table) {
    auto found = std::begin(table)->value;
    EXPECT_TRUE(look_up(table, word, found)) << word;
    EXPECT_EQ(found, value) << word;
    text.append(text.empty() ? "" : " ").append(word).append("=").append(word_of(table, value));
  }
  return text;
}

TEST(WordTable, OfSeveralWordsOfAValueOneIsWritten) {
  EXPECT_EQ(words_of(ARCHITECTURES), "x86_64=x86_64 X86_64=x86_64 qorn64=x86_64 any=any ANY=any");
  EXPECT_EQ(words_of(CLUSTER_TYPES), "uniform=uniform UNIFORM=uniform any=any ANY=any");
  EXPECT_EQ(words_of(templates::DATA_POINT_TYPES),
            "LONG=LONG DOUBLE=DOUBLE STRING=STRING SYMBOL=SYMBOL MULTI=MULTI "
            "long=LONG double=DOUBLE string=STRING symbol=SYMBOL multi=MULTI");
  EXPECT_EQ(words_of(CONTROL_TYPES), "or=or and=and not=not");
  EXPECT_EQ(words_of(SORT_FIELDS), "id=id node=node severity=severity");
}

TEST(WordTable, WhatIsInNoTableIsNotFoundAndIsWrittenAsItsNumber) {
  auto type = templates::DataPt_TYPES::SYMBOL;
  for (const char* word : {"", "Long", "LONG ", "7"}) {
    EXPECT_FALSE(look_up(templates::DATA_POINT_TYPES, word, type)) << word;
  }
  EXPECT_EQ(type, templates::DataPt_TYPES::SYMBOL);
  auto scale = ScaleType::LINEAR;
  EXPECT_FALSE(look_up(SCALE_TYPES, "Linear", scale));
  EXPECT_EQ(SCALE_TYPES.size(), 4U);
  EXPECT_EQ(word_of(SCALE_TYPES, ScaleType::SQUARED), "squared");
  EXPECT_EQ(word_of(CONTROL_TYPES, CONTROL_TYPE::NONE), "255");
}

}  // namespace
}  // namespace qorn::testing
