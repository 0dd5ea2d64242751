// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Compressing and restoring while any of the allocations fails.
#include <gtest/gtest.h>

#include <memory>

#include "../records/record_bytes.h"
#include "failing_memory.h"
#include "qelmocompress.h"
#include "template_faults.h"

namespace {

using qelmodb::content;
using qelmodb::form;
using test::memory_end;
using test::memory_trials;

void add_tile(BX_DB& db, bx_long x, bx_long y) {
  BX_INSTANCE* tile = test::add(db, "TILE", x, y, x + 9, y + 7);
  test::add_wire(*tile, "IN", x + 1, y + 1);
  test::add_wire(*tile, "OUT", x + 2, y - 100000);
  BX_INSTANCE* matrix = test::add(*tile, "BASIC_ASS", x, y, x + 4, y + 7);
  test::add_wire(*matrix, "LONG", 5, y + 2);
  test::add_wire(*matrix, "UP", x + 1, 5);
  if (x != 20) test::add_wire(*matrix, "OUT", x + 3, y + 3);
}

void fill_with_matrices(BX_DB& db) {
  for (const bx_long x : {0, 10, 20}) {
    for (const bx_long y : {0, 8}) add_tile(db, x, y);
  }
  qelmodb::intern_root_name(db);
}

/// New columns and rows among those there are, a new wire list and a new layout.
void change(BX_DB& db) {
  add_tile(db, 5, 4);
  test::add_wire(*test::add(*test::add(db, "OTHER", 30, 4, 39, 7), "BASIC_ASS", 30, 4, 34, 7), "UP", 31, 5);
}

std::string compressed_bytes(BX_DB& db) { return test::with_numbered_names(test::dumped(db, form::compressed)); }

class TemplateMemory : public testing::Test {
 protected:
  /// What compressing gives that nothing disturbs: the first time, and after a change once more.
  void SetUp() override {
    BX_DB db("D", 0, 0, 100, 100);
    fill_with_matrices(db);
    db.compress();
    first_ = compressed_bytes(db);
    instances_ = db.numinst;
    change(db);
    db.compress();
    second_ = compressed_bytes(db);
  }

  static memory_end compress(memory_trials& trials, BX_DB& db) {
    return trials.run([&] {
      db.compress();
      return true;
    });
  }

  /// That a database that ran out of memory cannot be taken for a compressed one, and is the same otherwise.
  void expect_not_compressed(BX_DB& db, const std::string& tree) {
    UT_MEMFILE file;
    EXPECT_FALSE(qelmodb::dump(db, file, form::compressed, content::database));
    EXPECT_EQ(qelmodb::dump_objections(db, form::compressed, content::database).size(), 1U);
    EXPECT_EQ(db.writecompress(&file), 0);
    EXPECT_EQ(file.bytes(), "");
    EXPECT_EQ(db.dumpcompress(folder_.file("out").c_str(), false), 0);
    EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
    EXPECT_EQ(test::text_of(db), tree);
    EXPECT_NE(db.getwire(1, 1, "OUT"), nullptr);
    EXPECT_FALSE(test::dumped(db, form::binary).empty());
    // These follow references to templates, wherever they lead.
    qelmodb::find_compression_losses(db);
  }

  void note(const memory_trials& trials) { RecordProperty("failures", static_cast<int>(trials.failures())); }

  test::temporary_folder folder_;
  std::string first_;
  std::string second_;
  bx_long instances_ = 0;
};

TEST_F(TemplateMemory, DatabaseIsCompressedOrNot) {
  memory_trials trials(100);
  while (trials.next()) {
    BX_DB db("D", 0, 0, 100, 100);
    db.numinst = db.numbasicass = 0;
    fill_with_matrices(db);
    const std::string tree = test::text_of(db);
    if (compress(trials, db) == memory_end::threw) {
      expect_not_compressed(db, tree);
      EXPECT_EQ(db.numinst, 0);
      EXPECT_EQ(db.numbasicass, 0);
      if (trials.failures() % 3 == 0) continue;  // goes as it is
      db.compress();
    }
    ASSERT_EQ(compressed_bytes(db), first_);
    EXPECT_EQ(db.numbasicass, 6);
  }
  note(trials);
}

TEST_F(TemplateMemory, ChangedDatabaseIsCompressedOnceMoreOrNot) {
  memory_trials trials(100);
  while (trials.next()) {
    BX_DB db("D", 0, 0, 100, 100);
    fill_with_matrices(db);
    db.compress();
    change(db);
    const std::string tree = test::text_of(db);
    if (compress(trials, db) == memory_end::threw) {
      expect_not_compressed(db, tree);
      // What was compressed before has its old templates.
      db.getinstance(0)->restore();
      EXPECT_EQ(test::text_of(db), tree);
      db.compress();
    }
    ASSERT_EQ(compressed_bytes(db), second_);
  }
  note(trials);
}

TEST_F(TemplateMemory, LoadMakesAHalfCompressedDatabaseAWholeOne) {
  BX_DB db("D", 0, 0, 100, 100);
  fill_with_matrices(db);
  {
    const test::allocation_watch nothing(20);
    EXPECT_THROW(db.compress(), std::bad_alloc);
  }
  ASSERT_FALSE(db.dumpcompress(folder_.file("out").c_str(), false));
  BX_DB source("D", 0, 0, 100, 100);
  fill_with_matrices(source);
  source.compress();
  ASSERT_TRUE(test::loaded(db, test::dumped(source, form::compressed)));
  EXPECT_EQ(compressed_bytes(db), first_);
}

TEST_F(TemplateMemory, TreeIsRestoredOrCanBeRestoredAgain) {
  BX_DB source("D", 0, 0, 100, 100);
  fill_with_matrices(source);
  source.compress();
  const std::string bytes = test::dumped(source, form::compressed);
  memory_trials trials(20);
  while (trials.next()) {
    BX_DB db;
    ASSERT_TRUE(test::loaded(db, bytes));
    const std::string tree = test::text_of(db);
    bx_walk(db, [](BX_INSTANCE& inst, bx_long) {
      inst.name = nullptr;
      inst.wires.empty();
      return true;
    });
    trials.run([&] {
      db.restore();
      return true;
    });
    db.restore();
    ASSERT_EQ(test::text_of(db), tree);
  }
  note(trials);
}

TEST_F(TemplateMemory, AdviceIsGivenOrNot) {
  BX_DB db("D", 0, 0, 100, 100);
  fill_with_matrices(db);
  db.compress();
  change(db);
  memory_trials trials(60);
  while (trials.next()) {
    EXPECT_NE(trials.run([&] {
      return qelmodb::compression_objections(db).empty() && qelmodb::find_compression_losses(db).total() >= 0;
    }),
              memory_end::gave_false);
  }
  note(trials);
}

TEST_F(TemplateMemory, TemplateIsMadeOrNot) {
  memory_trials trials(2);
  while (trials.next()) {
    BX_DB db("D", 0, 0, 100, 100);
    fill_with_matrices(db);
    const memory_end end = trials.run([&] { return db.getinstance(0)->create_template() == 0; });
    EXPECT_EQ(db.asstemplates.size(), end == memory_end::threw ? 0U : 1U);
    EXPECT_EQ(db.getinstance(0)->create_template(), 0);
  }
  note(trials);
}

}  // namespace
