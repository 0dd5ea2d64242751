// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What is told before a database is compressed: what would end the process, and what would not come back. Each is held
// against what then happens.
#include <gtest/gtest.h>

#include "../database/exposed.h"
#include "plain_compressed_file.h"
#include "qelmocompress.h"
#include "template_faults.h"

namespace {

using qelmodb::compression_losses;
using qelmodb::loss;
using test::add;
using test::add_wire;
using test::content;
using test::fault_of;
using test::form;

std::string objections_to(const BX_DB& db) {
  std::string text;
  for (const qelmodb::objection& objection : qelmodb::compression_objections(db)) {
    text += objection.path + ": " + objection.reason + "\n";
  }
  return text;
}

/// Compresses in a process of its own: whether that came to its end.
bool compresses(BX_DB& db) {
  return test::in_child([&] {
           const int closed = std::fclose(stderr);
           db.compress();
           return test::child_said_true + closed;
         }) == test::child_said_true;
}

class CompressionObjections : public testing::Test {
 protected:
  BX_INSTANCE* matrix(bx_long x, bx_long y, std::initializer_list<const char*> wires) {
    BX_INSTANCE* made = add(db, "BASIC_ASS", x, y, x + 1, y + 1);
    for (const char* wire : wires) add_wire(*made, wire, x, y);
    return made;
  }

  BX_DB db{"D", 0, 0, 99, 99};
};

TEST_F(CompressionObjections, AreNoneForOrdinaryDatabases) {
  matrix(0, 0, {"A", "B"});
  matrix(0, 9, {"B"});
  matrix(5, 0, {});
  add_wire(*add(db, "BASIC_ASS_2", 0, 20, 1, 21), "NOT_IN_THE_MODEL");
  EXPECT_EQ(objections_to(db), "");
  EXPECT_TRUE(compresses(db));
  EXPECT_EQ(objections_to(BX_DB()), "");
}

TEST_F(CompressionObjections, NameEachWireThatTheRichestSwitchMatrixLacks) {
  matrix(0, 0, {"A", "B"});
  BX_INSTANCE* tile = add(db, "TILE", 0, 5, 1, 6);
  BX_INSTANCE* poor = add(*tile, "BASIC_ASS", 0, 5, 1, 6);
  add_wire(*poor, "X");
  add_wire(*poor, "Y");
  // Another one of the same kind is named no more.
  matrix(5, 5, {"X", "Y"});
  EXPECT_EQ(objections_to(db),
            "D/TILE/BASIC_ASS: wire \"X\" of a switch matrix, which the one with most wires, at (0, 0), lacks\n"
            "D/TILE/BASIC_ASS: wire \"Y\" of a switch matrix, which the one with most wires, at (0, 0), lacks\n");
  EXPECT_FALSE(compresses(db));
  EXPECT_EQ(qelmodb::compression_objections(db, 1).size(), 1U);
}

TEST_F(CompressionObjections, NameWiresWhoseStringIsAnother) {
  using test::instance_bytes;
  using test::wire_bytes;
  const std::string bytes = test::binary_line +
                            test::table_bytes({{1, "D"}, {2, "BASIC_ASS"}, {3, "A"}, {4, "A"}, {5, "B"}}) +
                            instance_bytes(1, {0, 0, 99, 99}, {},
                                           {instance_bytes(2, {0, 0, 1, 1}, {wire_bytes(3, 0, 0), wire_bytes(5, 0, 1)}),
                                            instance_bytes(2, {5, 0, 6, 1}, {wire_bytes(4, 5, 0)})});
  BX_DB twice;
  ASSERT_TRUE(test::loaded(twice, bytes));
  EXPECT_EQ(objections_to(twice),
            "D/BASIC_ASS: wire \"A\" of a switch matrix, which the one with most wires, at (0, 0), has from another "
            "entry of the name table\n");
  EXPECT_FALSE(compresses(twice));
}

TEST_F(CompressionObjections, NameSwitchMatricesThatAreHidden) {
  matrix(0, 0, {"A", "B"});
  matrix(5, 0, {"B"});
  // A new child comes before those at its place, so the first of these is the later in the tree and stands there.
  matrix(5, 5, {"A"});
  matrix(5, 5, {"B"});
  EXPECT_EQ(objections_to(db), "") << "another one has its wires";
  EXPECT_TRUE(compresses(db));
  matrix(5, 0, {});
  EXPECT_EQ(objections_to(db),
            "D/BXD__BASIC_ASS/BASIC_ASS: switch matrix with wires like no other, hidden behind another one at the same "
            "place\n");
  EXPECT_FALSE(compresses(db));
}

TEST_F(CompressionObjections, NameSwitchMatricesOfTooManyWires) {
  BX_INSTANCE* rich = add(db, "BASIC_ASS", 0, 0, 1, 1);
  const qelmodb::name_batch batch(db);
  for (int i = 0; i < 65536; ++i) add_wire(*rich, ("W" + std::to_string(100000 + i)).c_str());
  EXPECT_EQ(objections_to(db), "D/BASIC_ASS: switch matrix of 65536 wires; a template holds 65535\n");
  EXPECT_FALSE(compresses(db));
}

TEST_F(CompressionObjections, NameTheInstanceThatNeedsOneTemplateTooMany) {
  // With the root's own these are 32768.
  BX_INSTANCE* column = add(db, "TILE", 0, 0, 1, 1);
  for (int i = 0; i < 32766; ++i) add_wire(*add(*column, "TILE", 0, i, 1, i + 1), "W", i, 0);
  EXPECT_EQ(objections_to(db), "");
  add_wire(*add(*column, "LAST", 0, 40000, 1, 40001), "W");
  EXPECT_EQ(objections_to(db), "D/TILE/LAST: needs a template beyond the 32768 that there can be\n");
  EXPECT_FALSE(compresses(db));
}

TEST_F(CompressionObjections, CountWireListsOfAnEarlierCompressionOnce) {
  BX_INSTANCE* model = matrix(0, 0, {});
  const qelmodb::name_batch batch(db);
  for (int i = 0; i < 20000; ++i) add_wire(*model, ("W" + std::to_string(10000 + i)).c_str());
  BX_INSTANCE* column = add(db, "TILE", 0, 5, 1, 6);
  for (int i = 0; i < 20000; ++i) {
    add_wire(*add(*column, "BASIC_ASS", 0, 10 + i, 1, 11 + i), ("W" + std::to_string(10000 + i)).c_str());
  }
  EXPECT_EQ(objections_to(db), "");
  db.compress();
  EXPECT_EQ(db.get_basic_ass_tmp().num_wirelist, 20001);
  EXPECT_EQ(objections_to(db), "") << "the same lists";
  // Other lists come behind those of before, which stay.
  for (BX_INSTANCE* inst : column->instances) add_wire(*inst, "W10000");
  EXPECT_NE(objections_to(db), "");
  EXPECT_FALSE(compresses(db));
}

TEST_F(CompressionObjections, NameSwitchMatrixNumbersThatOverflow) {
  BX_INSTANCE* model = matrix(0, 0, {});
  const qelmodb::name_batch batch(db);
  for (int i = 0; i < 32768; ++i) add_wire(*model, ("W" + std::to_string(10000 + i)).c_str());
  BX_INSTANCE* column = add(db, "TILE", 0, 5, 1, 6);
  for (int i = 0; i < 32768; ++i) {
    add_wire(*add(*column, "BASIC_ASS", 0, 10 + i, 1, 11 + i), ("W" + std::to_string(10000 + i)).c_str());
  }
  EXPECT_EQ(objections_to(db), "D/TILE/BASIC_ASS: needs a wire list beyond the 32768 that there can be\n");
}

// ---- losses

class CompressionLosses : public testing::Test {
 protected:
  /// The losses as "kind path reason", held against the tree that a file really gives back.
  std::string losses() {
    qelmodb::intern_root_name(db);
    db.compress();
    const compression_losses found = qelmodb::find_compression_losses(db);
    expect_same_as_in_a_file(found);
    std::string text;
    for (const qelmodb::compression_loss& lost : found.described) {
      text += kinds[static_cast<int>(lost.what)] + (" " + lost.path) + " " + lost.reason + "\n";
    }
    return text;
  }

  void expect_same_as_in_a_file(const compression_losses& found) {
    EXPECT_EQ(qelmodb::dump_objections(db, form::compressed, content::database).size(), found.described.size());
    BX_DB back;
    ASSERT_TRUE(test::loaded(back, test::dumped(db, form::compressed)));
    std::int64_t names = 0, renamed = 0, moved = 0, dropped = 0;
    std::vector<const BX_INSTANCE*> others;
    bx_walk(static_cast<const BX_INSTANCE&>(back), [&](const BX_INSTANCE& inst, bx_long) {
      others.push_back(&inst);
      return true;
    });
    std::size_t i = 0;
    bx_walk(static_cast<const BX_INSTANCE&>(db), [&](const BX_INSTANCE& inst, bx_long) {
      const BX_INSTANCE& other = *others[i++];
      names += std::string(inst.name) != other.name ? 1 : 0;
      dropped += inst.getnumwires() - other.getnumwires();
      for (bx_long k = 0; k < other.getnumwires(); ++k) {
        const BX_WIRE& a = inst.wires[k];
        const BX_WIRE& b = other.wires[k];
        renamed += std::string(a.name) != b.name ? 1 : 0;
        moved += a.nodex != b.nodex || a.nodey != b.nodey ? 1 : 0;
      }
      return true;
    });
    EXPECT_EQ(found.count(loss::cut_instance), names);
    EXPECT_EQ(found.count(loss::cut_wire) + found.count(loss::renamed_wire), renamed);
    EXPECT_EQ(found.count(loss::moved_wire), moved);
    EXPECT_EQ(found.count(loss::dropped_wire), dropped);
    EXPECT_EQ(found.total(), names + renamed + moved + dropped);
  }

  static constexpr const char* kinds[] = {"cut instance", "cut wire", "renamed", "moved", "dropped"};
  BX_DB db{"D", 0, 0, 99, 99};
};

TEST_F(CompressionLosses, AreNoneForOrdinaryDatabases) {
  add_wire(*add(db, "TILE", 0, 0, 1, 1), "A");
  add_wire(*add(db, "BASIC_ASS", 0, 5, 1, 6), "M$1", 4, 4);
  EXPECT_EQ(losses(), "");
}

TEST_F(CompressionLosses, AreNamesBehindADollarAlsoOfWhatSharesTheString) {
  add_wire(*add(db, "IN$2", 0, 0, 1, 1), "IN$2");
  add_wire(*add(db, "BASIC_ASS", 0, 5, 1, 6), "IN$2", 4, 4);
  add_wire(*add(db, "BASIC_ASS", 5, 5, 6, 6), "IN$2", 4, 4);
  EXPECT_EQ(losses(),
            "cut instance D/IN$2 comes back as \"IN\"\n"
            "cut wire D/IN$2/IN$2 comes back as \"IN\"\n"
            "cut wire D/BASIC_ASS/IN$2 comes back as \"IN\"\n"
            "cut wire D/BXD__BASIC_ASS/BASIC_ASS/IN$2 comes back as \"IN\"\n");
}

TEST_F(CompressionLosses, AreNamesThatDifferBetweenInstancesOfOneShape) {
  add_wire(*add(db, "TILE", 0, 0, 1, 1), "A", 1, 1);
  add_wire(*add(db, "TILE", 0, 5, 1, 6), "B", 1, 6);
  add_wire(*add(db, "TILE", 0, 9, 1, 10), "A$", 1, 10);
  EXPECT_EQ(losses(),
            "renamed D/TILE/B comes back as \"A\"\n"
            "cut wire D/TILE/A$ comes back as \"A\"\n");
}

TEST_F(CompressionLosses, AreNodesOfWiresOfOneNameInASwitchMatrix) {
  BX_INSTANCE* matrix = add(db, "BASIC_ASS", 0, 0, 1, 1);
  add_wire(*matrix, "A", 1, 2);
  add_wire(*matrix, "A", 3, 4);
  EXPECT_EQ(losses(), "moved D/BASIC_ASS/A comes back at (3, 4) instead of (1, 2)\n");
}

TEST_F(CompressionLosses, AreNodesOfASwitchMatrixBehindAnother) {
  add_wire(*add(db, "BASIC_ASS", 0, 0, 1, 1), "A", 1, 2);
  add_wire(*add(db, "BASIC_ASS", 0, 0, 1, 1), "A", 1, 4);
  EXPECT_EQ(losses(), "moved D/BASIC_ASS/A comes back at (1, 2) instead of (1, 4)\n");
}

TEST_F(CompressionLosses, AreWiresBeyondSixteenBits) {
  BX_INSTANCE* rich = add(db, "RICH", 0, 0, 1, 1);
  for (int i = 0; i < 65537; ++i) add_wire(*rich, "W", i, 0);
  qelmodb::intern_root_name(db);
  db.compress();
  const compression_losses found = qelmodb::find_compression_losses(db, 1);
  expect_same_as_in_a_file(qelmodb::find_compression_losses(db));
  EXPECT_EQ(found.count(loss::dropped_wire), 65536);
  ASSERT_EQ(found.described.size(), 1U);
  EXPECT_EQ(found.described[0].path, "D/RICH/W");
  EXPECT_EQ(found.described[0].reason, "does not come back");
}

TEST_F(CompressionLosses, AreDescribedUpToAMostOfEachKind) {
  for (int i = 0; i < 5; ++i) add_wire(*add(db, "T", 0, i, 1, i), "A$", 3 * i, 1);
  db.compress();
  const compression_losses found = qelmodb::find_compression_losses(db, 2);
  EXPECT_EQ(found.count(loss::cut_wire), 5);
  EXPECT_EQ(found.described.size(), 2U);
}

// ---- what a form cannot hold

TEST(DumpObjections, ToTheCompressedFormAskForCompressionAndInternedNames) {
  BX_DB db("D", 0, 0, 9, 9);
  auto reasons = [&db] {
    std::string text;
    for (const auto& objection : qelmodb::dump_objections(db, form::compressed, content::database)) {
      text += objection.path + ": " + objection.reason + "\n";
    }
    return text;
  };
  EXPECT_EQ(reasons(), ": the database was not compressed\n");
  EXPECT_EQ(qelmodb::dump_objections(db, form::compressed, content::grid).at(0).reason,
            "there are no compressed grid files");
  db.compress();
  EXPECT_EQ(reasons(),
            "templates: name that is not in the database's name table, so that binary files cannot refer to it\n");
  BX_DB named("D", 0, 0, 9, 9);
  qelmodb::intern_root_name(named);
  named.compress();
  EXPECT_TRUE(qelmodb::dump_objections(named, form::compressed, content::database).empty());
}

TEST(DumpObjections, ToFormsWithANameTableAreNamesInItThatAreTooLong) {
  BX_DB db("D", 0, 0, 9, 9);
  test::intern(db, std::string(100, 'x').c_str());
  const auto objections = qelmodb::dump_objections(db, form::binary, content::database);
  ASSERT_EQ(objections.size(), 1U);
  EXPECT_EQ(objections[0].path, "name table");
  EXPECT_EQ(objections[0].reason, "name of 100 characters; the form holds 99");
  BX_DB back;
  EXPECT_FALSE(test::loaded(back, test::dumped(db, form::binary))) << "which is why";
  EXPECT_TRUE(qelmodb::dump_objections(db, form::text, content::database).empty());
}

TEST(InternRootName, GivesTheTablesStringAndKeepsTheFormerOne) {
  BX_DB db("ROOT", 0, 0, 1, 1);
  const char* former = db.name;
  qelmodb::intern_root_name(db);
  EXPECT_STREQ(former, "ROOT");
  EXPECT_NE(db.name, former);
  ASSERT_EQ(db.names.getcount(), 1);
  EXPECT_EQ(db.name, db.names[0]);
  qelmodb::intern_root_name(db);
  EXPECT_EQ(db.names.getcount(), 1);
  BX_DB nameless;
  qelmodb::intern_root_name(nameless);
  EXPECT_EQ(nameless.name, nullptr);
}

}  // namespace
