// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <random>
#include <set>

#include "exposed.h"
#include "np_device.h"

namespace {

using test::add;
using test::intern;

std::vector<std::string> table(const BX_DB& db) {
  std::vector<std::string> texts;
  for (const char* string : db.names) texts.emplace_back(string);
  return texts;
}

TEST(Database, DefaultConstructedIsItsOwnTopWithZeroCounters) {
  const BX_DB db;
  EXPECT_EQ(db.top, &db);
  EXPECT_EQ(db.numinst, 0);
  EXPECT_EQ(db.numbasicass, 0);
  EXPECT_EQ(db.getname(), nullptr);
  EXPECT_EQ(test::rectangle(db), "0 0 0 0");
  EXPECT_EQ(db.names.getcount(), 0);
  EXPECT_EQ(db.grid, nullptr);
  EXPECT_EQ(db.device, nullptr);
  EXPECT_EQ(db.basicasstemplate, nullptr);
  EXPECT_TRUE(db.asstemplates.empty());
  EXPECT_EQ(db.getnuminstances(), 0);
  EXPECT_EQ(db.getnumwires(), 0);
}

TEST(Database, ConstructedWithNameAndCornersIsNormalisedAndItsOwnTop) {
  BX_DB db("DEVICE", 9, 8, -1, -2);
  EXPECT_STREQ(db.getname(), "DEVICE");
  EXPECT_EQ(test::rectangle(db), "-1 9 -2 8");
  EXPECT_EQ(db.top, &db);
  EXPECT_EQ(db.names.getcount(), 0);
  EXPECT_EQ(db.grid, nullptr);
  EXPECT_EQ(db.getdevice(), nullptr);
  EXPECT_TRUE(db.get_non_basic_ass_tmpvec().empty());
}

TEST(Database, ConstructorWithCornersLeavesTheCountersUnset) {
  alignas(BX_DB) static unsigned char room[sizeof(BX_DB)];
  volatile unsigned char* const bytes = room;
  for (std::size_t i = 0; i < sizeof room; ++i) bytes[i] = 0x5a;
  auto* db = new (room) BX_DB("D", 0, 0, 1, 1);
  const auto byte_of = [&](const void* field) { return bytes[static_cast<const unsigned char*>(field) - room]; };
  EXPECT_EQ(byte_of(&db->numinst), 0x5a);
  EXPECT_EQ(byte_of(&db->numbasicass), 0x5a);
  EXPECT_EQ(byte_of(&db->grid), 0);
  db->~BX_DB();
}

TEST(Database, KeepsItsFieldsInTheOrderThatClientsRelyOn) {
  const BX_DB db;
  const void* const fields[] = {
      &db.tmplt, &db.names, &db.grid, &db.device, &db.asstemplates, &db.basicasstemplate, &db.numinst, &db.numbasicass};
  for (std::size_t i = 1; i < std::size(fields); ++i) EXPECT_LT(fields[i - 1], fields[i]) << i;
}

TEST(Database, CountersCountUpAndWrapAround) {
  BX_DB db;
  db.count_inst();
  db.count_inst();
  db.count_basic_ass();
  EXPECT_EQ(db.numinst, 2);
  EXPECT_EQ(db.numbasicass, 1);
  db.numinst = INT32_MAX;
  db.numbasicass = INT32_MAX;
  db.count_inst();
  db.count_basic_ass();
  EXPECT_EQ(db.numinst, INT32_MIN);
  EXPECT_EQ(db.numbasicass, INT32_MIN);
}

TEST(Database, DeviceIsBorrowedAndReplacingItReleasesNothing) {
  NP_TABLEDEVICE first({0, 1}, {0, 1});
  NP_TABLEDEVICE second({0, 2}, {0, 2});
  {
    BX_DB db;
    db.setdevice(&first);
    EXPECT_EQ(db.getdevice(), &first);
    db.setdevice(&second);
    EXPECT_EQ(db.device, &second);
  }
  EXPECT_EQ(first.maxrow(), 0);
}

TEST(Database, EqualTextsShareOnePointer) {
  BX_DB db;
  char text[] = "NAME";
  char* first = intern(db, text);
  EXPECT_NE(first, text);
  EXPECT_STREQ(first, "NAME");
  EXPECT_EQ(intern(db, text), first);
  text[0] = 'X';
  EXPECT_NE(intern(db, text), first);
  EXPECT_EQ(table(db), (std::vector<std::string>{"NAME", "XAME"}));
}

TEST(Database, NoNameStaysNone) {
  BX_DB db;
  EXPECT_EQ(intern(db, nullptr), nullptr);
  EXPECT_EQ(db.names.getcount(), 0);
  char* empty = intern(db, "");
  EXPECT_STREQ(empty, "");
  EXPECT_EQ(intern(db, ""), empty);
  EXPECT_EQ(db.names.getcount(), 1);
}

TEST(Database, NameTableIsSortedCompleteAndWithoutDuplicatesAfterRandomNames) {
  for (unsigned seed = 1; seed <= 5; ++seed) {
    std::mt19937 random(seed);
    BX_DB db;
    std::set<std::string> expected;
    std::set<const char*> pointers;
    for (int i = 0; i < 2000; ++i) {
      std::string text;
      for (std::size_t length = random() % 4; length > 0; --length) text += static_cast<char>(1 + random() % 255);
      expected.insert(text);
      const char* string = intern(db, text.c_str());
      EXPECT_EQ(string, text);
      pointers.insert(string);
      EXPECT_EQ(intern(db, text.c_str()), string);
    }
    EXPECT_EQ(table(db), std::vector<std::string>(expected.begin(), expected.end()));
    EXPECT_EQ(pointers.size(), expected.size());
  }
}

TEST(Database, EveryNameOfARandomTreeIsTheTablesOwnString) {
  for (unsigned seed = 1; seed <= 5; ++seed) {
    std::mt19937 random(seed);
    BX_DB db("ROOT", 0, 0, 1, 1);
    test::grow_random_tree(db, random, 300);
    const std::set<const char*> owned(db.names.begin(), db.names.end());
    std::set<std::string> used;
    for (BX_INSTANCE* child : db.instances) {
      bx_walk(*child, [&](BX_INSTANCE& inst, bx_long) {
        EXPECT_EQ(owned.count(inst.name), 1U);
        used.insert(inst.name);
        for (const BX_WIRE& wire : inst.wires) {
          EXPECT_EQ(owned.count(wire.name), 1U);
          used.insert(wire.name);
        }
        return true;
      });
    }
    const std::vector<std::string> texts = table(db);
    EXPECT_TRUE(std::is_sorted(texts.begin(), texts.end()));
    EXPECT_EQ(std::set<std::string>(texts.begin(), texts.end()).size(), texts.size());
    for (const std::string& text : used) EXPECT_TRUE(std::binary_search(texts.begin(), texts.end(), text)) << text;
  }
}

TEST(Database, DestroyedFreesEachInternedNameExactlyOnce) {
  // The sanitizers judge: names shared by instances and wires, between levels, and with columns.
  BX_DB db("SAME", 0, 0, 1, 1);
  for (int i = 0; i < 5; ++i) {
    BX_INSTANCE* inst = add(db, "SAME", i % 2, 0, 1, 1);
    test::add_wires(*inst, {"SAME", "SAME", "OTHER"});
    add(*inst, "OTHER", 7, 7, 8, 8);
  }
  EXPECT_EQ(table(db), (std::vector<std::string>{"BXD__OTHER", "BXD__SAME", "OTHER", "SAME"}));
}

TEST(Database, NameTableStaysRightWhenAClientEmptiesIt) {
  BX_DB db;
  char* first = intern(db, "A");
  for (char* string : db.names) std::free(string);
  db.names.empty();
  first = intern(db, "B");
  EXPECT_EQ(intern(db, "B"), first);
  EXPECT_STREQ(intern(db, "A"), "A");
  EXPECT_EQ(table(db), (std::vector<std::string>{"A", "B"}));
}

TEST(Database, AssignmentSharesEverything) {
  NP_TABLEDEVICE device({0, 1}, {0, 1});
  alignas(BX_DB) static unsigned char room[sizeof(BX_DB)];
  auto* db = new (room) BX_DB("D", 0, 0, 1, 1);
  db->numinst = 3;
  db->numbasicass = 4;
  db->setdevice(&device);
  BX_INSTANCE* inst = add(*db, "A", 0, 0, 1, 1);
  test::add_wire(*inst, "W");
  {
    // The copy is the one that is destroyed; of the source only what it does not share is left.
    BX_DB copy;
    copy = *db;
    EXPECT_EQ(copy.name, db->name);
    EXPECT_EQ(copy.getinstance(0), inst);
    EXPECT_EQ(copy.names.begin(), db->names.begin());
    EXPECT_EQ(copy.names.getcount(), db->names.getcount());
    EXPECT_EQ(copy.device, &device);
    EXPECT_EQ(copy.numinst, 3);
    EXPECT_EQ(copy.numbasicass, 4);
    EXPECT_EQ(intern(copy, "A"), inst->name);
  }
  const DARRAY_BX_INSTPTR no_children;
  const DARRAY_BX_WIRE no_wires;
  const DARRAY_NAME no_names;
  db->instances = no_children;
  db->wires = no_wires;
  db->names = no_names;
  db->~BX_DB();
}

TEST(Database, ThatWasNeverCompressedWritesNoTemplates) {
  BX_DB db;
  UT_MEMFILE file;
  EXPECT_EQ(db.writecompress(&file), 0);
  EXPECT_EQ(file.bytes(), "");
}

}  // namespace
