// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The index behind the name table: one string for each text, in every state of the table.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <random>
#include <string>

#include "bx_name_store.h"
#include "ut_string.h"

namespace {

/// A table and its store, which frees the strings of both.
class NameStore : public testing::Test {
 protected:
  void append(const char* text) {
    char* string = ut_strdup(text);
    table_.a_add(&string);
  }

  bool ascending() const {
    return std::adjacent_find(table_.begin(), table_.end(),
                              [](const char* a, const char* b) { return std::string(a) >= b; }) == table_.end();
  }

  DARRAY_NAME table_{0};
  bx_name_store store_{table_};
};

TEST_F(NameStore, GivesOnePointerForEachText) {
  char* a = store_.intern("A");
  EXPECT_STREQ(a, "A");
  EXPECT_EQ(store_.intern(std::string("A")), a);
  EXPECT_NE(store_.intern("B"), a);
  EXPECT_EQ(table_.getcount(), 2);
}

TEST_F(NameStore, TellsTextsApartWhereOneBeginsTheOther) {
  char* whole = store_.intern("ABC");
  char* part = store_.intern(std::string_view("ABCDEF").substr(0, 2));
  EXPECT_STREQ(part, "AB");
  EXPECT_NE(part, whole);
  EXPECT_EQ(store_.intern("AB"), part);
  EXPECT_EQ(store_.intern("ABC"), whole);
  EXPECT_STREQ(store_.intern(""), "");
}

TEST_F(NameStore, KeepsTheTableSortedAsUnsignedBytes) {
  for (const char* text : {"b", "\xff", "a", "", "Z", "ab", "\x80", "a"}) store_.intern(text);
  EXPECT_EQ(table_.getcount(), 7);
  EXPECT_TRUE(
      std::is_sorted(table_.begin(), table_.end(), [](const char* a, const char* b) { return std::strcmp(a, b) < 0; }));
  EXPECT_STREQ(table_[6], "\xff");
}

TEST_F(NameStore, LosesNoneOf200000NamesAndTheirHashesMeet) {
  constexpr int count = 200000;
  std::vector<char*> strings;
  store_.open_batch();
  for (int i = 0; i < count; ++i) strings.push_back(store_.intern("name " + std::to_string(i)));
  store_.close_batch();
  EXPECT_EQ(table_.getcount(), count);
  EXPECT_TRUE(ascending());
  for (int i = 0; i < count; ++i) {
    const std::string text = "name " + std::to_string(i);
    ASSERT_EQ(strings[static_cast<std::size_t>(i)], text);
    ASSERT_EQ(store_.intern(text), strings[static_cast<std::size_t>(i)]);
  }
  EXPECT_EQ(table_.getcount(), count);
}

TEST_F(NameStore, IsTheSameAsAMapThroughBatchesAndOutsideThem) {
  std::mt19937 random(31);
  std::map<std::string, char*> model;
  for (int round = 0; round < 60; ++round) {
    const bool batch = random() % 2 == 0;
    if (batch) store_.open_batch();
    for (auto i = random() % 60; i > 0; --i) {
      const std::string text = std::to_string(random() % 700);
      char* string = store_.intern(text);
      const auto [known, added] = model.emplace(text, string);
      ASSERT_EQ(known->second, string);
      ASSERT_EQ(string, text);
    }
    if (batch) store_.close_batch();
    ASSERT_TRUE(ascending());
    ASSERT_EQ(static_cast<std::size_t>(table_.getcount()), model.size());
  }
}

TEST_F(NameStore, FindsTheNamesOfATableInAnyOrderWithDuplicates) {
  for (const char* text : {"R", "Z", "A", "Z", "M"}) append(text);
  EXPECT_EQ(store_.intern("M"), table_[4]);
  char* z = store_.intern("Z");
  EXPECT_TRUE(z == table_[1] || z == table_[3]);
  EXPECT_EQ(store_.intern("Z"), z);
  EXPECT_EQ(table_.getcount(), 5);
  char* fresh = store_.intern("Q");
  EXPECT_EQ(store_.intern("Q"), fresh);
  EXPECT_EQ(table_.getcount(), 6);
  EXPECT_NE(std::find(table_.begin(), table_.end(), fresh), table_.end());
}

TEST_F(NameStore, ABatchOverAnUnsortedTableLeavesTheNamesThatWereThereInTheirOrder) {
  for (const char* text : {"R", "Z", "A"}) append(text);
  const std::vector<char*> old(table_.begin(), table_.end());
  store_.open_batch();
  for (const char* text : {"K", "B", "Y", "Z"}) store_.intern(text);
  store_.close_batch();
  EXPECT_EQ(table_.getcount(), 6);
  std::vector<char*> left;
  for (char* string : table_) {
    if (std::find(old.begin(), old.end(), string) != old.end()) left.push_back(string);
  }
  EXPECT_EQ(left, old);
}

TEST_F(NameStore, IsRightAfterTextsChangedInPlaceAndItWasTold) {
  char* cut = store_.intern("X$1");
  char* other = store_.intern("Y");
  cut[1] = '\0';
  store_.invalidate();
  EXPECT_EQ(store_.intern("X"), cut);
  EXPECT_NE(store_.intern("X$1"), cut);
  EXPECT_EQ(store_.intern("Y"), other);
  EXPECT_EQ(table_.getcount(), 3);
}

TEST_F(NameStore, NoticesThatTheTableGrewFromOutside) {
  store_.intern("B");
  append("C");
  EXPECT_EQ(store_.intern("C"), table_[1]);
}

TEST_F(NameStore, OwnsTheStringsOfTheTableAndThoseKept) {
  char* interned = store_.intern("A");
  EXPECT_TRUE(store_.owns(interned));
  char* kept = ut_strdup("A");
  EXPECT_FALSE(store_.owns(kept));
  store_.keep(kept);
  EXPECT_TRUE(store_.owns(kept));
  char outside[] = "A";
  EXPECT_FALSE(store_.owns(outside));
  char* later = store_.intern("LATER");
  EXPECT_TRUE(store_.owns(later));
  append("OUTSIDE");
  EXPECT_TRUE(store_.owns(table_[table_.getcount() - 1]));
  store_.keep(nullptr);
}

TEST_F(NameStore, MovesTheTableToTheKeptStrings) {
  char* old = store_.intern("A");
  store_.keep_table();
  EXPECT_EQ(table_.getcount(), 0);
  EXPECT_TRUE(store_.owns(old));
  EXPECT_STREQ(old, "A");
  EXPECT_NE(store_.intern("A"), old);
  EXPECT_EQ(table_.getcount(), 1);
}

}  // namespace
