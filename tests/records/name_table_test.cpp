// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The name table of binary database files, and what interning makes of it afterwards.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "record_bytes.h"

namespace {

using test::binary_line;
using test::form;
using test::instance_bytes;
using test::opened_db;
using test::table_bytes;
using test::wire_bytes;

std::vector<std::string> names_of(const BX_DB& db) { return {db.names.begin(), db.names.end()}; }

bool sorted_and_distinct(const BX_DB& db) {
  const std::vector<std::string> names = names_of(db);
  return std::is_sorted(names.begin(), names.end(), [](const auto& a, const auto& b) { return a <= b; });
}

TEST(NameTable, IsWrittenWithOneEntryMoreThanTheCacheAndTheRootsNameFirst) {
  BX_DB db("TOP", 0, 0, 9, 9);
  db.addinstance(new BX_INSTANCE("B", 0, 1, 2, 3));
  db.addinstance(new BX_INSTANCE("A", 0, 1, 2, 3));
  ASSERT_EQ(names_of(db), (std::vector<std::string>{"A", "B"}));
  const std::string bytes = test::dumped(db, form::binary);
  const std::string table = table_bytes(
      {{test::address_of(db.name), "TOP"}, {test::address_of(db.names[0]), "A"}, {test::address_of(db.names[1]), "B"}});
  EXPECT_EQ(bytes.substr(0, 8 + table.size()), binary_line + table);
  opened_db again;
  ASSERT_TRUE(test::loaded(again, bytes));
  EXPECT_EQ(names_of(again), (std::vector<std::string>{"TOP", "A", "B"}));
  EXPECT_EQ(again.name, again.names[0]);
}

TEST(NameTable, ARootsNameThatIsInTheCacheIsWrittenTwice) {
  BX_DB first;
  ASSERT_TRUE(test::loaded(first, "BX_DB:A\nBX_INSTANCE: \"TOP\" (0, 0) (9, 9)\n0\n0\n"));
  ASSERT_EQ(first.names.getcount(), 1);
  BX_DB second;
  ASSERT_TRUE(test::loaded(second, test::dumped(first, form::binary)));
  EXPECT_EQ(names_of(second), (std::vector<std::string>{"TOP", "TOP"}));
}

TEST(NameTable, StaysInTheOrderOfTheFileAfterALoad) {
  opened_db db;
  ASSERT_TRUE(test::loaded(db, binary_line + table_bytes({{1, "R"}, {2, "Z"}, {3, "A"}, {4, "M"}, {5, "A"}}) +
                                   instance_bytes(1, {0, 0, 9, 9}, {wire_bytes(5, 0, 0), wire_bytes(4, 0, 0)})));
  EXPECT_EQ(names_of(db), (std::vector<std::string>{"R", "Z", "A", "M", "A"}));
  EXPECT_EQ(db.getwire(0)->name, db.names[4]);
}

TEST(NameTable, InterningAfterALoadGivesOnePointerForEachTextWhateverTheOrder) {
  opened_db db;
  std::vector<std::pair<std::uint64_t, std::string>> entries;
  for (std::uint64_t i = 0; i < 300; ++i) entries.emplace_back(i + 1, "N" + std::to_string(i * 7919 % 151));
  ASSERT_TRUE(test::loaded(db, binary_line + table_bytes(entries) + instance_bytes(1, {0, 0, 9, 9})));
  for (bx_long i = 0; i < 300; ++i) {
    char* known = db.getcachedname(db.names[i]);
    EXPECT_STREQ(known, db.names[i]);
    EXPECT_EQ(known, db.getcachedname(std::string(known).c_str()));
    EXPECT_NE(std::find(db.names.begin(), db.names.end(), known), db.names.end());
  }
  EXPECT_EQ(db.names.getcount(), 300);
  char* fresh = db.getcachedname("unheard of");
  EXPECT_EQ(db.names.getcount(), 301);
  EXPECT_EQ(db.getcachedname("unheard of"), fresh);
  EXPECT_EQ(db.names.getcount(), 301);
}

TEST(NameTable, InterningIsRightAfterNamesWereCut) {
  opened_db db;
  ASSERT_TRUE(test::loaded(db, binary_line + table_bytes({{1, "R"}, {2, "X$1"}, {3, "X$2"}, {4, "Y$1"}}) +
                                   instance_bytes(1, {0, 0, 9, 9}, {wire_bytes(2, 0, 0), wire_bytes(3, 0, 0)},
                                                  {instance_bytes(4, {0, 0, 1, 1})})));
  EXPECT_EQ(names_of(db), (std::vector<std::string>{"R", "X", "X", "Y$1"}));
  char* cut = db.getcachedname("X");
  EXPECT_TRUE(cut == db.names[1] || cut == db.names[2]);
  EXPECT_EQ(db.getcachedname("X"), cut);
  EXPECT_EQ(db.getcachedname("Y$1"), db.names[3]);
  char* uncut = db.getcachedname("X$1");
  EXPECT_STREQ(uncut, "X$1");
  EXPECT_EQ(db.names.getcount(), 5);
}

TEST(NameTable, InterningIsRightWhenARecordReadLaterCutsNamesOfTheTable) {
  opened_db db;
  char* whole = db.getcachedname("P$Q");
  db.getcachedname("O");
  UT_MEMFILE file(instance_bytes(0, {0, 0, 9, 9}, {wire_bytes(7, 1, 2)}));
  file.fixtable().setnewaddr(7, whole);
  ASSERT_EQ(db.readme(&file), 1);
  EXPECT_STREQ(whole, "P");
  EXPECT_EQ(db.getcachedname("P"), whole);
  char* uncut = db.getcachedname("P$Q");
  EXPECT_NE(uncut, whole);
  EXPECT_STREQ(uncut, "P$Q");
  EXPECT_EQ(db.names.getcount(), 3);
}

/// A record of its own whose names are strings of a database, and which cuts them.
struct record_alone {
  const char* what;
  std::string bytes;
  void (*read)(UT_PTRFILE& file);
};

const record_alone records_alone[] = {
    {"wire", wire_bytes(7, 1, 2),
     [](UT_PTRFILE& file) {
       BX_WIRE wire;
       EXPECT_EQ(wire.readme(&file, '\0'), 1);
     }},
    {"delta-coded wire", test::reference(7) + '\0',
     [](UT_PTRFILE& file) {
       BX_WIRE wire;
       EXPECT_EQ(wire.readmeCompressed(&file, '\0'), 1);
     }},
    {"layout", test::reference(0) + test::little_endian(1, 2) + test::reference(7) + '\0',
     [](UT_PTRFILE& file) {
       ASS_TEMPLATE layout;
       EXPECT_EQ(layout.readme(&file), 1);
     }},
    {"standalone instance", instance_bytes(0, {0, 0, 9, 9}, {wire_bytes(7, 1, 2)}), [](UT_PTRFILE& file) {
       BX_INSTANCE alone("ALONE", 0, 0, 1, 1);
       EXPECT_EQ(alone.readme(&file), 1);
     }}};

TEST(NameTable, InterningIsRightWhenARecordOfItsOwnCutsNamesOfTheTable) {
  for (const record_alone& record : records_alone) {
    opened_db db;
    char* const whole = db.getcachedname("P$Q");
    db.getcachedname("O");
    UT_MEMFILE file{std::string(record.bytes)};
    file.fixtable().setnewaddr(7, whole);
    record.read(file);
    EXPECT_STREQ(whole, "P") << record.what;
    EXPECT_EQ(db.getcachedname("P"), whole) << record.what;
    EXPECT_EQ(db.names.getcount(), 2) << record.what;
    EXPECT_NE(db.getcachedname("P$Q"), whole) << record.what;
    EXPECT_EQ(db.names.getcount(), 3) << record.what;
  }
}

/// Where a string goes that is new to a table: as sorted insertion puts it, also where the table is not sorted.
void insert_plainly(std::vector<std::string>& table, const std::string& text) {
  if (std::find(table.begin(), table.end(), text) != table.end()) return;
  std::size_t low = 0;
  std::size_t high = table.size();
  while (low < high) {
    const std::size_t mid = low + (high - low) / 2;
    if (text < table[mid]) {
      high = mid;
    } else {
      low = mid + 1;
    }
  }
  table.insert(table.begin() + static_cast<std::ptrdiff_t>(low), text);
}

void insert_plainly(std::vector<std::string>& table, const BX_INSTANCE& inst) {
  insert_plainly(table, inst.name);
  for (const BX_WIRE& wire : inst.wires) insert_plainly(table, wire.name);
  for (const BX_INSTANCE* child : inst.instances) insert_plainly(table, *child);
}

TEST(NameTable, NamesOfAJoiningTreeAreAddedInTheOrderOfTheTree) {
  std::mt19937 random(11);
  for (int round = 0; round < 50; ++round) {
    std::vector<std::pair<std::uint64_t, std::string>> entries{{1, "R"}};
    for (std::uint64_t i = 2; i < 9; ++i) entries.emplace_back(i, std::string(1, "AMZamz$"[random() % 7]));
    BX_DB db;
    ASSERT_TRUE(test::loaded(db, binary_line + table_bytes(entries) + instance_bytes(1, {0, 0, 9, 9})));
    std::vector<std::string> expected = names_of(db);
    auto* joining = new BX_INSTANCE("JOINING", 0, 0, 1, 1);
    test::grow_random_tree(*joining, random, 20);
    insert_plainly(expected, *joining);
    db.addinstance(joining);
    ASSERT_EQ(names_of(db), expected);
  }
}

TEST(NameTable, CuttingASharedNameCutsItForInstancesToo) {
  BX_DB db;
  ASSERT_TRUE(test::loaded(
      db, binary_line + table_bytes({{1, "R$1"}}) + instance_bytes(1, {0, 0, 9, 9}, {wire_bytes(1, 0, 0)})));
  EXPECT_STREQ(db.name, "R");
}

TEST(NameTable, OfOneAddressDefinedTwiceTheLastWins) {
  BX_DB db;
  ASSERT_TRUE(test::loaded(db, binary_line + table_bytes({{1, "R"}, {2, "FIRST"}, {2, "LAST"}}) +
                                   instance_bytes(1, {0, 0, 9, 9}, {wire_bytes(2, 0, 0)})));
  EXPECT_STREQ(db.getwire(0)->name, "LAST");
  EXPECT_EQ(names_of(db), (std::vector<std::string>{"R", "FIRST", "LAST"}));
}

TEST(NameTable, AMissingRootNameAloneIsTolerated) {
  BX_DB db;
  ASSERT_TRUE(
      test::loaded(db, binary_line + table_bytes({{2, "W"}}) + instance_bytes(1, {0, 0, 9, 9}, {wire_bytes(2, 0, 0)})));
  EXPECT_EQ(db.name, nullptr);
  EXPECT_STREQ(db.getwire(0)->name, "W");
}

TEST(NameTable, AnyOtherUnresolvedReferenceMakesTheLoadFalse) {
  BX_DB wire;
  EXPECT_FALSE(test::loaded(
      wire, binary_line + table_bytes({{1, "R"}}) + instance_bytes(1, {0, 0, 9, 9}, {wire_bytes(2, 0, 0)})));
  EXPECT_EQ(wire.getwire(0)->name, nullptr);
  BX_DB child;
  EXPECT_FALSE(test::loaded(child, binary_line + table_bytes({{1, "R"}}) +
                                       instance_bytes(1, {0, 0, 9, 9}, {}, {instance_bytes(9, {0, 0, 1, 1})})));
  BX_DB both;
  EXPECT_FALSE(test::loaded(both, binary_line + table_bytes({{1, "R"}}) +
                                      instance_bytes(8, {0, 0, 9, 9}, {}, {instance_bytes(9, {0, 0, 1, 1})})));
  EXPECT_EQ(both.name, nullptr);
}

TEST(NameTable, ReferenceZeroIsAMissingNameUnlessTheTableDefinesIt) {
  BX_DB missing;
  ASSERT_TRUE(test::loaded(
      missing, binary_line + table_bytes({{1, "R"}}) + instance_bytes(1, {0, 0, 9, 9}, {wire_bytes(0, 0, 0)})));
  EXPECT_EQ(missing.getwire(0)->name, nullptr);
  BX_DB defined;
  ASSERT_TRUE(test::loaded(defined, binary_line + table_bytes({{1, "R"}, {0, "ZERO"}}) +
                                        instance_bytes(1, {0, 0, 9, 9}, {wire_bytes(0, 0, 0)})));
  EXPECT_STREQ(defined.getwire(0)->name, "ZERO");
}

TEST(NameTable, ANamelessDatabaseIsWrittenWithReferenceZero) {
  BX_DB db;
  EXPECT_EQ(test::dumped(db, form::binary), binary_line + table_bytes({{0, ""}}) + instance_bytes(0, {0, 0, 0, 0}));
}

TEST(NameTable, ANameMayHave99CharactersAndNotOneMore) {
  for (const std::size_t length : {99U, 100U}) {
    const std::string name(length, 'n');
    BX_DB db;
    EXPECT_EQ(test::loaded(db, binary_line + table_bytes({{1, name}}) + instance_bytes(1, {0, 0, 9, 9})), length == 99);
  }
}

TEST(NameTable, ANegativeCountIsNone) {
  BX_DB db;
  EXPECT_TRUE(test::loaded(db, binary_line + test::number(-5) + instance_bytes(0, {0, 0, 9, 9})));
  EXPECT_EQ(db.names.getcount(), 0);
}

TEST(NameTable, IsSortedAndDistinctAfterATextLoad) {
  std::mt19937 random(77);
  BX_DB made("TOP", 0, 0, 9, 9);
  test::grow_random_tree(made, random, 300);
  BX_DB db;
  ASSERT_TRUE(test::loaded(db, test::dumped(made, form::text)));
  EXPECT_TRUE(sorted_and_distinct(db));
  EXPECT_EQ(db.names.getcount(), qelmodb::measure(db).names);
}

TEST(NameTable, StringsOfTheOldTableStayValidWhenAnotherFileIsLoaded) {
  opened_db db;
  const char* old = db.getcachedname("OLD");
  ASSERT_TRUE(test::loaded(db, binary_line + table_bytes({{1, "R"}}) + instance_bytes(1, {0, 0, 9, 9})));
  EXPECT_STREQ(old, "OLD");
  EXPECT_NE(db.getcachedname("OLD"), old);
}

}  // namespace
