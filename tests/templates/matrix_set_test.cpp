// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The template set of switch matrices: what the build makes of given matrices, lookups, faults.
#include <gtest/gtest.h>

#include <thread>

#include "plain_compressed_file.h"
#include "plain_matrix_set.h"
#include "template_faults.h"

namespace {

using test::add;
using test::add_wire;
using test::fault_of;

struct wire_at {
  const char* name;
  bx_long x;
  bx_long y;
};

class MatrixSet : public testing::Test {
 protected:
  BX_INSTANCE* put(bx_long x, bx_long y, std::initializer_list<wire_at> wires) {
    BX_INSTANCE* inst = add(db, "BASIC_ASS", x, y, x + 10, y + 10);
    for (const wire_at& wire : wires) add_wire(*inst, wire.name, wire.x, wire.y);
    return inst;
  }

  /// Two columns and two rows of matrices with one wire each, at these distances from their corners.
  void put_square(bx_long dx, bx_long dy) {
    for (const bx_long x : {0, 10}) {
      for (const bx_long y : {0, 8}) put(x, y, {{"w", x + dx, y + dy}});
    }
  }

  BASIC_ASS_TEMPLATE& build() {
    set.buildme_sm(&db);
    return set;
  }

  const WIRE_TEMPLATE_SM& wire(const char* name) const {
    for (int i = 0; i < set.num_wire_template; ++i) {
      if (std::string(set.wire_templates[i].getname()) == name) return set.wire_templates[i];
    }
    throw std::out_of_range(name);
  }

  BX_DB db{"D", 0, 0, 100, 100};
  BASIC_ASS_TEMPLATE set;
};

TEST_F(MatrixSet, DefaultsAreEmptyAndDestroyedWithoutFreeingAnything) {
  const BASIC_ASS_TEMPLATE none;
  EXPECT_EQ(none.getname(), nullptr);
  EXPECT_EQ(none.num_wirelist, 0);
  EXPECT_EQ(none.ins_points, nullptr);
  const WIRE_TEMPLATE_SM fresh;
  EXPECT_EQ(fresh.span_dir, 2);
  EXPECT_EQ(fresh.absolute, 0);
  EXPECT_EQ(fresh.offset_maps, nullptr);
}

TEST_F(MatrixSet, EqualDistancesTakeOneMapWithOneRun) {
  for (const bx_long x : {0, 10, 20}) {
    for (const bx_long y : {0, 8}) put(x, y, {{"w", x + 3, y + 4}});
  }
  build();
  const WIRE_TEMPLATE_SM& w = wire("w");
  EXPECT_EQ(w.span_dir, 2);
  EXPECT_EQ(w.num_offset_map, 1);
  EXPECT_EQ(w.index_map.size, 2);
  EXPECT_EQ(w.index_map.ranges, (std::map<std::uint16_t, std::uint16_t>{{0, 0}}));
  EXPECT_EQ(w.offset_maps[0].size, 3);
  EXPECT_EQ(w.offset_maps[0].ranges, (std::map<std::uint16_t, BX_POINT>{{0, {3, 4}}}));
  EXPECT_EQ(set.restore_wire_sm(2, 1, 0, 0), BX_POINT(23, 12));
}

TEST_F(MatrixSet, FirstOfEquallyRichMatricesIsTheModel) {
  BX_INSTANCE* first = put(0, 0, {{"w", 1, 1}});
  put(10, 0, {{"w", 11, 1}});
  build();
  EXPECT_EQ(set.name, first->name);
  EXPECT_EQ(set.wire_templates[0].name, first->wires[0].name);
  EXPECT_EQ(set.num_wire_template, 1);
}

TEST_F(MatrixSet, WireListsDifferByNamesAndByCountAndAreNumberedColumnByColumn) {
  put(0, 0, {{"a", 0, 0}, {"b", 0, 0}, {"c", 0, 0}});
  put(0, 8, {{"a", 0, 0}, {"c", 0, 0}});
  put(10, 0, {{"a", 0, 0}});
  put(10, 8, {{"a", 5, 5}, {"c", 5, 5}});
  put(20, 0, {{"a", 0, 0}, {"b", 0, 0}});
  build();
  ASSERT_EQ(set.num_wirelist, 4);
  EXPECT_EQ(set.getnumwires(0), 3);
  EXPECT_EQ(set.getnumwires(1), 2);
  EXPECT_EQ(set.getnumwires(2), 1);
  EXPECT_STREQ(set.getwirename_sm(1, 1), "c");
  EXPECT_STREQ(set.getwirename_sm(3, 1), "b");
  EXPECT_EQ(set.get_wire_list_idx_sm(db.getinstance("BASIC_ASS", nullptr)), 0);
}

TEST_F(MatrixSet, NodeThatTheNextColumnHasUnderTheSameNameIsAbsolute) {
  put(0, 0, {{"w", 10, 2}});
  put(10, 0, {{"w", 10, 2}});
  put(20, 0, {{"w", 10, 2}});
  build();
  EXPECT_EQ(wire("w").span_dir, 0);
  EXPECT_EQ(wire("w").absolute, 1);
  EXPECT_EQ(wire("w").offset_maps[0].ranges, (std::map<std::uint16_t, BX_POINT>{{0, {10, 2}}}));
  for (int c = 0; c < 3; ++c) EXPECT_EQ(set.restore_wire_sm(c, 0, 0, 0), BX_POINT(10, 2));
}

TEST_F(MatrixSet, NodeThatTheNextRowHasUnderTheSameNameKeepsItsY) {
  put(0, 0, {{"w", 2, 8}});
  put(0, 8, {{"w", 2, 8}});
  build();
  EXPECT_EQ(wire("w").span_dir, 1);
  EXPECT_EQ(wire("w").absolute, 1);
  EXPECT_EQ(wire("w").offset_maps[0].ranges, (std::map<std::uint16_t, BX_POINT>{{0, {2, 8}}}));
  EXPECT_EQ(set.restore_wire_sm(0, 1, 0, 0), BX_POINT(2, 8));
}

TEST_F(MatrixSet, NodeUnderAnotherNamePassesItsDirectionOn) {
  put(0, 0, {{"begin", 10, 2}, {"end", 1, 1}});
  put(10, 0, {{"begin", 20, 2}, {"end", 10, 2}});
  build();
  EXPECT_EQ(wire("begin").span_dir, 0);
  EXPECT_EQ(wire("begin").absolute, 0);
  EXPECT_EQ(wire("end").span_dir, 0);
  EXPECT_EQ(wire("end").absolute, 0);
}

TEST_F(MatrixSet, InheritedDirectionIsReplacedByTheTemplatesOwn) {
  put(0, 0, {{"a", 10, 2}, {"b", 3, 8}});
  put(10, 0, {{"a", 20, 2}, {"b", 10, 2}});
  put(0, 8, {{"a", 3, 8}, {"b", 3, 16}});
  build();
  EXPECT_EQ(wire("b").span_dir, 1) << "its own turn came last";
  EXPECT_EQ(wire("a").span_dir, 1) << "inherited from b, whose partner it is in the next row";
}

TEST_F(MatrixSet, NodeSharedWithBothNeighboursCountsForTheNextColumn) {
  put(0, 0, {{"w", 10, 8}});
  put(10, 0, {{"w", 10, 8}});
  put(0, 8, {{"w", 10, 8}});
  build();
  EXPECT_EQ(wire("w").span_dir, 0);
}

TEST_F(MatrixSet, MissingPlacesAndMissingWiresLeaveNoPoint) {
  put(0, 0, {{"a", 1, 1}, {"b", 2, 2}});
  put(20, 0, {{"a", 21, 1}});
  put(10, 8, {{"a", 11, 9}, {"b", 12, 10}});
  build();
  const std::map<std::uint16_t, BX_POINT> first_row{{0, {1, 1}}, {1, NO_POINT}, {2, {1, 1}}};
  EXPECT_EQ(wire("a").offset_maps[0].ranges, first_row);
  const std::map<std::uint16_t, BX_POINT> b_row{{0, {2, 2}}, {1, NO_POINT}};
  EXPECT_EQ(wire("b").offset_maps[0].ranges, b_row);
  // The point that stands for none, added to the corner; nobody asks for such a wire.
  EXPECT_EQ(set.restore_wire_sm(1, 0, 0, 0), BX_POINT(INT32_MIN + 9, INT32_MAX));
}

TEST_F(MatrixSet, RowsWithEqualOffsetsShareOneMap) {
  for (const bx_long y : {0, 8, 16, 24}) {
    put(0, y, {{"w", y == 16 ? 5 : 1, y + 1}});
    put(10, y, {{"w", 11, y + 1}});
  }
  build();
  const WIRE_TEMPLATE_SM& w = wire("w");
  EXPECT_EQ(w.num_offset_map, 2);
  EXPECT_EQ(w.index_map.ranges, (std::map<std::uint16_t, std::uint16_t>{{0, 0}, {2, 1}, {3, 0}}));
}

TEST_F(MatrixSet, LaterMatrixAtAPlaceReplacesTheEarlierOne) {
  put(0, 0, {{"w", 1, 1}});
  BX_INSTANCE* second = put(0, 0, {{"w", 2, 2}});
  build();
  // Children at one position stand newest first, so the walk meets the older one last.
  EXPECT_EQ(db.getinstance(0), second);
  EXPECT_EQ(set.restore_wire_sm(0, 0, 0, 0), BX_POINT(1, 1));
}

TEST_F(MatrixSet, RebuiltKeepsLinesAndListsAndMakesTheTemplatesAnew) {
  BX_INSTANCE* first = put(0, 0, {{"a", 1, 1}});
  build();
  WIRE_TEMPLATE_SM* held = set.wire_templates;
  put(-10, 0, {{"a", -9, 1}, {"b", -8, 1}});
  build();
  EXPECT_EQ(set.num_wirelist, 2);
  EXPECT_EQ(set.get_wire_list_idx_sm(first), 0) << "the list of the first build keeps its number";
  EXPECT_EQ(set.num_wire_template, 2);
  EXPECT_EQ(set.colmap, (std::map<bx_long, std::uint16_t>{{-10, 0}, {0, 1}}));
  EXPECT_STREQ(held[0].getname(), "a") << "templates of the earlier build stay valid";
}

TEST_F(MatrixSet, LaterBuildComparesListsByTheNamesThatTheirTemplatesHave) {
  using test::instance_bytes;
  using test::wire_bytes;
  // Cutting at "$" makes two strings of one text.
  BX_DB cut;
  ASSERT_TRUE(test::loaded(
      cut, test::binary_line + test::table_bytes({{1, "D"}, {2, "BASIC_ASS"}, {3, "A$1"}, {4, "A$2"}}) +
               instance_bytes(1, {0, 0, 99, 99}, {},
                              {instance_bytes(2, {0, 0, 1, 1}, {wire_bytes(3, 0, 0), wire_bytes(4, 0, 1)})})));
  cut.compress();
  BX_INSTANCE* const first = cut.getinstance(0);
  ASSERT_NE(first->wires[0].name, first->wires[1].name);
  ASSERT_STREQ(first->wires[1].name, "A");
  test::add_wires(*add(cut, "BASIC_ASS", 5, 0, 6, 1), {"A", "B", "C"});
  BX_INSTANCE* const like_first = add(cut, "BASIC_ASS", 10, 0, 11, 1);
  test::add_wires(*like_first, {"A", "A"});
  // Now template 1 is that of B, and the second string of A still has the number 1. So the list that the first matrix
  // gets says A, B, and only that of the last one says A, A.
  EXPECT_EQ(fault_of([&] { cut.compress(); }), "");
  const BASIC_ASS_TEMPLATE& sets = cut.get_basic_ass_tmp();
  ASSERT_EQ(sets.num_wirelist, 4);
  EXPECT_STREQ(sets.getwirename_sm(1, 1), "B");
  EXPECT_STREQ(sets.getwirename_sm(3, 1), "A");
  EXPECT_EQ(like_first->tmpltidx(), 3);
  EXPECT_EQ(first->tmpltidx(), 3);
}

TEST_F(MatrixSet, LaterBuildAppendsAListForEachMatrixWhoseListHasOtherNames) {
  // The list that stands for p, q is that of x, y once the strings were renumbered, so each matrix gets another one.
  // They stay: builds of the whole process remember them.
  static char p[] = "p";
  static char q[] = "q";
  BX_INSTANCE* model = put(0, 0, {{"x", 0, 0}, {"y", 1, 1}});
  BX_INSTANCE* next[] = {put(10, 0, {}), put(20, 0, {})};
  const auto rename = [&](BX_INSTANCE& inst) {
    inst.wires[0].setname(p);
    inst.wires[1].setname(q);
  };
  for (BX_INSTANCE* inst : next) test::add_wires(*inst, {"x", "y"});
  for (BX_INSTANCE* inst : {model, next[0], next[1]}) rename(*inst);
  build();
  EXPECT_EQ(set.num_wirelist, 1);
  model->wires.empty();
  test::add_wires(*model, {"v", "w", "z"});
  build();
  EXPECT_EQ(set.num_wirelist, 4) << "one for the model, and one for each matrix with stale strings";
  EXPECT_STREQ(set.getwirename_sm(2, 0), "v");
  EXPECT_STREQ(set.getwirename_sm(3, 0), "v");
}

TEST_F(MatrixSet, PartnerThatNoBuildKnowsCountsAsTemplateZero) {
  put(0, 0, {{"a", 1, 1}, {"b", 10, 2}});
  BX_INSTANCE* next = put(10, 0, {});
  // The partner's name is no string of the database, so no build has met it; its list has the text all the same.
  char stray_a[] = "a";
  char stray_b[] = "b";
  BX_WIRE wires[] = {BX_WIRE("x", 11, 1), BX_WIRE("y", 10, 2)};
  for (BX_WIRE& one : wires) {
    next->wires.a_add(&one);
  }
  next->wires[0].setname(stray_a);
  next->wires[1].setname(stray_b);
  build();
  EXPECT_EQ(wire("b").span_dir, 0);
  EXPECT_EQ(wire("a").span_dir, 0);
  EXPECT_EQ(wire("a").absolute, 0);
  EXPECT_EQ(wire("b").absolute, 0);
  next->wires.empty();
}

TEST_F(MatrixSet, ColumnsAndRowsAreFoundExactly) {
  EXPECT_EQ(set.getcol(0), NO_INDEX);
  EXPECT_EQ(set.getrow(0), NO_INDEX);
  put_square(1, 1);
  build();
  EXPECT_EQ(set.getcol(10), 1);
  EXPECT_EQ(set.getrow(8), 1);
  EXPECT_EQ(set.getcol(5), NO_INDEX);
  EXPECT_EQ(set.getrow(-1), NO_INDEX);
}

TEST_F(MatrixSet, CornersAreTabulatedAtTheFirstRestore) {
  put_square(1, 1);
  build();
  EXPECT_EQ(set.ins_points, nullptr);
  EXPECT_EQ(set.restore_wire(BX_POINT(10, 8), 0, 0), BX_POINT(11, 9));
  ASSERT_NE(set.ins_points, nullptr);
  EXPECT_EQ(set.ins_points[1][0], BX_POINT(10, 0));
  BX_POINT** kept = set.ins_points;
  set.restore_wire_sm(0, 0, 0, 0);
  EXPECT_EQ(set.ins_points, kept);
}

// A client's table for a set, with points of its own.
BX_POINT** table_of(const BASIC_ASS_TEMPLATE& set, BX_POINT shift) {
  auto** const table = new BX_POINT*[set.colmap.size()];
  for (const auto& [x, c] : set.colmap) {
    table[c] = new BX_POINT[set.rowmap.size()];
    for (const auto& [y, r] : set.rowmap) table[c][r] = BX_POINT(x + shift.x, y + shift.y);
  }
  return table;
}

void release(const BASIC_ASS_TEMPLATE& set, BX_POINT** table) {
  for (std::size_t c = 0; c < set.colmap.size(); ++c) delete[] table[c];
  delete[] table;
}

TEST_F(MatrixSet, CornersThatAClientChangesAreThoseOfLookups) {
  put_square(1, 1);
  db.compress();
  BASIC_ASS_TEMPLATE& own = db.get_basic_ass_tmp();
  own.restore_wire_sm(0, 0, 0, 0);
  own.ins_points[1][0] = BX_POINT(500, 600);
  EXPECT_EQ(own.restore_wire_sm(1, 0, 0, 0), BX_POINT(501, 601));
  EXPECT_EQ(own.restore_wire(BX_POINT(10, 0), 0, 0), BX_POINT(501, 601));
  db.restore();
  const auto wires = qelmodb::find_wires(db, "w");
  ASSERT_EQ(wires.size(), 4U);
  EXPECT_EQ(wires[2].inst->xmin, 10);
  EXPECT_EQ(wires[2].wire->nodex, 501);
  EXPECT_EQ(wires[3].wire->nodex, 11) << "its corner is as it was";
}

TEST_F(MatrixSet, TableThatAClientPutsInPlaceIsUsedAndReleasedWithTheSet) {
  put_square(1, 1);
  build();
  // Before any restore, and in place of one that a restore has made.
  set.ins_points = table_of(set, BX_POINT(100, 200));
  EXPECT_EQ(set.restore_wire_sm(1, 1, 0, 0), BX_POINT(111, 209));
  release(set, set.ins_points);
  set.ins_points = nullptr;
  EXPECT_EQ(set.restore_wire_sm(1, 1, 0, 0), BX_POINT(11, 9)) << "made anew";
  ASSERT_NE(set.ins_points, nullptr);
  release(set, set.ins_points);
  set.ins_points = table_of(set, BX_POINT(-100, 0));
  EXPECT_EQ(set.restore_wire_sm(1, 1, 0, 0), BX_POINT(-89, 9));
}

TEST_F(MatrixSet, TableFromBeforeALaterBuildStaysAsItIs) {
  put_square(1, 1);
  build();
  set.restore_wire_sm(0, 0, 0, 0);
  BX_POINT** const table = set.ins_points;
  put(-5, 0, {{"w", -4, 1}});
  build();
  EXPECT_EQ(set.ins_points, table);
  EXPECT_EQ(set.restore_wire_sm(0, 0, 0, 0), BX_POINT(1, 1)) << "column 0 began at 0 then";
  EXPECT_EQ(set.restore_wire_sm(2, 0, 0, 0), BX_POINT(INT32_MIN, INT32_MIN)) << "there was no column 2";
  for (int c = 0; c < 2; ++c) delete[] table[c];
  delete[] table;
  set.ins_points = nullptr;
  EXPECT_EQ(set.restore_wire_sm(0, 0, 0, 0), BX_POINT(-4, 1));
}

TEST_F(MatrixSet, ClientsTableFromBeforeALaterBuildIsNotOverrun) {
  put_square(1, 1);
  build();
  set.ins_points = table_of(set, BX_POINT(100, 100));
  put(20, 16, {{"w", 21, 17}});
  build();
  EXPECT_EQ(set.restore_wire_sm(1, 1, 0, 0), BX_POINT(111, 109));
  EXPECT_EQ(set.restore_wire_sm(2, 2, 0, 0), BX_POINT(INT32_MIN, INT32_MIN)) << "it has no such place";
  put(30, 24, {{"w", 31, 25}});
  build();
  EXPECT_EQ(set.restore_wire_sm(1, 1, 0, 0), BX_POINT(111, 109));
  EXPECT_EQ(set.restore_wire_sm(3, 3, 0, 0), BX_POINT(INT32_MIN, INT32_MIN));
  // A copy knows the same, and is not destroyed: what it holds for itself is not lost here.
  alignas(BASIC_ASS_TEMPLATE) static unsigned char storage[2][sizeof(BASIC_ASS_TEMPLATE)];
  auto& copy = *new (storage[0]) BASIC_ASS_TEMPLATE(set);
  EXPECT_EQ(copy.restore_wire_sm(3, 3, 0, 0), BX_POINT(INT32_MIN, INT32_MIN));
  copy.colmap.clear();
  copy.rowmap.clear();
  auto& assigned = *new (storage[1]) BASIC_ASS_TEMPLATE;
  assigned = set;
  EXPECT_EQ(assigned.restore_wire_sm(3, 3, 0, 0), BX_POINT(INT32_MIN, INT32_MIN));
  assigned.colmap.clear();
  assigned.rowmap.clear();
}

TEST_F(MatrixSet, TableMadeAnewByTheClientWhereTheOutgrownOneLayIsSeenWhole) {
  for (bx_long columns = 2; columns < 30; ++columns) {
    BX_DB wide("D", 0, 0, 1000, 1000);
    const auto put_column = [&wide](bx_long x) {
      for (const bx_long y : {0, 8}) add_wire(*add(wide, "BASIC_ASS", x, y, x, y), "w", x + 1, y + 1);
    };
    for (bx_long c = 0; c < columns; ++c) put_column(10 * c);
    BASIC_ASS_TEMPLATE grown;
    grown.buildme_sm(&wide);
    grown.restore_wire_sm(0, 0, 0, 0);
    put_column(10 * columns);
    grown.buildme_sm(&wide);
    for (bx_long c = 0; c < columns; ++c) delete[] grown.ins_points[c];
    delete[] grown.ins_points;
    grown.ins_points = table_of(grown, BX_POINT(0, 0));
    EXPECT_EQ(grown.restore_wire_sm(static_cast<int>(columns), 1, 0, 0), BX_POINT(10 * columns + 1, 9)) << columns;
  }
}

TEST_F(MatrixSet, TableForAGridThatIsTooLargeForOneIsUsedWhereAClientMakesIt) {
  BX_INSTANCE* column = add(db, "TILE", 0, 0, 1, 1);
  for (bx_long i = 0; i < 2049; ++i) {
    BX_INSTANCE* inst = test::make("BASIC_ASS", i * 3, i * 5, i * 3, i * 5);
    column->instances.a_add(&inst);
    test::bind(*inst, &db);
    if (i == 0) add_wire(*inst, "w", 1, 1);
  }
  build();
  ASSERT_GT(set.colmap.size() * set.rowmap.size(), BASIC_ASS_TEMPLATE::most_ins_points);
  EXPECT_EQ(set.restore_wire_sm(0, 0, 0, 0), BX_POINT(1, 1));
  EXPECT_EQ(set.ins_points, nullptr);
  set.ins_points = table_of(set, BX_POINT(1000, 1000));
  EXPECT_EQ(set.restore_wire_sm(0, 0, 0, 0), BX_POINT(1001, 1001));
}

TEST_F(MatrixSet, FirstRestoreMayComeFromSeveralThreads) {
  put_square(1, 2);
  build();
  std::vector<std::thread> threads;
  std::atomic<int> right{0};
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&] { right += set.restore_wire_sm(1, 1, 0, 0) == BX_POINT(11, 10) ? 1 : 0; });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(right, 8);
}

TEST_F(MatrixSet, CopyingSharesTheArraysAndCopiesTheLines) {
  put_square(1, 1);
  build();
  alignas(BASIC_ASS_TEMPLATE) unsigned char storage[2][sizeof(BASIC_ASS_TEMPLATE)];
  // Never destroyed, but for the lines that are theirs: the arrays are those of the original.
  auto& copy = *new (storage[0]) BASIC_ASS_TEMPLATE(set);
  auto& assigned = *new (storage[1]) BASIC_ASS_TEMPLATE;
  assigned = set;
  for (BASIC_ASS_TEMPLATE* one : {&copy, &assigned}) {
    EXPECT_EQ(one->wirelists, set.wirelists);
    EXPECT_EQ(one->wire_templates, set.wire_templates);
    EXPECT_EQ(one->colmap, set.colmap);
    one->colmap.clear();
    one->rowmap.clear();
  }
  EXPECT_EQ(set.colmap.size(), 2U);
}

TEST_F(MatrixSet, SparseGridOfFiftyThousandColumnsAndRowsIsBuilt) {
  std::vector<BX_INSTANCE*> matrices;
  for (bx_long i = 0; i < 50000; ++i) {
    auto* inst = new BX_INSTANCE("BASIC_ASS", i * 3, i * 7, i * 3 + 1, i * 7 + 1);
    const BX_WIRE w("w", i * 3 + 2, i * 7 + 1);
    inst->addwire(&w);
    db.addinstance(inst);
    matrices.push_back(inst);
  }
  build();
  EXPECT_EQ(set.colmap.size(), 50000U);
  EXPECT_EQ(wire("w").num_offset_map, 50000);
  EXPECT_EQ(set.restore_wire_sm(49999, 49999, 0, 0), BX_POINT(149999, 349994));
  EXPECT_EQ(set.ins_points, nullptr) << "no table of two and a half thousand million corners";
}

// ---- faults

using MatrixSetFaults = MatrixSet;

TEST_F(MatrixSetFaults, WireThatTheModelLacks) {
  put(0, 0, {{"a", 0, 0}, {"b", 0, 0}});
  put(10, 0, {{"stranger", 0, 0}});
  EXPECT_EQ(fault_of([&] { build(); }), "cannot find stranger wire template\n [BXDB] qelmotmplt 1");
}

TEST_F(MatrixSetFaults, WireOfADestroyedDatabaseIsNotMet) {
  {
    BX_DB earlier("E", 0, 0, 1, 1);
    BX_INSTANCE* rich = add(earlier, "BASIC_ASS", 0, 0, 1, 1);
    for (int i = 0; i < 1000; ++i) add_wire(*rich, ("n" + std::to_string(i)).c_str(), 0, 0);
    earlier.compress();
  }
  put(0, 0, {{"a", 0, 0}, {"b", 0, 0}});
  BX_INSTANCE* poor = put(10, 0, {});
  // New strings are likely to lie where those of the earlier database lay; none may pass for one of them.
  for (int i = 0; i < 500; ++i) {
    poor->wires.empty();
    add_wire(*poor, ("m" + std::to_string(i)).c_str(), 0, 0);
    BASIC_ASS_TEMPLATE fresh;
    ASSERT_EQ(fault_of([&] { fresh.buildme_sm(&db); }),
              "cannot find m" + std::to_string(i) + " wire template\n [BXDB] qelmotmplt 1");
  }
}

TEST_F(MatrixSetFaults, InstanceWhoseWiresNoListHas) {
  put(0, 0, {{"a", 0, 0}});
  build();
  BX_INSTANCE other("BASIC_ASS", 0, 0, 1, 1);
  add_wire(other, "b");
  EXPECT_EQ(fault_of([&] { EXPECT_EQ(set.get_wire_list_idx_sm(&other), NO_INDEX); }),
            "cannot find wire list map for instance [BXDB] qelmotmplt 1");
  other.wires[0].name[0] = 'a';
  EXPECT_EQ(fault_of([&] { EXPECT_EQ(set.get_wire_list_idx_sm(&other), 0); }), "") << "texts count, not strings";
}

TEST_F(MatrixSetFaults, InstanceOfAnotherNameHasNoListAndThatIsNoFault) {
  BX_INSTANCE other("BASIC_ASSX", 0, 0, 1, 1);
  EXPECT_EQ(fault_of([&] { EXPECT_EQ(set.get_wire_list_idx_sm(&other), NO_INDEX); }), "");
}

TEST_F(MatrixSetFaults, MissingListReachesTheReferenceWhenTheManagerReturns) {
  BX_INSTANCE* matrix = put(0, 0, {{"a", 0, 0}});
  db.compress();
  add_wire(*matrix, "b");
  EXPECT_EQ(fault_of([&] { matrix->compress(); }),
            "cannot find wire list map for instance [BXDB] qelmotmplt 1; "
            "template index 65535 overflowed in BX_DB (max is 32767) [BXDB] database/qelmodb/i/qelmodb 1");
}

TEST_F(MatrixSetFaults, PlaceWithoutColumnOrRow) {
  put_square(1, 1);
  build();
  EXPECT_EQ(fault_of([&] { set.restore_wire(BX_POINT(5, 8), 0, 0); }), "no BASIC_ASS at (5, 8) [BXDB] qelmotmplt 1");
  EXPECT_EQ(fault_of([&] { set.restore_wire(BX_POINT(10, 9), 0, 0); }), "no BASIC_ASS at (10, 9) [BXDB] qelmotmplt 1");
}

TEST_F(MatrixSetFaults, RestoringOutsideOfWhatIsCovered) {
  put_square(1, 1);
  build();
  const char* site = " is out of range (0, 1), something is wrong\n [BXDB] database/qelmodb/i/qelmotmplt 1";
  EXPECT_EQ(fault_of([&] { set.restore_wire_sm(0, 2, 0, 0); }), std::string("2") + site);
  EXPECT_EQ(fault_of([&] { set.restore_wire_sm(3, 0, 0, 0); }), std::string("3") + site);
}

TEST_F(MatrixSetFaults, DamagedSetsAreSafe) {
  put_square(1, 1);
  db.compress();
  BASIC_ASS_TEMPLATE& damaged = db.get_basic_ass_tmp();
  BX_INSTANCE& matrix = *db.getinstance("BASIC_ASS", nullptr);
  damaged.wirelists[0][0] = 9;
  matrix.wires[0].nodex = 77;
  EXPECT_EQ(fault_of([&] { db.restore(); }), "");
  EXPECT_EQ(matrix.wires[0].nodex, 77) << "a list entry beyond the templates leaves the wire as it is";
  EXPECT_NE(fault_of([&] { damaged.restore_wire_sm(0, 0, 0, 0); }), "");
  damaged.wirelists[0][0] = 0;
  damaged.wire_templates[0].index_map.ranges[0] = 5;
  EXPECT_EQ(fault_of([&] { db.restore(); }), "");
  EXPECT_EQ(matrix.wires[0].nodex, 77) << "an index beyond the offset maps likewise";
  EXPECT_NE(fault_of([&] { damaged.restore_wire_sm(0, 0, 0, 0); }), "");
}

}  // namespace
