// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_arith.h"

#include <gtest/gtest.h>

namespace {

TEST(Arithmetic, AddsAndSubtracts) {
  static_assert(ut_wrap_add(2, 3) == 5);
  static_assert(ut_wrap_sub(2, 3) == -1);
  EXPECT_EQ(ut_wrap_add(-7, 7), 0);
  EXPECT_EQ(ut_wrap_sub(-7, -7), 0);
}

TEST(Arithmetic, WrapsAroundAtTheEndsOfTheRange) {
  EXPECT_EQ(ut_wrap_add(INT32_MAX, 1), INT32_MIN);
  EXPECT_EQ(ut_wrap_add(INT32_MIN, -1), INT32_MAX);
  EXPECT_EQ(ut_wrap_sub(INT32_MIN, 1), INT32_MAX);
  EXPECT_EQ(ut_wrap_sub(INT32_MAX, -1), INT32_MIN);
  EXPECT_EQ(ut_wrap_sub(0, INT32_MIN), INT32_MIN);
  EXPECT_EQ(ut_wrap_add(INT32_MIN, INT32_MIN), 0);
}

TEST(Arithmetic, DifferenceAddedBackGivesTheNumberAgain) {
  const bx_long ends[] = {INT32_MIN, INT32_MIN + 1, -1, 0, 1, INT32_MAX - 1, INT32_MAX};
  for (const bx_long a : ends) {
    for (const bx_long b : ends) EXPECT_EQ(ut_wrap_add(b, ut_wrap_sub(a, b)), a) << a << " " << b;
  }
}

}  // namespace
