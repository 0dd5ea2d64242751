// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The memory of a check is in proportion to the file, whatever the file holds: 16 bytes for each of its bytes, and what
// the descriptions of some hundred faults take. All blocks of the process are counted while a meter is on.
#include <malloc.h>

#include <algorithm>
#include <cstdlib>

#include "../templates/plain_compressed_file.h"

namespace {

struct memory_use {
  bool counted;
  std::ptrdiff_t held, peak;
};
memory_use use_of_check{};

void note_block(std::size_t bytes) {
  if (!use_of_check.counted) return;
  use_of_check.held += static_cast<std::ptrdiff_t>(bytes);
  use_of_check.peak = std::max(use_of_check.peak, use_of_check.held);
}

void note_freed(std::size_t bytes) {
  if (use_of_check.counted) use_of_check.held -= static_cast<std::ptrdiff_t>(bytes);
}

}  // namespace

#if defined(__SANITIZE_ADDRESS__)
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*, std::size_t),
                                                         void (*freed)(const volatile void*));
extern "C" std::size_t __sanitizer_get_allocated_size(const volatile void* block);

namespace {

const bool metered =
    __sanitizer_install_malloc_and_free_hooks([](const volatile void*, std::size_t size) { note_block(size); },
                                              [](const volatile void* block) {
                                                if (block != nullptr) note_freed(__sanitizer_get_allocated_size(block));
                                              }) != 0;

}  // namespace
#else
// Stand before those of the C library, for the shared library too.
extern "C" {
void* __libc_malloc(std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) noexcept {
  void* block = __libc_malloc(size);
  note_block(malloc_usable_size(block));
  return block;
}
void free(void* block) noexcept {
  note_freed(malloc_usable_size(block));
  __libc_free(block);
}
}

namespace {

constexpr bool metered = true;

}  // namespace
#endif

namespace {

using test::content;

/// What a check holds at most beyond 16 bytes for each byte of the file.
std::ptrdiff_t memory_beyond_proportion(const std::string& bytes, content what, qelmodb::check_report& report) {
  use_of_check = {true, 0, 0};
  report = qelmodb::check_bytes(bytes, what);
  use_of_check.counted = false;
  EXPECT_GT(use_of_check.peak, 0);
  return use_of_check.peak - 16 * static_cast<std::ptrdiff_t>(bytes.size());
}

constexpr std::ptrdiff_t for_descriptions = 256 << 10;

class CheckerMemory : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(metered); }

  void expect_in_proportion(const std::string& bytes, content what = content::database) {
    EXPECT_LT(memory_beyond_proportion(bytes, what, report_), for_descriptions) << bytes.size() << " bytes";
  }

  qelmodb::check_report report_;
};

// Just beyond a power of two, where arrays that double take most.
constexpr int beyond_double = (1 << 16) + 1;

TEST_F(CheckerMemory, OfOffsetMapsWithoutRunsIsInProportion) {
  for (const int wires : {1, 3}) {
    const int maps = wires == 1 ? (1 << 15) + 1 : 65535;
    std::string bytes = test::compressed_line + test::table_bytes({{1, "N"}}) + test::reference(1) + test::word(0);
    bytes += test::word(wires);
    for (int i = 0; i < wires; ++i) {
      bytes += test::reference(1) + test::word(0) + test::word(2) + test::word(0) + test::word(0) + test::word(maps);
      for (int k = 0; k < maps; ++k) bytes += test::word(0) + test::word(0);
    }
    bytes += test::word(0) + test::word(0) + test::number(1) + test::reference(1) + test::word(0);
    bytes += test::skeleton_bytes({0, 0, 1, 1}, 0);
    expect_in_proportion(bytes);
    EXPECT_TRUE(report_.sound());
  }
}

TEST_F(CheckerMemory, OfAWireListIsInProportion) {
  std::string bytes = test::compressed_line + test::table_bytes({{1, "N"}}) + test::reference(1) + test::word(2);
  bytes += test::word(65535) + test::word(3);
  for (int i = 0; i < 65535 + 3; ++i) bytes += test::word(i);
  expect_in_proportion(bytes + std::string(100, '\0'));
  EXPECT_FALSE(report_.loadable());
}

TEST_F(CheckerMemory, OfDeepTreesIsInProportion) {
  std::string grid = test::binary_line;
  std::string skeletons = test::compressed_line + test::table_bytes({{1, "N"}}) + test::reference(1) + test::word(0) +
                          test::word(0) + test::word(0) + test::word(0) + test::number(1) + test::reference(1) +
                          test::word(0);
  for (int i = 0; i < beyond_double; ++i) {
    const std::string children = test::number(i + 1 < beyond_double ? 1 : 0);
    grid += test::stored("") + test::box_bytes({0, 0, 1, 1}) + children;
    skeletons += test::box_bytes({0, 0, 1, 1}) + test::word(0) + children;
  }
  expect_in_proportion(grid, content::grid);
  EXPECT_TRUE(report_.sound());
  expect_in_proportion(skeletons);
  EXPECT_TRUE(report_.sound());
}

// Each path to a fault could hold a name of 99 characters at every level, which takes 8 bytes there.
TEST_F(CheckerMemory, OfFaultsInDeepTreesIsInProportion) {
  constexpr int levels = 20000;
  std::string bytes = test::binary_line + test::table_bytes({{1, std::string(99, 'n')}});
  for (int i = 0; i < levels; ++i) {
    const bool faulty = i + 300 > levels;
    bytes += test::reference(faulty && i % 2 == 0 ? 2 : 1);
    bytes += test::box_bytes(faulty ? test::box{2, 0, 1, 2} : test::box{0, 0, 1, 1});
    bytes += test::number(0) + test::number(i + 1 < levels ? 1 : 0);
  }
  expect_in_proportion(bytes);
  EXPECT_GE(report_.errors, 100);
  EXPECT_GE(report_.warnings, 100);
  EXPECT_GE(report_.faults.size(), 200U);
}

}  // namespace
