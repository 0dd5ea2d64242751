// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Damaged and crafted files: cut off anywhere, changed anywhere, with counts that nothing justifies. Of loads that may
// end the process a few are tried here, on every system; every_damage_posix_test.cpp tries all.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

#include "qelmocompress.h"
#include "record_bytes.h"

namespace {

using qelmodb::check_bytes;
using test::binary_line;
using test::content;
using test::form;

struct file_kind {
  form as;
  content what;
};

constexpr file_kind all_kinds[] = {{form::text, content::database},
                                   {form::binary, content::database},
                                   {form::compressed, content::database},
                                   {form::text, content::grid},
                                   {form::binary, content::grid}};

std::string rich_file(const file_kind& kind) {
  BX_DB db("TOP", 0, 0, 100, 50);
  test::fill_rich_database(db);
  qelmodb::intern_root_name(db);
  if (kind.as == form::compressed) db.compress();
  const std::string bytes = test::dumped(db, kind.as, kind.what);
  const bool has_references = kind.as != form::text && kind.what == content::database;
  // A child that runs the test again has its names elsewhere.
  return has_references ? test::with_numbered_names(bytes) : bytes;
}

class HostileFiles : public testing::TestWithParam<file_kind> {
 protected:
  /// Whether loading damaged files of this form may end the process, and how.
  static bool can_end_process() { return GetParam().as != form::binary; }
  static int process_end() { return GetParam().as == form::text ? test::fast_fail_end : EXIT_FAILURE; }

  static bool loadable(const std::string& bytes) { return check_bytes(bytes, GetParam().what).loadable(); }

  /// Loads in this process, but in a child what the checker refuses and may end it.
  static bool loads(const std::string& bytes, bool checked) {
    if (checked || !can_end_process()) {
      BX_DB db;
      return test::loaded(db, bytes, GetParam().what);
    }
    const int end = test::loaded_in_child(bytes, GetParam().what);
    EXPECT_TRUE(end == test::child_said_true || end == test::child_said_false || end == process_end()) << end;
    return end == test::child_said_true;
  }

  const std::string whole_ = rich_file(GetParam());
};

TEST_P(HostileFiles, WholeFilesAreLoadableAndLoad) {
  const qelmodb::check_report report = check_bytes(whole_, GetParam().what);
  EXPECT_TRUE(report.sound());
  EXPECT_TRUE(loads(whole_, true));
}

TEST_P(HostileFiles, CutOffAtEveryByteAreNotLoadableAndGiveFalse) {
  // The last line of a text file needs no end.
  const std::size_t needed = whole_.size() - (GetParam().as == form::text ? 1 : 0);
  for (std::size_t length = 0; length < needed; ++length) {
    const bool is_loaded = !can_end_process() || length % 25 == 0;
    const std::string prefix = whole_.substr(0, length);
    const qelmodb::check_report report = check_bytes(prefix, GetParam().what);
    ASSERT_FALSE(report.loadable()) << length << " bytes";
    ASSERT_LE(report.faults.back().offset, static_cast<std::int64_t>(length));
    ASSERT_FALSE(is_loaded && loads(prefix, false)) << length << " bytes";
  }
}

TEST_P(HostileFiles, WithOneByteChangedNeverCrashAndLoadWhenTheCheckerSaysSo) {
  std::mt19937 random(991);
  int accepted = 0;
  int refused = 0;
  for (std::size_t at = 0; at < whole_.size(); ++at) {
    const char old = whole_[at];
    for (const int value :
         {0x00, 0x01, 0x7f, 0xff, int{'"'}, int{'\n'}, old ^ 0x20, static_cast<int>(random() % 256)}) {
      std::string changed = whole_;
      changed[at] = static_cast<char>(static_cast<unsigned char>(value));
      const bool good = loadable(changed);
      ++(good ? accepted : refused);
      // Children are costly: of what they would load, only some is loaded.
      if (!good && can_end_process() && random() % (40 * test::child_stride) != 0) continue;
      const bool loaded = loads(changed, good);
      ASSERT_TRUE(loaded || !good) << "byte " << at << " changed to " << value;
    }
  }
  EXPECT_GT(accepted, 100);
  EXPECT_GT(refused, 100);
}

TEST_P(HostileFiles, WithBytesCutOutOrDoubledNeverCrashAndLoadWhenTheCheckerSaysSo) {
  std::mt19937 random(992);
  for (int i = 0; i < 1000; ++i) {
    const std::size_t at = random() % whole_.size();
    const std::size_t length = random() % std::min<std::size_t>(40, whole_.size() - at);
    std::string changed = whole_;
    if (i % 2 == 0) {
      changed.erase(at, length);
    } else {
      changed.insert(random() % whole_.size(), whole_.substr(at, length));
    }
    const bool good = loadable(changed);
    if (!good && can_end_process() && random() % (40 * test::child_stride) != 0) continue;
    const bool loaded = loads(changed, good);
    ASSERT_TRUE(loaded || !good) << i;
  }
}

INSTANTIATE_TEST_SUITE_P(AllForms, HostileFiles, testing::ValuesIn(all_kinds),
                         [](const testing::TestParamInfo<file_kind>& kind) {
                           return std::string(qelmodb::to_string(kind.param.as)) + "_" +
                                  qelmodb::to_string(kind.param.what);
                         });

/// Shows how much storage an array has made.
template <class T>
struct storage : UT_DARRAY<T> {
  static bx_long of(const UT_DARRAY<T>& array) { return array.*&storage::capacity_; }
};

template <class T>
void expect_justified(const UT_DARRAY<T>& array, std::size_t bytes, std::size_t record) {
  EXPECT_LE(static_cast<std::size_t>(storage<T>::of(array)), bytes / record + 16);
}

constexpr bx_long huge = 2147483647;
constexpr bx_long odd_counts[] = {huge, huge - 1, 1 << 30, 100000, 2};

TEST(HugeCounts, InTheNameTableGiveFalseAndReserveWhatTheBytesJustify) {
  for (const bx_long count : odd_counts) {
    const std::string bytes = binary_line + test::number(count) + test::reference(1) + test::stored("R");
    EXPECT_FALSE(check_bytes(bytes, content::database).loadable());
    BX_DB db;
    EXPECT_FALSE(test::loaded(db, bytes));
    expect_justified(db.names, bytes.size(), 9);
  }
}

TEST(HugeCounts, OfBinaryWiresGiveFalseAndReserveWhatTheBytesJustify) {
  for (const bx_long count : odd_counts) {
    const std::string bytes = binary_line + test::table_bytes({{1, "R"}}) + test::reference(1) +
                              test::box_bytes({0, 0, 9, 9}) + test::number(count) + test::wire_bytes(1, 0, 0);
    EXPECT_FALSE(check_bytes(bytes, content::database).loadable());
    BX_DB db;
    EXPECT_FALSE(test::loaded(db, bytes));
    expect_justified(db.wires, bytes.size(), 16);
  }
}

TEST(HugeCounts, OfBinaryChildrenGiveFalseAndReserveWhatTheBytesJustify) {
  for (const bx_long count : odd_counts) {
    const std::string bytes = binary_line + test::table_bytes({{1, "R"}}) + test::reference(1) +
                              test::box_bytes({0, 0, 9, 9}) + test::number(0) + test::number(count) +
                              test::instance_bytes(1, {0, 0, 1, 1});
    EXPECT_FALSE(check_bytes(bytes, content::database).loadable());
    BX_DB db;
    EXPECT_FALSE(test::loaded(db, bytes));
    expect_justified(db.instances, bytes.size(), 32);
  }
}

TEST(HugeCounts, OfGridChildrenGiveFalseAndReserveWhatTheBytesJustify) {
  for (const bx_long count : odd_counts) {
    const std::string bytes = binary_line + test::stored("R") + test::box_bytes({0, 0, 9, 9}) + test::number(count) +
                              test::grid_bytes("C", {0, 0, 1, 1});
    EXPECT_FALSE(check_bytes(bytes, content::grid).loadable());
    BX_DB db;
    EXPECT_FALSE(test::loaded(db, bytes, content::grid));
    expect_justified(db.instances, bytes.size(), 21);
  }
}

// The records read are whole up to a header without line end, which is a false result and no process end.
TEST(HugeCounts, InTextGiveFalseAndReserveWhatTheBytesJustify) {
  for (const bx_long count : odd_counts) {
    const std::string n = std::to_string(count) + "\n";
    const std::string wires = "BX_DB:A\nBX_INSTANCE: \"R\" (0, 0) (9, 9)\n" + n + "BX_WIRE:  \"W\" (1, 2)";
    EXPECT_FALSE(check_bytes(wires, content::database).loadable());
    BX_DB a;
    EXPECT_FALSE(test::loaded(a, wires));
    expect_justified(a.wires, wires.size(), 8);
    const std::string children =
        "BX_DB:A\nBX_INSTANCE: \"R\" (0, 0) (9, 9)\n0\n" + n + "BX_INSTANCE: \"C\" (0, 0) (9, 9)";
    EXPECT_FALSE(check_bytes(children, content::database).loadable());
    BX_DB b;
    EXPECT_FALSE(test::loaded(b, children));
    expect_justified(b.instances, children.size(), 8);
  }
}

TEST(HugeCounts, InFilesGiveFalseToo) {
  const test::temporary_folder folder;
  const test::environment plain("KRT_LARGE_DESIGN", nullptr);
  const std::string name = folder.file("huge.bxd");
  test::write_file(name, binary_line + test::table_bytes({{1, "R"}}) + test::reference(1) +
                             test::box_bytes({0, 0, 9, 9}) + test::number(huge) + test::wire_bytes(1, 5, 6));
  BX_DB db;
  EXPECT_EQ(db.load(name.c_str()), 0);
  EXPECT_GE(db.getnumwires(), 1);
  expect_justified(db.wires, 200, 16);
}

TEST(NegativeCounts, AreNoneForTheLoaderAndAnErrorForTheChecker) {
  const std::string names = binary_line + test::number(-1) + test::instance_bytes(0, {0, 0, 9, 9});
  const std::string wires = binary_line + test::table_bytes({{1, "R"}}) + test::reference(1) +
                            test::box_bytes({0, 0, 9, 9}) + test::number(-huge - 1) + test::number(0);
  const std::string children = binary_line + test::table_bytes({{1, "R"}}) + test::reference(1) +
                               test::box_bytes({0, 0, 9, 9}) + test::number(0) + test::number(-2);
  for (const std::string& bytes : {names, wires, children}) {
    EXPECT_FALSE(check_bytes(bytes, content::database).loadable());
    BX_DB db;
    EXPECT_TRUE(test::loaded(db, bytes));
    EXPECT_EQ(db.getnumwires(), 0);
    EXPECT_EQ(db.getnuminstances(), 0);
  }
}

// Addresses that meet in one place of a simple hash table would take hours here.
TEST(CraftedAddresses, OfManyNamesAreReadInReasonableTime) {
  for (const int shift : {0, 16, 32, 44}) {
    std::vector<std::pair<std::uint64_t, std::string>> entries;
    for (std::uint64_t i = 0; i < 200000; ++i) entries.emplace_back(i << shift, "N");
    const std::string bytes =
        binary_line + test::table_bytes(entries) +
        test::instance_bytes(0, {0, 0, 9, 9}, {test::wire_bytes(std::uint64_t{199999} << shift, 1, 2)});
    BX_DB db;
    ASSERT_TRUE(test::loaded(db, bytes));
    EXPECT_EQ(db.getwire(0)->name, db.names[199999]);
  }
}

TEST(CraftedAddresses, OfManyUnresolvedReferencesGiveFalse) {
  std::vector<std::string> wires;
  for (std::uint64_t i = 0; i < 100000; ++i) wires.push_back(test::wire_bytes((i + 2) << 32, 1, 2));
  BX_DB db;
  EXPECT_FALSE(
      test::loaded(db, binary_line + test::table_bytes({{1, "R"}}) + test::instance_bytes(1, {0, 0, 9, 9}, wires)));
  EXPECT_EQ(db.getnumwires(), 100000);
  EXPECT_EQ(db.getwire(99999)->name, nullptr);
}

// The hash of the standard library has no secret: from its end, and any first eight characters, eight more are reckoned
// with which a text gets there. Tables of texts that all get there take the square of their number.
std::vector<std::string> texts_of_one_hash(std::size_t count) {
  constexpr std::uint64_t factor = 0xc6a4a7935bd1e995U;
  constexpr std::uint64_t inverse = [] {
    std::uint64_t found = factor;  // right in three bits; each step doubles them
    for (int i = 0; i < 5; ++i) found *= 2 - factor * found;
    return found;
  }();
  static_assert(factor * inverse == 1);
  const auto fold = [](std::uint64_t bits) { return bits ^ (bits >> 47); };  // twice is nothing
  constexpr std::uint64_t start = 0xc70f6907U ^ (16 * factor);
  constexpr std::uint64_t target = 0x0123456789abcdefU;
  std::vector<std::string> texts;
  for (std::uint64_t first = 0x0101010101010101U; texts.size() < count; first += 0x01020304U) {
    const std::uint64_t between = (start ^ (fold(first * factor) * factor)) * factor;
    const std::uint64_t second = fold((target ^ between) * inverse) * inverse;
    const std::string text = test::little_endian(first, 8) + test::little_endian(second, 8);
    if (text.find('\0') == std::string::npos) texts.push_back(text);
  }
  return texts;
}

// A switch matrix with all names, which is more than a template set holds, and others that share them out, whose lists
// are looked up text by text.
TEST(CraftedNames, OfOneHashAreCountedAndComparedInReasonableTime) {
  constexpr std::size_t count = 400000;
  constexpr std::size_t share = 50000;
  const std::vector<std::string> texts = texts_of_one_hash(count);
  ASSERT_EQ(std::hash<std::string>{}(texts.front()), std::hash<std::string>{}(texts.back()));
  std::vector<std::pair<std::uint64_t, std::string>> entries;
  std::vector<std::string> wires;
  for (std::uint64_t i = 0; i < count; ++i) {
    entries.emplace_back(i + 1, texts[i]);
    wires.push_back(test::wire_bytes(i + 1, 1, 2));
  }
  entries.emplace_back(count + 1, "BASIC_ASS");
  std::vector<std::string> matrices = {test::instance_bytes(count + 1, {0, 0, 9, 9}, wires)};
  for (std::size_t first = 0; first < count; first += share) {
    const auto from = wires.begin() + static_cast<std::ptrdiff_t>(first);
    const auto x = static_cast<bx_long>(matrices.size());
    matrices.push_back(test::instance_bytes(count + 1, {x, 0, 9, 9}, {from, from + share}));
  }
  const std::string bytes =
      binary_line + test::table_bytes(entries) + test::instance_bytes(1, {0, 0, 9, 9}, {}, matrices);
  const test::separator keep('$');
  ASSERT_TRUE(check_bytes(bytes, content::database).loadable());
  BX_DB db;
  ASSERT_TRUE(test::loaded(db, bytes));
  EXPECT_EQ(qelmodb::measure(db).names, static_cast<std::int64_t>(count + 1));
  EXPECT_EQ(qelmodb::compression_objections(db).size(), 1U);
  EXPECT_TRUE(qelmodb::dump_objections(db, form::binary, content::database, 1).empty());
}

TEST(DeepNesting, OfAHundredThousandLevelsIsCheckedLoadedConvertedAndDestroyed) {
  std::string bytes = binary_line + test::table_bytes({{1, "N"}});
  for (int i = 0; i < 100000; ++i) {
    bytes += test::reference(1) + test::box_bytes({0, 0, 1, 1}) + test::number(0) + test::number(1);
  }
  EXPECT_FALSE(check_bytes(bytes, content::database).loadable());
  BX_DB cut_off;
  EXPECT_FALSE(test::loaded(cut_off, bytes));
  bytes += test::instance_bytes(1, {0, 0, 1, 1});
  EXPECT_TRUE(check_bytes(bytes, content::database).loadable());
  BX_DB whole;
  ASSERT_TRUE(test::loaded(whole, bytes));
  whole.convert_hierarchy();
  EXPECT_EQ(qelmodb::measure(whole).depth, 100000);
}

/// After a failed read every walker must cope with what is there.
TEST(PartialTrees, AreSafeToUse) {
  const std::string whole = rich_file({form::binary, content::database});
  const test::caught_report report;
  for (std::size_t length = 8; length < whole.size(); length += 3) {
    BX_DB db;
    EXPECT_FALSE(test::loaded(db, whole.substr(0, length)));
    db.printme(0);
    db.convert_hierarchy();
    db.getwire(0, 0, "CLK");
    db.getinstance("RAM", nullptr);
    db.getinstance(0, 0, nullptr);
    qelmodb::measure(db);
    test::dumped(db, form::binary);
    test::dumped(db, form::text);
    BX_INSTANCE* moved = new BX_INSTANCE("NEW", db.xmin, 0, 1, 1);
    db.addinstance(moved);
    EXPECT_EQ(moved->top, &db);
  }
  EXPECT_FALSE(report.text().empty());
}

}  // namespace
