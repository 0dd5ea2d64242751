// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_string.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <thread>

namespace {

TEST(Duplicate, IsACopyThatTheCallerFrees) {
  char text[] = "TEXT";
  char* copy = ut_strdup(text);
  EXPECT_NE(copy, text);
  text[0] = 'X';
  EXPECT_STREQ(copy, "TEXT");
  std::free(copy);
  char* empty = ut_strdup("");
  EXPECT_STREQ(empty, "");
  std::free(empty);
}

TEST(Duplicate, OfNullIsNull) { EXPECT_EQ(ut_strdup(nullptr), nullptr); }

TEST(Text, OfNullIsEmpty) {
  EXPECT_STREQ(ut_text(nullptr), "");
  const char* text = "A";
  EXPECT_EQ(ut_text(text), text);
}

TEST(Format, FormatsAsPrintfDoes) {
  EXPECT_STREQ(neoform("%s %04d %c|%5.2f", "name", 7, 'x', 3.14159), "name 0007 x| 3.14");
  EXPECT_STREQ(neoform("%s", ""), "");
  EXPECT_STREQ(neoform("100%%"), "100%");
}

TEST(Format, TakesResultsOfAnyLength) {
  const std::string text(1000000, 'x');
  EXPECT_EQ(neoform("<%s>", text.c_str()), "<" + text + ">");
  EXPECT_STREQ(neoform("short"), "short");
}

TEST(Format, ResultStaysThroughSevenFurtherCalls) {
  char* results[8];
  for (int i = 0; i < 8; ++i) results[i] = neoform("call %d", i);
  for (int i = 0; i < 8; ++i) EXPECT_EQ(results[i], "call " + std::to_string(i));
}

// Short and long ones lie in different places.
TEST(Format, ResultsOfAllLengthsStayThroughSevenFurtherCalls) {
  for (const std::size_t length : {509U, 510U, 511U, 512U, 513U, 2000U}) {
    char* results[8];
    for (std::size_t i = 0; i < 8; ++i) results[i] = neoform("%s", std::string(i % 2 == 0 ? length : 3, 'x').c_str());
    for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(results[i], std::string(i % 2 == 0 ? length : 3, 'x'));
  }
}

TEST(Format, ResultMayBeAnArgumentOfTheNextCall) {
  char* text = neoform("a");
  for (int i = 0; i < 20; ++i) text = neoform("%sa", text);
  EXPECT_EQ(text, std::string(21, 'a'));
}

TEST(Format, ThreadsHaveResultsOfTheirOwn) {
  char* mine = neoform("mine");
  std::thread([] {
    for (int i = 0; i < 100; ++i) neoform("theirs");
  }).join();
  EXPECT_STREQ(mine, "mine");
}

TEST(Number, IsReadAsADecimalWithWhiteSpaceAndOneSign) {
  EXPECT_EQ(ut_atoi("42"), 42);
  EXPECT_EQ(ut_atoi(" \t\n\v\f\r-17rest"), -17);
  EXPECT_EQ(ut_atoi("+8"), 8);
  EXPECT_EQ(ut_atoi("007"), 7);
  EXPECT_EQ(ut_atoi("3.9"), 3);
}

TEST(Number, WithoutDigitsIsZero) {
  for (const char* text : {"", " ", "-", "+", "+-3", "--3", "x9", "- 3"}) EXPECT_EQ(ut_atoi(text), 0) << text;
}

TEST(Number, BeyondTheRangeIsTheNearestBound) {
  EXPECT_EQ(ut_atoi("2147483647"), INT32_MAX);
  EXPECT_EQ(ut_atoi("2147483648"), INT32_MAX);
  EXPECT_EQ(ut_atoi("-2147483648"), INT32_MIN);
  EXPECT_EQ(ut_atoi("-2147483649"), INT32_MIN);
  EXPECT_EQ(ut_atoi("4294967296"), INT32_MAX);
  EXPECT_EQ(ut_atoi(std::string(90, '9').c_str()), INT32_MAX);
  EXPECT_EQ(ut_atoi(("-" + std::string(90, '9')).c_str()), INT32_MIN);
  EXPECT_EQ(ut_atoi((std::string(90, '0') + "5").c_str()), 5);
}

TEST(TextObject, FindsTheFirstOccurrenceFromAPosition) {
  const UT_STROBJ text("abcabc");
  EXPECT_EQ(text.find(UT_STROBJ("bc"), 0), 1);
  EXPECT_EQ(text.find(UT_STROBJ("bc"), 1), 1);
  EXPECT_EQ(text.find(UT_STROBJ("bc"), 2), 4);
  EXPECT_EQ(text.find(UT_STROBJ("bc"), 5), -1);
  EXPECT_EQ(text.find(UT_STROBJ("abcabcd"), 0), -1);
}

TEST(TextObject, FindsNothingOutsideTheText) {
  const UT_STROBJ text("abc");
  EXPECT_EQ(text.find(UT_STROBJ("a"), -1), -1);
  EXPECT_EQ(text.find(UT_STROBJ("a"), 100), -1);
  EXPECT_EQ(text.find(UT_STROBJ(""), 0), 0);
  EXPECT_EQ(text.find(UT_STROBJ(""), 3), 3);
  EXPECT_EQ(text.find(UT_STROBJ(""), 4), -1);
}

TEST(TextObject, OfNullIsEmptyAndKeepsACopyOtherwise) {
  EXPECT_EQ(UT_STROBJ(nullptr).getlength(), 0);
  char text[] = "ab";
  const UT_STROBJ object(text);
  text[0] = 'X';
  EXPECT_STREQ(object.getstring(), "ab");
  EXPECT_EQ(object.getlength(), 2);
}

}  // namespace
