// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Trees that are built, rearranged, indexed and destroyed while any of the allocations fails.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <set>

#include "exposed.h"
#include "failing_memory.h"
#include "qelmoext.h"
#include "qelmoindex.h"

namespace {

using test::add;
using test::add_wire;
using test::add_wires;
using test::memory_end;
using test::memory_trials;

/// A subtree that stands alone, with names of all lengths and some twice.
std::unique_ptr<BX_INSTANCE> new_subtree(bx_long x) {
  std::unique_ptr<BX_INSTANCE> root(test::make("SUBTREE", x, 0, x + 9, 9));
  add_wires(*root, {"A", "B", "B", "a name that is longer than what strings hold in place", ""});
  for (const char* name : {"ONE", "TWO", "ONE"}) {
    BX_INSTANCE* child = add(*root, name, x, 1, x + 1, 2);
    add_wires(*child, {"B", "C", "A"});
    add(*child, "DEEP", x + 3, 1, x + 4, 2);
  }
  return root;
}

void expect_sorted_names(const BX_DB& db) {
  for (bx_long i = 1; i < db.names.getcount(); ++i) EXPECT_LT(std::string(db.names[i - 1]), db.names[i]);
}

bool all_belong_to(const BX_INSTANCE& root, const BX_DB* db) {
  return bx_walk(root, [db](const BX_INSTANCE& each, bx_long) { return each.top == db; });
}

void note(const memory_trials& trials) {
  testing::Test::RecordProperty("failures", static_cast<int>(trials.failures()));
}

TEST(TreeMemory, InstancesAndDatabasesAreMadeOrNot) {
  memory_trials trials(4);
  while (trials.next()) {
    EXPECT_NE(trials.run([] {
      const BX_INSTANCE inst("a name that is longer than what strings hold", 0, 0, 1, 1);
      const std::unique_ptr<BX_DB> db = std::make_unique<BX_DB>("another name, which the database keeps", 0, 0, 1, 1);
      return db->names.getcount() == 0;
    }),
              memory_end::gave_false);
  }
  note(trials);
}

TEST(TreeMemory, WireIsAddedOrNot) {
  const BX_WIRE wire("NEW", 3, 4);
  for (const bool in_database : {false, true}) {
    memory_trials trials(2);
    while (trials.next()) {
      BX_DB db("D", 0, 0, 9, 9);
      BX_INSTANCE alone("ALONE", 0, 0, 9, 9);
      BX_INSTANCE& inst = in_database ? *add(db, "I", 0, 0, 1, 1) : alone;
      for (int i = 0; i < 16; ++i) add_wires(inst, {"OLD"});
      const std::string before = test::text_of(inst);
      const memory_end end = trials.run([&] {
        inst.addwire(&wire);
        return true;
      });
      if (end == memory_end::threw) {
        EXPECT_EQ(test::text_of(inst), before);
        inst.addwire(&wire);
      }
      EXPECT_EQ(inst.getnumwires(), 17);
      ASSERT_NE(inst.getwire("NEW", nullptr), nullptr);
      EXPECT_EQ(inst.getwire("NEW", nullptr)->nodey, 4);
      expect_sorted_names(db);
    }
    note(trials);
  }
}

/// Adds to the parent that make gives what else it gives; after a failure both must be what they were.
void expect_added_or_not(long least, const std::function<BX_INSTANCE*(BX_DB&)>& parent_in,
                         const std::function<std::unique_ptr<BX_INSTANCE>()>& make) {
  std::string whole;
  {
    BX_DB db("D", 0, 0, 99, 99);
    BX_INSTANCE* parent = parent_in(db);
    parent->addinstance(make().release());
    whole = test::text_of(db);
  }
  memory_trials trials(least);
  while (trials.next()) {
    BX_DB db("D", 0, 0, 99, 99);
    BX_INSTANCE* parent = parent_in(db);
    std::unique_ptr<BX_INSTANCE> inst = make();
    const std::string parent_before = test::text_of(db);
    const std::string before = test::text_of(*inst);
    const memory_end end = trials.run([&] {
      parent->addinstance(inst.get());
      return true;
    });
    if (end == memory_end::threw) {
      ASSERT_EQ(test::text_of(db), parent_before);
      ASSERT_EQ(test::text_of(*inst), before);
      EXPECT_TRUE(all_belong_to(*inst, nullptr));
      if (trials.failures() % 2 == 0) continue;  // the instance goes by itself
      parent->addinstance(inst.get());
    }
    static_cast<void>(inst.release());
    ASSERT_EQ(test::text_of(db), whole);
    EXPECT_TRUE(all_belong_to(db, &db));
    expect_sorted_names(db);
  }
  note(trials);
}

BX_INSTANCE* root_with_children(BX_DB& db) {
  for (int i = 0; i < 4; ++i) add(db, "OLD", 0, i, 1, i + 1);
  return &db;
}

TEST(TreeMemory, InstanceBecomesAChildOrNot) {
  expect_added_or_not(10, root_with_children, [] { return new_subtree(0); });
}

TEST(TreeMemory, InstanceGoesIntoANewColumnOrNot) {
  expect_added_or_not(12, root_with_children, [] { return new_subtree(50); });
}

TEST(TreeMemory, InstanceGoesIntoAColumnThereIsOrNot) {
  expect_added_or_not(
      10,
      [](BX_DB& db) {
        add(db, "FIRST", 50, 0, 51, 1);
        return &db;
      },
      [] { return new_subtree(50); });
}

TEST(TreeMemory, InstanceIsAddedInABatchOfNamesOrNot) {
  memory_trials trials(10);
  while (trials.next()) {
    BX_DB db("D", 0, 0, 99, 99);
    std::unique_ptr<BX_INSTANCE> inst = new_subtree(0);
    const memory_end end = trials.run([&] {
      const qelmodb::name_batch batch(db);
      db.addinstance(inst.get());
      return true;
    });
    if (end == memory_end::gave_true) static_cast<void>(inst.release());
    expect_sorted_names(db);
    EXPECT_STREQ(test::intern(db, "A"), "A");
    expect_sorted_names(db);
  }
  note(trials);
}

TEST(TreeMemory, SubtreeLeavesItsDatabaseOrNot) {
  memory_trials trials(10);
  while (trials.next()) {
    BX_DB db("D", 0, 0, 99, 99);
    BX_INSTANCE alone("ALONE", 0, 0, 99, 99);
    BX_INSTANCE* inst = new_subtree(0).release();
    db.addinstance(inst);
    db.instances.a_droplast();
    const std::string before = test::text_of(*inst);
    const memory_end end = trials.run([&] {
      alone.addinstance(inst);
      return true;
    });
    EXPECT_EQ(test::text_of(*inst), before);
    EXPECT_EQ(inst->top, end == memory_end::threw ? &db : nullptr);
    EXPECT_EQ(alone.getnuminstances(), end == memory_end::threw ? 0 : 1);
    if (end == memory_end::threw) delete inst;
  }
  note(trials);
}

// ---- long child lists

/// Lists of more than forty at two levels, with children that need columns in their groups.
void fill_with_long_lists(BX_INSTANCE& root) {
  const auto fill = [](BX_INSTANCE& parent, int count) {
    for (int i = 0; i < count; ++i) {
      const bx_long x = i % 3 == 0 ? i : 0;
      BX_INSTANCE* leaf = test::make("LEAF", x, i, x + 1, i + 1);
      parent.instances.a_add(&leaf);
    }
  };
  fill(root, 70);
  fill(*root.instances[33], 45);
}

std::multiset<const BX_INSTANCE*> leaves_of(const BX_INSTANCE& root) {
  std::multiset<const BX_INSTANCE*> leaves;
  bx_walk(root, [&](const BX_INSTANCE& inst, bx_long) {
    if (std::string(inst.name) == "LEAF") leaves.insert(&inst);
    return true;
  });
  return leaves;
}

TEST(TreeMemory, LongListsAreBrokenUpAsAWholeOrNot) {
  for (const bool in_database : {true, false}) {
    std::string whole;
    memory_trials trials(60);
    while (trials.next()) {
      BX_DB db("D", 0, 0, 9, 9);
      BX_INSTANCE alone("D", 0, 0, 9, 9);
      BX_INSTANCE& root = in_database ? db : alone;
      fill_with_long_lists(alone);
      if (in_database) {
        root.instances.a_swap(alone.instances);
        for (BX_INSTANCE* child : root.instances) test::bind(*child, &db);
      }
      const std::multiset<const BX_INSTANCE*> leaves = leaves_of(root);
      ASSERT_EQ(leaves.size(), 115U);
      const memory_end end = trials.run([&] {
        root.convert_hierarchy();
        return true;
      });
      EXPECT_TRUE(leaves_of(root) == leaves) << "each child is there once";
      if (end == memory_end::gave_true) {
        if (whole.empty()) whole = test::text_of(root);
        EXPECT_EQ(test::text_of(root), whole);
      }
      root.convert_hierarchy();
      EXPECT_TRUE(leaves_of(root) == leaves);
      EXPECT_TRUE(bx_walk(root, [](const BX_INSTANCE& each, bx_long) { return each.getnuminstances() <= 40; }));
    }
    note(trials);
  }
}

// ---- grids and indices

void fill_with_tiles(BX_DB& db, bool complete) {
  for (const bx_long x : {0, 10, 20}) {
    for (const bx_long y : {0, 10}) {
      if (!complete && x == 10 && y == 10) continue;
      add_wires(*add(db, "TILE", x, y, x + 9, y + 9), {"IN", "OUT"});
    }
  }
}

TEST(TreeMemory, GridIsMadeOrNot) {
  const char* prefixes[] = {"TILE", nullptr};
  for (const bool complete : {true, false}) {
    NP_TABLEDEVICE device({0, 10, 20}, {0, 10, 20, 30});
    memory_trials trials(8);
    while (trials.next()) {
      BX_DB db("D", 0, 0, 99, 99);
      fill_with_tiles(db, complete);
      db.setdevice(&device);
      BX_GRID* grid = nullptr;
      const memory_end end = trials.run([&] {
        grid = db.getgrid(prefixes);
        return grid != nullptr;
      });
      ASSERT_NE(end, memory_end::threw);
      grid = db.getgrid(prefixes);
      ASSERT_NE(grid, nullptr);
      EXPECT_EQ(grid->getnumrows(), 2);
      EXPECT_EQ(grid->getnumcols(), 3);
      EXPECT_EQ(grid->getinstance(0, 1) == nullptr, !complete);
    }
    memory_trials made(8);
    while (made.next()) {
      BX_DB db("D", 0, 0, 99, 99);
      fill_with_tiles(db, complete);
      std::string why;
      const memory_end end = made.run([&] {
        db.setdevice(qelmodb::device_of_tiles(db, prefixes, qelmodb::tiles::with_wires, why).release());
        return qelmodb::make_grid(db, prefixes, qelmodb::tiles::with_wires, why) != nullptr;
      });
      EXPECT_NE(end, memory_end::gave_false);
      delete db.getdevice();
    }
    note(made);
  }
}

TEST(TreeMemory, IndexIsMadeOrNot) {
  BX_DB db("D", 0, 0, 99, 99);
  fill_with_tiles(db, true);
  db.addinstance(new_subtree(50).release());
  memory_trials trials(20);
  while (trials.next()) {
    std::vector<BX_INSTANCE*> at;
    std::vector<BX_INSTANCE*> meeting;
    std::vector<qelmodb::placed_wire> wires;
    std::string path;
    const memory_end end = trials.run([&] {
      const qelmodb::tree_index index(db);
      index.instances_at(5, 5, at);
      index.instances_meeting(0, 0, 99, 99, meeting);
      index.wires_at(0, 0, wires);
      path = index.path(*db.getinstance(0));
      return true;
    });
    if (end == memory_end::threw) continue;
    EXPECT_EQ(at.size(), 2U);
    EXPECT_EQ(static_cast<std::int64_t>(meeting.size()), qelmodb::measure(db).instances);
    EXPECT_EQ(static_cast<std::int64_t>(wires.size()), qelmodb::measure(db).wires);
    EXPECT_EQ(path, "D/TILE");
  }
  note(trials);
}

TEST(TreeMemory, SearchesOverWholeTreesGiveAllOrThrow) {
  BX_DB db("D", 0, 0, 99, 99);
  db.addinstance(new_subtree(0).release());
  BX_DB same("D", 0, 0, 99, 99);
  same.addinstance(new_subtree(0).release());
  // Counts of what they find.
  const auto search = [&] {
    return std::vector<std::size_t>{
        qelmodb::find_instances(db, "ONE").size(),
        qelmodb::find_wires(db, "B").size(),
        qelmodb::instances_at(db, 0, 1).size(),
        static_cast<std::size_t>(qelmodb::measure(db).names),
        qelmodb::dump_objections(db, qelmodb::form::text, qelmodb::content::database).size(),
        qelmodb::path_of(db, *db.getinstance(0)).size(),
        static_cast<std::size_t>(qelmodb::same_tree(db, same, qelmodb::content::database))};
  };
  const std::vector<std::size_t> expected = search();
  EXPECT_EQ(expected, (std::vector<std::size_t>{2, 5, 5, 11, 0, 9, 1}));
  memory_trials trials(20);
  while (trials.next()) {
    std::vector<std::size_t> found;
    const memory_end end = trials.run([&] {
      found = search();
      return true;
    });
    if (end == memory_end::gave_true) {
      EXPECT_EQ(found, expected);
    }
  }
  note(trials);
}

// ---- destruction

TEST(TreeMemory, DestructionNeedsNone) {
  memory_trials trials(0);
  while (trials.next()) {
    auto db = std::make_unique<BX_DB>("D", 0, 0, 99, 99);
    db->addinstance(new_subtree(0).release());
    std::unique_ptr<BX_INSTANCE> alone = new_subtree(7);
    EXPECT_EQ(trials.run([&] {
      db.reset();
      alone.reset();
      return true;
    }),
              memory_end::gave_true);
  }
  EXPECT_EQ(trials.failures(), 0);
}

struct derived_instance : BX_INSTANCE {
  using BX_INSTANCE::BX_INSTANCE;
};

// The children of derived instances that are nested very deep are noted, and destroyed at once where that fails.
TEST(TreeMemory, DestructionOfDerivedInstancesWorksWithoutAny) {
  memory_trials trials(1);
  while (trials.next()) {
    std::unique_ptr<BX_INSTANCE> root(test::make("R", 0, 0, 9, 9));
    BX_INSTANCE* last = root.get();
    for (int i = 0; i < 300; ++i) {
      auto* next = new derived_instance("N", 0, 0, 9, 9);
      last->addinstance(next);
      add(*next, "PLAIN", 0, 0, 1, 1);
      last = next;
    }
    EXPECT_EQ(trials.run([&] {
      root.reset();
      return true;
    }),
              memory_end::gave_true);
  }
  note(trials);
}

// Names that are freed by their flags are gathered first. All of these are the table's.
TEST(TreeMemory, DestructionWithNamesByTheirFlagsWorksWithoutAny) {
  const test::flow by_flags(1);
  memory_trials trials(3);
  while (trials.next()) {
    auto db = std::make_unique<BX_DB>("D", 0, 0, 99, 99);
    db->addinstance(new_subtree(0).release());
    EXPECT_EQ(trials.run([&] {
      db.reset();
      return true;
    }),
              memory_end::gave_true);
  }
  note(trials);
}

}  // namespace
