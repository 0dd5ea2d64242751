// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_ptrfixtable.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

// A name field as it is after reading: it holds the bytes of an old address.
struct field {
  explicit field(std::uint64_t address) { std::memcpy(&name, &address, sizeof address); }
  char* name;
};

TEST(FixTable, ReplacesAnOldAddressByItsString) {
  char a[] = "A";
  char b[] = "B";
  UT_PTRFIXTABLE table;
  table.setnewaddr(0x1000, a);
  table.setnewaddr(0x2000, b);
  field first(0x2000);
  field second(0x1000);
  table.fixreference(&first.name);
  table.fixreference(&second.name);
  EXPECT_EQ(first.name, b);
  EXPECT_EQ(second.name, a);
  EXPECT_EQ(table.checkptrs(), nullptr);
}

TEST(FixTable, UnknownAddressBecomesNullAndIsRemembered) {
  char a[] = "A";
  UT_PTRFIXTABLE table;
  table.setnewaddr(0x1000, a);
  field unknown(0x3000);
  field another(0x4000);
  table.fixreference(&unknown.name);
  table.fixreference(&another.name);
  EXPECT_EQ(unknown.name, nullptr);
  EXPECT_EQ(table.checkptrs(), &unknown.name);
  table.setnewaddr(0x3000, a);
  EXPECT_EQ(unknown.name, nullptr) << "a later definition comes too late";
  table.forget(&unknown.name);
  EXPECT_EQ(table.checkptrs(), &another.name);
  table.forget(&another.name);
  EXPECT_EQ(table.checkptrs(), nullptr);
}

TEST(FixTable, EmptyTableKnowsNothing) {
  UT_PTRFIXTABLE table;
  field unknown(0x10);
  table.fixreference(&unknown.name);
  EXPECT_EQ(unknown.name, nullptr);
  EXPECT_EQ(table.checkptrs(), &unknown.name);
}

TEST(FixTable, ReferenceZeroIsAMissingNameAndResolved) {
  UT_PTRFIXTABLE table;
  field none(0);
  table.fixreference(&none.name);
  EXPECT_EQ(none.name, nullptr);
  EXPECT_EQ(table.checkptrs(), nullptr);
}

TEST(FixTable, ReferenceZeroMayBeDefinedAsAString) {
  char a[] = "A";
  UT_PTRFIXTABLE table;
  table.setnewaddr(0, a);
  field defined(0);
  table.fixreference(&defined.name);
  EXPECT_EQ(defined.name, a);
}

TEST(FixTable, LastDefinitionOfAnAddressWins) {
  char a[] = "A";
  char b[] = "B";
  UT_PTRFIXTABLE table;
  table.setnewaddr(0x1000, a);
  field early(0x1000);
  table.fixreference(&early.name);
  table.setnewaddr(0x1000, b);
  field late(0x1000);
  table.fixreference(&late.name);
  EXPECT_EQ(early.name, a);
  EXPECT_EQ(late.name, b);
}

TEST(FixTable, ResolveAnswersAndRemembersTheField) {
  char a[] = "A";
  char* name = a;
  UT_PTRFIXTABLE table;
  table.setnewaddr(7, a);
  EXPECT_EQ(table.resolve(7, &name)->now, a);
  EXPECT_EQ(table.resolve(7, &name)->now, a);
  EXPECT_EQ(table.checkptrs(), nullptr);
  EXPECT_EQ(table.resolve(8, &name), nullptr);
  EXPECT_EQ(table.checkptrs(), &name);
}

TEST(FixTable, TakesAllAddressesIncludingTheExtremes) {
  char a[] = "A";
  char b[] = "B";
  UT_PTRFIXTABLE table;
  table.setnewaddr(UINT64_MAX, a);
  table.setnewaddr(1, b);
  char* name = nullptr;
  EXPECT_EQ(table.resolve(UINT64_MAX, &name)->now, a);
  EXPECT_EQ(table.resolve(1, &name)->now, b);
  EXPECT_EQ(table.resolve(UINT64_MAX - 1, &name), nullptr);
}

TEST(FixTable, HoldsManyAddressesOfAnyPattern) {
  // Patterns that pile up in tables that use the low or the high bits, or a fixed mix of them.
  constexpr std::uint64_t count = 200000;
  std::vector<char> strings(count);
  for (const std::uint64_t factor :
       {std::uint64_t{1}, std::uint64_t{1} << 20, std::uint64_t{1} << 44, std::uint64_t{0x9e3779b97f4a7c15}}) {
    UT_PTRFIXTABLE table;
    for (std::uint64_t i = 0; i < count; ++i) table.setnewaddr((i + 1) * factor, &strings[i]);
    char* name = nullptr;
    for (std::uint64_t i = 0; i < count; ++i) ASSERT_EQ(table.resolve((i + 1) * factor, &name)->now, &strings[i]);
    EXPECT_EQ(table.resolve((count + 7) * factor, &name), nullptr);
  }
}

}  // namespace
