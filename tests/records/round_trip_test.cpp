// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Random trees through every form and back, held against a plain model of what reading does to names.
#include <gtest/gtest.h>

#include <limits>
#include <map>

#include "record_bytes.h"

namespace {

using test::content;
using test::form;

/// Writes the tree as text, names by a function of what they are: the model of a tree after a load.
using renamer = std::function<std::string(const char*)>;

void describe(const BX_INSTANCE& inst, const renamer& wire_name, const renamer& instance_name, bool with_wires,
              std::string& text) {
  const auto point = [](bx_long x, bx_long y) { return "(" + std::to_string(x) + ", " + std::to_string(y) + ")"; };
  text += "BX_INSTANCE: \"" + instance_name(inst.name) + "\" " + point(inst.xmin, inst.ymin) + " " +
          point(inst.xmax, inst.ymax) + "\n";
  if (with_wires) text += std::to_string(inst.getnumwires()) + "\n";
  for (bx_long i = 0; with_wires && i < inst.getnumwires(); ++i) {
    const BX_WIRE& wire = *inst.getwire(i);
    text += "BX_WIRE:  \"" + wire_name(wire.name) + "\" " + point(wire.nodex, wire.nodey) + "\n";
  }
  text += std::to_string(inst.getnuminstances()) + "\n";
  for (bx_long i = 0; i < inst.getnuminstances(); ++i) {
    describe(*inst.getinstance(i), wire_name, instance_name, with_wires, text);
  }
}

std::string described(const BX_INSTANCE& root, const renamer& wire_name, const renamer& instance_name,
                      bool with_wires = true) {
  std::string text;
  describe(root, wire_name, instance_name, with_wires, text);
  return text;
}

std::string unchanged(const char* name) { return name; }

/// A name after its first "$" was replaced some times over.
std::string replaced(std::string name, char separator, int times) {
  for (; times > 0; --times) {
    const std::size_t dollar = name.find('$');
    if (dollar == std::string::npos) break;
    name[dollar] = separator;
  }
  return name.substr(0, name.find('\0'));
}

void count_wires(const BX_INSTANCE& inst, std::map<std::string, int>& uses) {
  for (const BX_WIRE& wire : inst.wires) ++uses[wire.name];
  for (const BX_INSTANCE* child : inst.instances) count_wires(*child, uses);
}

/// What a binary load makes of names: all equal names are one string, and each wire that is read replaces
/// the first "$" left in it.
renamer shared_names(const BX_INSTANCE& root, char separator) {
  std::map<std::string, int> uses;
  count_wires(root, uses);
  return [uses, separator](const char* name) {
    const auto used = uses.find(name);
    return used != uses.end() ? replaced(name, separator, used->second) : std::string(name);
  };
}

void spread_to_extremes(BX_INSTANCE& inst, std::mt19937& random) {
  const auto extreme = [&random] {
    constexpr bx_long values[] = {std::numeric_limits<bx_long>::min(), std::numeric_limits<bx_long>::max(), 0, -1};
    return values[random() % 4];
  };
  for (BX_WIRE& wire : inst.wires) {
    wire.nodex = extreme();
    wire.nodey = extreme();
  }
  if (random() % 3 == 0) inst.xmax = extreme();
  if (random() % 3 == 0) inst.ymin = extreme();
  for (BX_INSTANCE* child : inst.instances) spread_to_extremes(*child, random);
}

class RoundTrip : public testing::TestWithParam<unsigned> {
 protected:
  // The root's name is no wire's: a database made by hand does not intern it.
  RoundTrip() : db_("ROOT NAME", -20, -20, 20, 20) {
    std::mt19937 random(GetParam());
    test::grow_random_tree(db_, random, static_cast<int>(random() % 150));
    spread_to_extremes(db_, random);
  }

  std::string loaded_text(form as, char separator) const {
    const test::separator set(separator);
    BX_DB db;
    EXPECT_TRUE(test::loaded(db, test::dumped(db_, as)));
    return test::text_of(db);
  }

  BX_DB db_;
};

TEST_P(RoundTrip, TheTextRecordIsWhatThePlainModelWrites) {
  EXPECT_EQ(test::text_of(db_), described(db_, unchanged, unchanged));
}

TEST_P(RoundTrip, DatabasesComeBackEqualWhenDollarsAreKept) {
  const test::separator keep('$');
  const std::string text = test::dumped(db_, form::text);
  BX_DB from_text;
  ASSERT_TRUE(test::loaded(from_text, text));
  EXPECT_TRUE(qelmodb::same_tree(db_, from_text, content::database));
  BX_DB from_binary;
  ASSERT_TRUE(test::loaded(from_binary, test::dumped(from_text, form::binary)));
  EXPECT_TRUE(qelmodb::same_tree(db_, from_binary, content::database));
  EXPECT_EQ(test::dumped(from_binary, form::text), text);
}

TEST_P(RoundTrip, GridsComeBackEqual) {
  const std::string text = test::dumped(db_, form::text, content::grid);
  BX_DB from_text;
  ASSERT_TRUE(test::loaded(from_text, text, content::grid));
  EXPECT_TRUE(qelmodb::same_tree(db_, from_text, content::grid));
  const std::string binary = test::dumped(from_text, form::binary, content::grid);
  EXPECT_EQ(binary, test::dumped(db_, form::binary, content::grid));
  BX_DB from_binary;
  ASSERT_TRUE(test::loaded(from_binary, binary, content::grid));
  EXPECT_TRUE(qelmodb::same_tree(db_, from_binary, content::grid));
  EXPECT_EQ(test::dumped(from_binary, form::text, content::grid), text);
  EXPECT_EQ(text, test::text_line + described(db_, unchanged, unchanged, false));
}

TEST_P(RoundTrip, ATextLoadCutsEveryWireNameAtItsFirstDollar) {
  const renamer cut = [](const char* name) { return replaced(name, '\0', 1); };
  EXPECT_EQ(loaded_text(form::text, '\0'), described(db_, cut, unchanged));
}

TEST_P(RoundTrip, ATextLoadWithASlashReplacesTheFirstDollarOfEveryWireName) {
  const renamer slashed = [](const char* name) { return replaced(name, '/', 1); };
  EXPECT_EQ(loaded_text(form::text, '/'), described(db_, slashed, unchanged));
}

TEST_P(RoundTrip, ABinaryLoadCutsTheStringsThatWiresShare) {
  const renamer shared = shared_names(db_, '\0');
  EXPECT_EQ(loaded_text(form::binary, '\0'), described(db_, shared, shared));
}

TEST_P(RoundTrip, ABinaryLoadWithASlashReplacesADollarForEachWireOfTheName) {
  const renamer shared = shared_names(db_, '/');
  EXPECT_EQ(loaded_text(form::binary, '/'), described(db_, shared, shared));
}

TEST_P(RoundTrip, FilesByNameHoldWhatStreamsDo) {
  const test::separator keep('$');
  const test::temporary_folder folder;
  const test::environment plain("KRT_LARGE_DESIGN", nullptr);
  for (const bool ascii : {true, false}) {
    const std::string database = folder.file("a.bxd");
    const std::string grid = folder.file("a.bxg");
    ASSERT_EQ(db_.dump(database.c_str(), ascii), 1);
    ASSERT_EQ(db_.dumpgrid(grid.c_str(), ascii), 1);
    const form as = ascii ? form::text : form::binary;
    EXPECT_EQ(test::read_file(database), test::dumped(db_, as));
    EXPECT_EQ(test::read_file(grid), test::dumped(db_, as, content::grid));
    BX_DB from_database;
    ASSERT_EQ(from_database.load(database.c_str()), 1);
    EXPECT_TRUE(qelmodb::same_tree(db_, from_database, content::database));
    BX_DB from_grid;
    ASSERT_EQ(from_grid.loadgrid(grid.c_str()), 1);
    EXPECT_TRUE(qelmodb::same_tree(db_, from_grid, content::grid));
  }
}

/// Every count of 0 in a text file says so in another way; the last line has an end or not.
std::string with_odd_counts(const std::string& text, std::mt19937& random, bool is_ended) {
  static const char* const none[] = {"-1", "-2147483648", "-7 and more", "", "  ", "zero", "-0", "0x9", "\t-3"};
  std::string odd;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = text.find('\n', at);
    const std::string line = text.substr(at, end - at);
    odd += line == "0" ? none[random() % std::size(none)] : line;
    odd += '\n';
    at = end + 1;
  }
  if (is_ended) return odd;
  odd.pop_back();
  // A line of no characters without end is no line.
  return odd.back() == '\n' ? odd + "0" : odd;
}

TEST_P(RoundTrip, TextCountsThatAreNegativeOrNoNumbersMeanNone) {
  const test::separator keep('$');
  std::mt19937 random(7);
  for (const content what : {content::database, content::grid}) {
    const std::string text = test::dumped(db_, form::text, what);
    for (int round = 0; round < 50; ++round) {
      const std::string odd = with_odd_counts(text, random, round % 2 == 0);
      BX_DB loaded;
      ASSERT_TRUE(test::loaded(loaded, odd, what)) << odd;
      ASSERT_EQ(test::dumped(loaded, form::text, what), text);
    }
  }
}

TEST_P(RoundTrip, TextNeedsNoEndOfItsLastLineButTheLine) {
  const test::separator keep('$');
  const test::temporary_folder folder;
  for (const content what : {content::database, content::grid}) {
    const std::string text = test::dumped(db_, form::text, what);
    const std::string name = folder.file("unended");
    const auto load = [&](std::size_t missing) {
      test::write_file(name, text.substr(0, text.size() - missing));
      BX_DB db;
      const bool good = (what == content::grid ? db.loadgrid(name.c_str()) : db.load(name.c_str())) != 0;
      EXPECT_TRUE(!good || test::dumped(db, form::text, what) == text);
      return good;
    };
    EXPECT_TRUE(load(0));
    EXPECT_TRUE(load(1));
    EXPECT_FALSE(load(2));
  }
}

TEST_P(RoundTrip, WhatTheLibraryWritesTheCheckerFindsLoadable) {
  for (const form as : {form::text, form::binary}) {
    for (const content what : {content::database, content::grid}) {
      const qelmodb::check_report report = qelmodb::check_bytes(test::dumped(db_, as, what), what);
      EXPECT_TRUE(report.loadable());
      EXPECT_EQ(report.file_form, as);
      EXPECT_EQ(report.instances, qelmodb::measure(db_).instances);
      EXPECT_EQ(report.wires, what == content::database ? qelmodb::measure(db_).wires : 0);
      EXPECT_EQ(report.depth, qelmodb::measure(db_).depth);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(RandomTrees, RoundTrip, testing::Range(100U, 112U));

/// Larger than every buffer on the way, so that records lie across the ends of blocks.
TEST(RoundTripOfLargeTrees, ComesBackEqualThroughFilesOfBothForms) {
  const test::separator keep('$');
  const test::environment plain("KRT_LARGE_DESIGN", nullptr);
  const test::temporary_folder folder;
  BX_DB db("TOP", 0, 0, 10, 10);
  for (int i = 0; i < 7; ++i) {
    auto* inst = new BX_INSTANCE(("TILE" + std::string(static_cast<std::size_t>(i), 'x')).c_str(), 0, i, 5, i);
    for (int w = 0; w < 9001; ++w) {
      const BX_WIRE wire(("wire" + std::to_string(w % 997)).c_str(), w, -w);
      inst->addwire(&wire);
    }
    db.addinstance(inst);
  }
  for (int i = 0; i < 20000; ++i) db.addinstance(new BX_INSTANCE(std::to_string(i).c_str(), 0, i % 100, 5, 100));
  for (const bool ascii : {true, false}) {
    const std::string name = folder.file("large.bxd");
    ASSERT_EQ(db.dump(name.c_str(), ascii), 1);
    BX_DB again;
    ASSERT_EQ(again.load(name.c_str()), 1);
    EXPECT_TRUE(qelmodb::same_tree(db, again, content::database));
    EXPECT_TRUE(qelmodb::check_file(name.c_str(), content::database).sound());
  }
}

}  // namespace
