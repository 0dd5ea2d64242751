// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Every answer of the index against a plain walk.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <thread>

#include "exposed.h"
#include "qelmoext.h"
#include "qelmoindex.h"
#include "ut_string.h"

namespace {

using qelmodb::placed_wire;
using qelmodb::tree_index;
using instance_list = std::vector<BX_INSTANCE*>;

// A walk in which the order of things is plain to see.
void walk(BX_INSTANCE& inst, instance_list& all) {
  all.push_back(&inst);
  for (BX_INSTANCE* child : inst.instances) {
    if (child != nullptr) walk(*child, all);
  }
}

instance_list walked(BX_INSTANCE& root) {
  instance_list all;
  walk(root, all);
  return all;
}

template <class Keep>
instance_list chosen(const instance_list& all, Keep keep) {
  instance_list kept;
  std::copy_if(all.begin(), all.end(), std::back_inserter(kept), keep);
  return kept;
}

instance_list list_of(std::span<BX_INSTANCE* const> span) { return {span.begin(), span.end()}; }

class plain_answers {
 public:
  explicit plain_answers(BX_INSTANCE& root) : all_(walked(root)) {}

  const instance_list& all() const { return all_; }

  instance_list named(const std::string& name) const {
    return chosen(all_, [&](const BX_INSTANCE* inst) { return name == ut_text(inst->name); });
  }

  instance_list meeting(const UT_EXTREMA& box) const {
    return chosen(all_, [&](const BX_INSTANCE* inst) {
      return inst->xmin <= box.xmax && inst->xmax >= box.xmin && inst->ymin <= box.ymax && inst->ymax >= box.ymin;
    });
  }

  std::vector<placed_wire> at_node(bx_long x, bx_long y) const {
    std::vector<placed_wire> found;
    for (BX_INSTANCE* inst : all_) {
      for (BX_WIRE& wire : inst->wires) {
        if (wire.nodex == x && wire.nodey == y) found.push_back({&wire, inst});
      }
    }
    return found;
  }

  static BX_WIRE* wire(const BX_INSTANCE& inst, const std::string& name, const BX_WIRE* after) {
    bx_long i = after != nullptr ? inst.wires.intgetindex(after) + 1 : 0;
    for (; i < inst.getnumwires(); ++i) {
      if (name == ut_text(inst.wires[i].name)) return &inst.wires[i];
    }
    return nullptr;
  }

 private:
  instance_list all_;
};

void expect_walk(const plain_answers& plain, const tree_index& index, const BX_INSTANCE& root) {
  const instance_list& all = plain.all();
  ASSERT_EQ(list_of(index.instances()), all);
  for (std::size_t i = 0; i < all.size(); ++i) {
    ASSERT_EQ(index.next(*all[i]), i + 1 < all.size() ? all[i + 1] : nullptr);
    ASSERT_EQ(index.next_past(*all[i]), index.next(*walked(*all[i]).back()));
    ASSERT_EQ(index.number_of(*all[i]), i);
    ASSERT_EQ(index.path(*all[i]), qelmodb::path_of(root, *all[i]));
    for (const BX_INSTANCE* child : all[i]->instances) {
      if (child == nullptr) continue;
      ASSERT_EQ(index.parent(*child), all[i]);
      ASSERT_EQ(index.depth_of(*child), index.depth_of(*all[i]) + 1);
    }
  }
  EXPECT_EQ(index.parent(root), nullptr);
  EXPECT_EQ(index.depth_of(root), 0);
}

std::set<std::string> all_names(const plain_answers& plain) {
  std::set<std::string> names{"", "no such name", "$"};
  for (const BX_INSTANCE* inst : plain.all()) {
    names.insert(ut_text(inst->name));
    for (const BX_WIRE& wire : inst->wires) names.insert(ut_text(wire.name));
  }
  return names;
}

void expect_names(const plain_answers& plain, const tree_index& index) {
  for (const std::string& name : all_names(plain)) {
    ASSERT_EQ(list_of(index.instances_named(name.c_str())), plain.named(name)) << name;
    for (const BX_INSTANCE* inst : plain.all()) {
      ASSERT_EQ(index.wire(*inst, name.c_str()), plain.wire(*inst, name, nullptr)) << name;
      for (const BX_WIRE& after : inst->wires) {
        ASSERT_EQ(index.wire(*inst, name.c_str(), &after), plain.wire(*inst, name, &after)) << name;
      }
    }
  }
}

UT_EXTREMA spanned(bx_long x1, bx_long y1, bx_long x2, bx_long y2) {
  return {std::min(x1, x2), std::max(x1, x2), std::min(y1, y2), std::max(y1, y2)};
}

// Places that matter: edges, nodes, what lies beside them, and anything.
class places {
 public:
  places(const plain_answers& plain, std::mt19937& random) : random_(random) {
    for (const BX_INSTANCE* inst : plain.all()) {
      points_.insert(points_.end(), {{inst->xmin, inst->ymin}, {inst->xmax, inst->ymax}});
      for (const BX_WIRE& wire : inst->wires) points_.emplace_back(wire.nodex, wire.nodey);
    }
  }

  BX_POINT operator()() {
    if (random_() % 8 == 0) return {static_cast<bx_long>(random_()), static_cast<bx_long>(random_())};
    const BX_POINT& some = points_[random_() % points_.size()];
    if (random_() % 2 == 0) return some;
    return {beside(some.x), beside(random_() % 2 == 0 ? some.y : points_[random_() % points_.size()].y)};
  }

 private:
  bx_long beside(bx_long value) { return static_cast<bx_long>(static_cast<bx_ulong>(value) + random_() % 3 - 1); }

  std::mt19937& random_;
  std::vector<BX_POINT> points_;
};

void expect_places(const plain_answers& plain, const tree_index& index, std::mt19937& random, int questions) {
  places place(plain, random);
  instance_list found{nullptr};
  std::vector<placed_wire> wires{{nullptr, nullptr}};
  for (int i = 0; i < questions; ++i) {
    const BX_POINT a = place();
    const BX_POINT b = place();
    index.instances_at(a.x, a.y, found);
    ASSERT_EQ(found, plain.meeting(spanned(a.x, a.y, a.x, a.y))) << a.x << " " << a.y;
    index.instances_meeting(a.x, a.y, b.x, b.y, found);
    ASSERT_EQ(found, plain.meeting(spanned(a.x, a.y, b.x, b.y)));
    index.wires_at(a.x, a.y, wires);
    ASSERT_EQ(wires, plain.at_node(a.x, a.y)) << a.x << " " << a.y;
  }
}

void expect_all(BX_INSTANCE& root, std::mt19937& random, int questions = 100) {
  const plain_answers plain(root);
  const tree_index index(root);
  expect_walk(plain, index, root);
  expect_names(plain, index);
  expect_places(plain, index, random, questions);
}

// Everything that a tree may be by hand or by a file of warnings: no order, no names, missing children, rectangles
// inside out, coordinates up to the ends of their range.
class wild_tree {
 public:
  explicit wild_tree(std::mt19937& random) : random_(random), spread_(number(0, 3) == 0 ? INT32_MAX : number(1, 300)) {}

  std::unique_ptr<BX_DB> make() {
    auto db = std::make_unique<BX_DB>("ROOT", 0, 0, 1, 1);
    std::vector<BX_INSTANCE*> all{db.get()};
    const bx_long kinds = number(1, 4);
    for (bx_long i = number(0, 150); i > 0; --i) {
      BX_INSTANCE* parent = all[static_cast<std::size_t>(number(0, static_cast<bx_long>(all.size()) - 1))];
      auto* inst = new BX_INSTANCE("X", 0, 0, 0, 0);
      test::bind(*inst, db.get());
      fill(*inst, number(0, kinds - 1), *db);
      parent->instances.a_add(&inst);
      all.push_back(inst);
      BX_INSTANCE* nobody = nullptr;
      if (number(0, 9) == 0) parent->instances.a_add(&nobody);
    }
    return db;
  }

 private:
  bx_long number(bx_long from, bx_long to) { return std::uniform_int_distribution<bx_long>(from, to)(random_); }
  bx_long coordinate() { return number(0, 30) == 0 ? INT32_MIN : number(-spread_, spread_); }

  void fill(BX_INSTANCE& inst, bx_long kind, BX_DB& db) {
    inst.name = number(0, 9) == 0 ? nullptr : test::intern(db, ("KIND" + std::to_string(kind)).c_str());
    inst.xmin = coordinate();
    inst.ymin = coordinate();
    inst.xmax = number(0, 9) == 0 ? coordinate() : wide(inst.xmin);
    inst.ymax = number(0, 9) == 0 ? coordinate() : wide(inst.ymin);
    // Like instances share their names; those of the last kind have their own, in no order.
    const bx_long wires = kind == 0 ? 0 : kind * number(1, 2) * 9;
    for (bx_long i = 0; i < wires; ++i) {
      BX_WIRE wire;
      wire.nodex = coordinate();
      wire.nodey = number(0, 1) == 0 ? inst.ymin : coordinate();
      const bx_long label = kind == 3 ? number(0, 40) : i / 2;
      if (label != 0) wire.name = test::intern(db, ("W" + std::to_string(label)).c_str());
      wire.nameborrowed = true;
      inst.wires.a_add(&wire);
    }
  }

  bx_long wide(bx_long from) {
    return static_cast<bx_long>(std::min<std::int64_t>(std::int64_t{from} + number(0, 60), INT32_MAX));
  }

  std::mt19937& random_;
  bx_long spread_;
};

class TreeIndexModel : public testing::TestWithParam<unsigned> {
 protected:
  std::mt19937 random{GetParam()};
};

TEST_P(TreeIndexModel, AnswersAsAWalkOverAnOrderlyTreeDoes) {
  for (int round = 0; round < 12; ++round) {
    BX_DB db("ROOT", 0, 0, 40, 40);
    test::grow_random_tree(db, random, 150);
    if (round % 2 == 1) db.convert_hierarchy();
    expect_all(db, random);
  }
}

TEST_P(TreeIndexModel, AnswersAsAWalkOverAWildTreeDoes) {
  for (int round = 0; round < 40; ++round) {
    const std::unique_ptr<BX_DB> db = wild_tree(random).make();
    expect_all(*db, random, 200);
  }
}

// Without a database each instance has strings of its own.
TEST_P(TreeIndexModel, AnswersAsAWalkOverATreeOfItsOwnNamesDoes) {
  for (int round = 0; round < 6; ++round) {
    BX_INSTANCE root("ROOT", 0, 0, 40, 40);
    test::grow_random_tree(root, random, 100);
    expect_all(root, random);
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, TreeIndexModel, testing::Values(1U, 2U, 3U));

TEST(TreeIndex, OfASingleInstanceAnswers) {
  BX_INSTANCE root("ROOT", 0, 0, 2, 2);
  std::mt19937 random(1);
  expect_all(root, random);
}

TEST(TreeIndex, KnowsNothingOfInstancesOutsideOfIt) {
  BX_INSTANCE root("ROOT", 0, 0, 2, 2);
  BX_INSTANCE* inside = test::add(root, "INSIDE", 0, 0, 1, 1);
  test::add_wire(*inside, "W");
  BX_INSTANCE other("ROOT", 0, 0, 2, 2);
  test::add_wire(other, "W");
  const tree_index below(*inside);
  EXPECT_EQ(below.next(root), nullptr);
  EXPECT_EQ(below.next_past(other), nullptr);
  EXPECT_EQ(below.parent(other), nullptr);
  EXPECT_EQ(below.number_of(other), tree_index::no_number);
  EXPECT_EQ(below.depth_of(root), 0);
  EXPECT_EQ(below.parent(*inside), nullptr);
  EXPECT_EQ(below.path(other), "");
  EXPECT_EQ(below.path(*inside), "INSIDE");
  EXPECT_EQ(below.wire(other, "W"), nullptr);
  EXPECT_EQ(below.wire(*inside, "W", other.getwire(0)), nullptr);
  EXPECT_EQ(below.wire(*inside, "W"), inside->getwire(0));
}

TEST(TreeIndex, TakesAMissingNameForAnEmptyOne) {
  BX_DB db("", 0, 0, 1, 1);
  BX_INSTANCE* nameless = test::add(db, nullptr, 0, 0, 1, 1);
  test::add_wire(*nameless, "");
  const tree_index index(db);
  EXPECT_EQ(list_of(index.instances_named(nullptr)), (instance_list{&db, nameless}));
  EXPECT_EQ(index.wire(*nameless, nullptr), nameless->getwire(0));
}

TEST(TreeIndex, FindsWiresOfAnInstanceThatHasVeryMany) {
  BX_DB db("ROOT", 0, 0, 1, 1);
  BX_INSTANCE* inst = test::add(db, "LARGE", 0, 0, 1, 1);
  const bx_long count = 5000;
  inst->wires.getaddr(count - 1);
  for (bx_long i = 0; i < count; ++i) {
    // Every seventh stands at one node, in every chunk.
    inst->wires[i].nodex = i % 7 == 0 ? 3 : i * 11;
    inst->wires[i].nodey = i % 7 == 0 ? 3 : i % 13;
    inst->wires[i].nameborrowed = true;
  }
  const plain_answers plain(db);
  const tree_index index(db);
  std::vector<placed_wire> found;
  index.wires_at(3, 3, found);
  EXPECT_GT(found.size(), 700U);
  EXPECT_EQ(found, plain.at_node(3, 3));
  for (bx_long i = 1; i < count; i += 50) {
    index.wires_at(i * 11, i % 13, found);
    ASSERT_EQ(found, plain.at_node(i * 11, i % 13));
  }
}

// Runs of wires are taken over from one instance to the next that has the same names.
TEST(TreeIndex, FindsWiresOfLikeInstancesWhoseWiresLieElsewhere) {
  BX_DB db("ROOT", 0, 0, 1, 1);
  const qelmodb::name_batch batch(db);
  constexpr bx_long least = -2147483647 - 1;
  constexpr bx_long places[] = {0, 5, 3000, least, 2147483647};
  for (bx_long k = 0; k < 60; ++k) {
    BX_INSTANCE* inst = test::add(db, "LIKE", k, 0, k + 1, 1);
    for (bx_long i = 0; i < 40; ++i) {
      const std::string name = "W" + std::to_string(10 + i);
      // Some lie apart from the others, each time others.
      const bx_long there = (i + k) % 9 == 0 ? places[(i + k) % 5] : k + i % 4;
      const BX_WIRE wire(name.c_str(), there, i % 3);
      inst->addwire(&wire);
    }
  }
  const plain_answers plain(db);
  const tree_index index(db);
  std::vector<placed_wire> found;
  for (const BX_INSTANCE* inst : plain.all()) {
    for (const BX_WIRE& wire : inst->wires) {
      index.wires_at(wire.nodex, wire.nodey, found);
      ASSERT_EQ(found, plain.at_node(wire.nodex, wire.nodey)) << wire.nodex << ", " << wire.nodey;
      ASSERT_EQ(index.wire(*inst, wire.name), &wire);
    }
  }
}

TEST(TreeIndex, OfATreeWhoseFirstChildIsMuchLargerThanTheOthersIsMade) {
  BX_INSTANCE root("ROOT", 0, 0, 9, 9);
  constexpr bx_long count = 150000;
  root.instances.a_reserve(count);
  for (bx_long i = 0; i < count; ++i) test::add(root, "CHILD", i, 0, i + 1, 1);
  BX_INSTANCE& first = *root.getinstance(0);
  first.instances.a_reserve(count);
  for (bx_long i = 0; i < count; ++i) test::add(first, "GRANDCHILD", i, 0, i + 1, 1);
  const tree_index index(root);
  EXPECT_EQ(list_of(index.instances()), walked(root));
}

TEST(TreeIndex, OfADeepTreeNeedsNoStack) {
  BX_INSTANCE root("ROOT", 0, 0, 9, 9);
  BX_INSTANCE* last = &root;
  for (int i = 0; i < 100000; ++i) last = test::add(*last, "LEVEL", 0, 0, 9, 9);
  const tree_index index(root);
  EXPECT_EQ(index.next_past(root), nullptr);
  EXPECT_EQ(index.next(root), root.getinstance(0));
  EXPECT_EQ(index.instances().back(), last);
  EXPECT_EQ(index.path(*last).size(), 4 + 100000 * std::string("/LEVEL").size());
  instance_list found;
  index.instances_at(9, 9, found);
  EXPECT_EQ(found.size(), 100001U);
}

TEST(TreeIndex, CanBeMoved) {
  BX_DB db("ROOT", 0, 0, 1, 1);
  test::add(db, "A", 0, 0, 1, 1);
  tree_index first(db);
  tree_index second(std::move(first));
  EXPECT_EQ(second.instances().size(), 2U);
  BX_INSTANCE other("OTHER", 0, 0, 1, 1);
  second = tree_index(other);
  EXPECT_EQ(second.instances().size(), 1U);
}

TEST(TreeIndex, AnswersManyThreadsAtOnce) {
  std::mt19937 random(7);
  const std::unique_ptr<BX_DB> db = wild_tree(random).make();
  const plain_answers plain(*db);
  const tree_index index(*db);
  std::vector<std::thread> threads;
  for (unsigned seed = 1; seed <= 4; ++seed) {
    threads.emplace_back([&, seed] {
      std::mt19937 own(seed);
      expect_places(plain, index, own, 300);
      expect_names(plain, index);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

// What sharing is for: a device of like instances costs a few bytes a wire.
TEST(TreeIndex, TakesLittleMemoryWhereInstancesAreAlike) {
  BX_DB db("ROOT", 0, 0, 1, 1);
  constexpr bx_long tiles = 1000;
  for (bx_long i = 0; i < tiles; ++i) test::add(db, "TILE", 0, i * 10, 9, i * 10 + 9);
  std::vector<char*> names;
  for (bx_long w = 0; w < 100; ++w) names.push_back(test::intern(db, ("W" + std::to_string(w)).c_str()));
  for (BX_INSTANCE* tile : db.instances) {
    for (bx_long w = 0; w < 100; ++w) {
      BX_WIRE wire;
      wire.name = names[static_cast<std::size_t>(w)];
      wire.nameborrowed = true;
      wire.nodex = tile->xmin + w % 10;
      wire.nodey = tile->ymin + w / 10;
      tile->wires.a_add(&wire);
    }
  }
  const tree_index index(db);
  EXPECT_LT(index.memory(), tiles * std::size_t{600});
  EXPECT_GT(index.memory(), tiles * std::size_t{100});
}

}  // namespace
