// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_instance_numbers.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>

namespace {

struct plain_instance : BX_INSTANCE {
  plain_instance() : BX_INSTANCE("I", 0, 0, 1, 1) {}
};

/// Instances that lie side by side, of which every other one is known.
class InstanceNumbers : public testing::Test {
 protected:
  static constexpr std::size_t count = 500;

  InstanceNumbers() {
    for (std::size_t i = 0; i < count; i += 2) known_.push_back(&side_by_side_[i]);
  }

  void add_all(bx_instance_numbers& numbers) const {
    for (std::size_t i = 0; i < known_.size(); ++i) {
      numbers.add({known_[i], nullptr, static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(7 * i)});
    }
  }

  std::array<plain_instance, count> side_by_side_;
  std::vector<BX_INSTANCE*> known_;
  UT_SLABS slabs_;
};

TEST_F(InstanceNumbers, AreThoseOfTheInstancesAndNotOfTheirNeighbours) {
  bx_instance_numbers numbers(known_, slabs_);
  add_all(numbers);
  for (std::size_t i = 0; i < count; ++i) {
    const bx_instance_numbers::entry& found = numbers.find(side_by_side_[i]);
    ASSERT_EQ(found.inst, i % 2 == 0 ? &side_by_side_[i] : nullptr) << i;
    if (i % 2 == 0) {
      ASSERT_EQ(found.number, i / 2);
      ASSERT_EQ(found.wire_list, 7 * (i / 2));
    }
  }
}

TEST_F(InstanceNumbers, AreKnownWhereverInstancesLie) {
  std::vector<std::unique_ptr<plain_instance>> scattered;
  std::vector<std::unique_ptr<char[]>> between;
  for (int i = 0; i < 2000; ++i) {
    scattered.push_back(std::make_unique<plain_instance>());
    between.push_back(std::make_unique<char[]>(static_cast<std::size_t>(i) % 97 * 100));
    known_.push_back(scattered.back().get());
  }
  bx_instance_numbers numbers(known_, slabs_);
  add_all(numbers);
  for (std::size_t i = 0; i < known_.size(); ++i) ASSERT_EQ(numbers.find(*known_[i]).number, i);
}

TEST_F(InstanceNumbers, OfInstancesFarFromAllOthersAreNone) {
  bx_instance_numbers numbers(known_, slabs_);
  add_all(numbers);
  const auto elsewhere = std::make_unique<std::array<plain_instance, count>>();
  for (const BX_INSTANCE& inst : *elsewhere) ASSERT_EQ(numbers.find(inst).inst, nullptr);
}

TEST_F(InstanceNumbers, OfNoInstancesKnowNone) {
  const bx_instance_numbers numbers({}, slabs_);
  EXPECT_EQ(numbers.find(side_by_side_[0]).inst, nullptr);
}

}  // namespace
