// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Searches and comparisons over whole trees, held against plain recursion.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "record_bytes.h"

namespace {

using qelmodb::found_instance;
using qelmodb::found_wire;
using test::content;
using test::form;

/// Every instance with its path and depth, by recursion.
struct place {
  BX_INSTANCE* inst;
  std::string path;
  int depth;
};

void list(BX_INSTANCE& inst, const std::string& above, int depth, std::vector<place>& places) {
  const std::string path = (depth == 0 ? "" : above + "/") + (inst.name != nullptr ? inst.name : "");
  places.push_back({&inst, path, depth});
  for (BX_INSTANCE* child : inst.instances) {
    if (child != nullptr) list(*child, path, depth + 1, places);
  }
}

std::vector<place> list(BX_INSTANCE& root) {
  std::vector<place> places;
  list(root, "", 0, places);
  return places;
}

template <class Found>
void expect_found(const std::vector<Found>& found, const std::vector<place>& expected) {
  ASSERT_EQ(found.size(), expected.size());
  for (std::size_t i = 0; i < found.size(); ++i) {
    EXPECT_EQ(found[i].inst, expected[i].inst);
    EXPECT_EQ(found[i].path, expected[i].path);
  }
}

class WholeTrees : public testing::TestWithParam<unsigned> {
 protected:
  WholeTrees() : db_("TOP", -20, -20, 20, 20) {
    std::mt19937 random(GetParam());
    test::grow_random_tree(db_, random, 120);
    places_ = list(db_);
  }

  std::vector<place> select(const std::function<bool(const BX_INSTANCE&)>& wanted) const {
    std::vector<place> selected;
    std::copy_if(places_.begin(), places_.end(), std::back_inserter(selected),
                 [&](const place& p) { return wanted(*p.inst); });
    return selected;
  }

  std::set<std::string> texts() const {
    std::set<std::string> texts;
    for (const place& p : places_) {
      texts.insert(p.inst->name);
      for (const BX_WIRE& wire : p.inst->wires) texts.insert(wire.name);
    }
    return texts;
  }

  BX_DB db_;
  std::vector<place> places_;
};

TEST_P(WholeTrees, FindInstancesFindsEveryInstanceOfTheName) {
  for (const std::string& name : texts()) {
    expect_found(qelmodb::find_instances(db_, name.c_str()),
                 select([&](const BX_INSTANCE& inst) { return name == inst.name; }));
  }
  EXPECT_TRUE(qelmodb::find_instances(db_, "no such name").empty());
}

TEST_P(WholeTrees, FindWiresFindsEveryWireOfTheName) {
  for (const std::string& name : texts()) {
    std::vector<place> expected;
    std::vector<const BX_WIRE*> wires;
    for (const place& p : places_) {
      for (const BX_WIRE& wire : p.inst->wires) {
        if (name != wire.name) continue;
        expected.push_back(p);
        wires.push_back(&wire);
      }
    }
    const std::vector<found_wire> found = qelmodb::find_wires(db_, name.c_str());
    expect_found(found, expected);
    for (std::size_t i = 0; i < found.size(); ++i) EXPECT_EQ(found[i].wire, wires[i]);
  }
}

TEST_P(WholeTrees, InstancesAtFindsEveryRectangleThatCoversThePoint) {
  for (bx_long x = -22; x <= 30; x += 4) {
    for (bx_long y = -22; y <= 30; y += 4) {
      expect_found(qelmodb::instances_at(db_, x, y), select([&](const BX_INSTANCE& inst) {
                     return inst.xmin <= x && x <= inst.xmax && inst.ymin <= y && y <= inst.ymax;
                   }));
    }
  }
}

TEST_P(WholeTrees, PathOfJoinsTheNamesFromTheRoot) {
  for (const place& p : places_) EXPECT_EQ(qelmodb::path_of(db_, *p.inst), p.path);
  const BX_INSTANCE stranger("S", 0, 0, 1, 1);
  EXPECT_EQ(qelmodb::path_of(db_, stranger), "");
}

TEST_P(WholeTrees, MeasureCountsAndCoversEverything) {
  auto* matrix = new BX_INSTANCE("BASIC_ASS", -20, 40, 77, 50);
  const BX_WIRE wire("W", 1, 2);
  matrix->addwire(&wire);
  db_.addinstance(matrix);
  places_ = list(db_);
  const qelmodb::tree_size size = qelmodb::measure(db_);
  std::int64_t wires = 0;
  int depth = 0;
  UT_EXTREMA box = db_;
  for (const place& p : places_) {
    wires += p.inst->getnumwires();
    depth = std::max(depth, p.depth);
    box.xmin = std::min(box.xmin, p.inst->xmin);
    box.xmax = std::max(box.xmax, p.inst->xmax);
    box.ymin = std::min(box.ymin, p.inst->ymin);
    box.ymax = std::max(box.ymax, p.inst->ymax);
  }
  EXPECT_EQ(size.instances, static_cast<std::int64_t>(places_.size()));
  EXPECT_EQ(size.wires, wires);
  EXPECT_EQ(size.depth, depth);
  EXPECT_EQ(size.names, static_cast<std::int64_t>(texts().size()));
  EXPECT_EQ(size.basic_ass, 1);
  EXPECT_EQ(size.basic_ass_wires, 1);
  EXPECT_EQ(size.box.xmin, box.xmin);
  EXPECT_EQ(size.box.xmax, box.xmax);
  EXPECT_EQ(size.box.ymin, box.ymin);
  EXPECT_EQ(size.box.ymax, box.ymax);
}

TEST_P(WholeTrees, SameTreeSeesEverySingleChange) {
  const test::separator keep('$');
  BX_DB other;
  ASSERT_TRUE(test::loaded(other, test::dumped(db_, form::text)));
  const auto differs = [&](content what) { return !qelmodb::same_tree(db_, other, what); };
  EXPECT_FALSE(differs(content::database));
  for (const place& p : list(other)) {
    for (bx_long* field : {&p.inst->xmin, &p.inst->xmax, &p.inst->ymin, &p.inst->ymax}) {
      ++*field;
      EXPECT_TRUE(differs(content::database));
      EXPECT_TRUE(differs(content::grid));
      --*field;
    }
    char other_name[] = "another name";
    char* name = p.inst->name;
    p.inst->name = other_name;
    EXPECT_TRUE(differs(content::grid));
    p.inst->name = name;
  }
  EXPECT_FALSE(differs(content::database));
}

INSTANTIATE_TEST_SUITE_P(RandomTrees, WholeTrees, testing::Values(1U, 2U, 3U));

TEST(SameTree, LeavesWiresOutOfAGrid) {
  BX_INSTANCE a("R", 0, 0, 9, 9);
  BX_INSTANCE b("R", 0, 0, 9, 9);
  const BX_WIRE wire("W", 1, 2);
  a.addwire(&wire);
  EXPECT_FALSE(qelmodb::same_tree(a, b, content::database));
  EXPECT_TRUE(qelmodb::same_tree(a, b, content::grid));
  const BX_WIRE moved("W", 1, 3);
  b.addwire(&moved);
  EXPECT_FALSE(qelmodb::same_tree(a, b, content::database));
  b.getwire(0)->nodey = 2;
  EXPECT_TRUE(qelmodb::same_tree(a, b, content::database));
}

TEST(SameTree, SeesAChildMoreAndTakesMissingNamesForEmptyOnes) {
  BX_INSTANCE a(nullptr, 0, 0, 9, 9);
  BX_INSTANCE b("", 0, 0, 9, 9);
  EXPECT_TRUE(qelmodb::same_tree(a, b, content::database));
  a.addinstance(new BX_INSTANCE("C", 0, 0, 1, 1));
  EXPECT_FALSE(qelmodb::same_tree(a, b, content::database));
  EXPECT_FALSE(qelmodb::same_tree(b, a, content::grid));
}

/// What each form may object to, one name at a time.
class DumpObjections : public testing::Test {
 protected:
  DumpObjections() : db_("TOP", 0, 0, 9, 9) {}

  void add(const std::string& name) { db_.addinstance(new BX_INSTANCE(name.c_str(), 0, 0, 1, 1)); }

  std::size_t count(form as, content what) const { return qelmodb::dump_objections(db_, as, what).size(); }

  BX_DB db_;
};

TEST_F(DumpObjections, AreNoneForASoundDatabase) {
  test::fill_rich_database(db_);
  for (const form as : {form::text, form::binary}) {
    EXPECT_EQ(count(as, content::database), 0U);
    EXPECT_EQ(count(as, content::grid), 0U);
  }
}

TEST_F(DumpObjections, TellNamesOfAHundredCharactersExceptInBinaryGrids) {
  add(std::string(99, 'a'));
  EXPECT_EQ(count(form::text, content::database), 0U);
  add(std::string(100, 'b'));
  const auto objections = qelmodb::dump_objections(db_, form::text, content::database);
  ASSERT_EQ(objections.size(), 1U);
  EXPECT_EQ(objections[0].path, "TOP/" + std::string(100, 'b'));
  EXPECT_NE(objections[0].reason.find("100 characters"), std::string::npos);
  EXPECT_EQ(count(form::text, content::grid), 1U);
  EXPECT_EQ(count(form::binary, content::database), 1U);
  EXPECT_EQ(count(form::binary, content::grid), 0U);
}

TEST_F(DumpObjections, TellNamesOf255CharactersInBinaryGrids) {
  add(std::string(254, 'a'));
  EXPECT_EQ(count(form::binary, content::grid), 0U);
  add(std::string(255, 'b'));
  EXPECT_EQ(count(form::binary, content::grid), 1U);
}

TEST_F(DumpObjections, TellDoubleQuotesInText) {
  add("a\"b");
  EXPECT_EQ(count(form::text, content::database), 1U);
  EXPECT_EQ(count(form::text, content::grid), 1U);
  EXPECT_EQ(count(form::binary, content::database), 0U);
  EXPECT_EQ(count(form::binary, content::grid), 0U);
}

TEST_F(DumpObjections, TellWiresWithTheirPathsButNotInGrids) {
  const BX_WIRE wire("W\"", 1, 2);
  add("C");
  db_.getinstance(0)->addwire(&wire);
  const auto objections = qelmodb::dump_objections(db_, form::text, content::database);
  ASSERT_EQ(objections.size(), 1U);
  EXPECT_EQ(objections[0].path, "TOP/C/W\"");
  EXPECT_EQ(count(form::text, content::grid), 0U);
}

TEST_F(DumpObjections, TellStringsOutsideTheNameTableWhereNamesAreReferences) {
  char outside[] = "OUT";
  add("C");
  char* inside = db_.getinstance(0)->name;
  db_.getinstance(0)->name = outside;
  EXPECT_EQ(count(form::binary, content::database), 1U);
  EXPECT_EQ(count(form::text, content::database), 0U);
  EXPECT_EQ(count(form::binary, content::grid), 0U);
  db_.getinstance(0)->name = inside;
}

TEST_F(DumpObjections, TellMissingNamesWhereNamesAreSpelledOut) {
  add("C");
  char* inside = db_.getinstance(0)->name;
  db_.getinstance(0)->name = nullptr;
  EXPECT_EQ(count(form::text, content::database), 1U);
  EXPECT_EQ(count(form::binary, content::grid), 1U);
  EXPECT_EQ(count(form::binary, content::database), 0U);
  db_.getinstance(0)->name = inside;
}

TEST_F(DumpObjections, AreNoMoreThanAskedFor) {
  for (int i = 0; i < 20; ++i) add(std::string(100, 'b') + std::to_string(i));
  for (const std::size_t most : {std::size_t{0}, std::size_t{1}, std::size_t{7}, std::size_t{20}, std::size_t{100}}) {
    EXPECT_EQ(qelmodb::dump_objections(db_, form::text, content::database, most).size(),
              std::min<std::size_t>(most, 20));
  }
}

/// Holds the objections against the truth: what comes back from a file differs exactly where there are some.
TEST(DumpObjectionsAgainstFiles, NoneMeansThatTheTreeComesBack) {
  const test::separator keep('$');
  std::mt19937 random(4711);
  int objected = 0;
  for (int round = 0; round < 200; ++round) {
    BX_DB db("TOP", 0, 0, 9, 9);
    const std::size_t length = 90 + random() % 20;
    std::string name(length, 'x');
    if (random() % 4 == 0) name[random() % length] = '"';
    db.addinstance(new BX_INSTANCE(name.c_str(), 0, 0, 1, 1));
    for (const form as : {form::text, form::binary}) {
      for (const content what : {content::database, content::grid}) {
        const bool none = qelmodb::dump_objections(db, as, what).empty();
        const std::string bytes = test::dumped(db, as, what);
        bool back = qelmodb::check_bytes(bytes, what).loadable();
        if (back) {
          BX_DB again;
          back = test::loaded(again, bytes, what) && qelmodb::same_tree(db, again, what);
        }
        EXPECT_EQ(back, none) << name;
        objected += none ? 0 : 1;
      }
    }
  }
  EXPECT_GT(objected, 100);
}

}  // namespace
