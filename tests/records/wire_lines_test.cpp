// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Lists of wires in text files are read at once where lines are as writers make them, and piece by piece elsewhere.
// Here lists of all kinds of lines are held against reading each line by itself, which always goes piece by piece.
#include <gtest/gtest.h>

#include <random>

#include "record_bytes.h"

namespace {

struct plain_wire {
  std::string name;
  bx_long x;
  bx_long y;

  friend bool operator==(const plain_wire&, const plain_wire&) = default;
};

void PrintTo(const plain_wire& wire, std::ostream* out) { *out << wire.name << " " << wire.x << " " << wire.y; }

// What the lines hold, one after the other.
std::vector<plain_wire> read_one_by_one(const std::string& lines, bx_long count, char separator) {
  UT_MEMFILE file{std::string(lines)};
  std::vector<plain_wire> wires;
  for (bx_long i = 0; i < count; ++i) {
    BX_WIRE wire;
    EXPECT_EQ(wire.readme(static_cast<UT_STREAM*>(&file), separator), 1);
    wires.push_back({wire.name, wire.nodex, wire.nodey});
  }
  return wires;
}

class line_maker {
 public:
  explicit line_maker(unsigned seed) : random_(seed) {}

  std::string lines(bx_long count) {
    // Few names, so that many come again behind the same ones.
    const bx_long names = number(1, 12);
    std::string made;
    for (bx_long i = 0; i < count; ++i) made += line(i % names);
    return made;
  }

  bx_long number(bx_long from, bx_long to) { return std::uniform_int_distribution<bx_long>(from, to)(random_); }

 private:
  bool rarely() { return number(0, 11) == 0; }

  std::string line(bx_long i) {
    std::string made = rarely() ? odd_label() : "BX_WIRE:  ";
    made += '"' + (rarely() ? odd_name(i) : usual_name(i)) + '"';
    made += (rarely() ? "x[" : " (") + coordinate() + (rarely() ? "," : ", ") + coordinate() + ")";
    if (rarely()) made += " and so on";
    return made + (rarely() ? "\r\n" : "\n");
  }

  std::string odd_label() {
    const char* const labels[] = {"", "BX_WIRE: ", "bx_wire:  ", "BX_WIRE:  \n", "W", "BX_INSTANCE: "};
    return labels[number(0, 5)];
  }

  // Of up to three dozen characters.
  static std::string usual_name(bx_long i) {
    return std::string(3 * static_cast<std::size_t>(i), 'W') + std::to_string(i);
  }

  std::string odd_name(bx_long i) {
    switch (number(0, 9)) {
      case 0:
        return "";
      case 1:
        return std::string(99, 'L');
      case 2:
        return "W1$2$3";
      case 3:
        return "$";
      case 4:
        return "two\nlines";
      case 5:
        return std::string("N\0L", 3);
      case 6:
        return "W";
      case 7:  // all of a usual line but the quote
        return usual_name(i) + "' (1, 2)\n";
      case 8:  // another end
        return usual_name(i).replace(usual_name(i).size() - 1, 1, "?");
      default:
        return "\xff\x80";
    }
  }

  std::string coordinate() {
    if (!rarely()) return std::to_string(number(-2000, 2000));
    const char* const odd[] = {"2147483647", "-2147483648", "2147483648", "-99999999999999999999",
                               "999999999",  "-999999999",  "1000000000", "007",
                               "-0",         "+5",          " 6",         "",
                               "-",          "1 2",         "x",          "\t8"};
    return odd[number(0, 15)];
  }

  std::mt19937 random_;
};

class WireLines : public testing::TestWithParam<char> {};

TEST_P(WireLines, OfAListAreWhatEachIsByItself) {
  const test::separator separator(GetParam());
  line_maker maker(static_cast<unsigned char>(GetParam()) + 1U);
  for (int round = 0; round < 400; ++round) {
    const bx_long count = maker.number(0, 60);
    const std::string lines = maker.lines(count);
    // The same list twice: the second time names follow each other as they did before.
    const std::string instance = "BX_INSTANCE: \"I\" (0, 0) (1, 1)\n" + std::to_string(count) + "\n" + lines;
    BX_DB db;
    ASSERT_TRUE(test::loaded(db, "BX_DB:A\n" + instance + "1\n" + instance + "0\n"));
    const std::vector<plain_wire> expected = read_one_by_one(lines, count, GetParam());
    for (const BX_INSTANCE* inst : std::initializer_list<const BX_INSTANCE*>{&db, db.getinstance(0)}) {
      std::vector<plain_wire> found;
      for (const BX_WIRE& wire : inst->wires) found.push_back({wire.name, wire.nodex, wire.nodey});
      ASSERT_EQ(found, expected) << lines;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Separators, WireLines, testing::Values('\0', '$', '/'));

TEST(WireLists, WithTheSameTextShareOneString) {
  const test::separator separator('\0');
  const std::string line = "BX_WIRE:  \"A$1\" (1, 2)\nBX_WIRE:  \"A\" (3, 4)\nBX_WIRE:  \"A$2\" (5, 6)\n";
  std::string lines;
  for (int i = 0; i < 20; ++i) lines += line;
  BX_DB db;
  ASSERT_TRUE(test::loaded(db, "BX_DB:A\nBX_INSTANCE: \"I\" (0, 0) (1, 1)\n60\n" + lines + "0\n"));
  for (const BX_WIRE& wire : db.wires) ASSERT_EQ(wire.name, db.wires[0].name);
  EXPECT_EQ(db.names.getcount(), 2);
}

// So many different names that the table of them grows a few times.
TEST(WireLists, OfManyNamesAreAllKept) {
  constexpr bx_long count = 5000;
  std::string lines;
  for (bx_long i = 0; i < count; ++i)
    lines += "BX_WIRE:  \"W" + std::to_string(i) + "\" (" + std::to_string(i) + ", 0)\n";
  const std::string instance = "BX_INSTANCE: \"I\" (0, 0) (1, 1)\n" + std::to_string(count) + "\n" + lines;
  BX_DB db;
  ASSERT_TRUE(test::loaded(db, "BX_DB:A\n" + instance + "1\n" + instance + "0\n"));
  for (bx_long i = 0; i < count; ++i) {
    ASSERT_EQ(std::string(db.wires[i].name), "W" + std::to_string(i));
    ASSERT_EQ(db.getinstance(0)->wires[i].name, db.wires[i].name);
    ASSERT_EQ(db.wires[i].nodex, i);
  }
}

}  // namespace
