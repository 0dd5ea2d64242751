// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The questions that the library and its peers are asked, and the sums of the library's answers.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "bench_device.h"

namespace bench {

/// A wire that there is: an instance and a name.
struct wire_question {
  std::uint32_t instance;  ///< index into flat_device().instances
  std::uint32_t name;      ///< index into flat_device().names
};

inline constexpr std::size_t many_questions = 1000000;
inline constexpr std::size_t few_questions = 50000;  ///< for peers that take microseconds for each

/// The first count of a fixed list, at most many_questions.
std::span<const wire_question> wire_questions(std::size_t count);

/// The same as a client has them at hand: by pointers.
struct pointer_question {
  const BX_INSTANCE* inst;
  const char* name;
};

std::vector<pointer_question> pointer_questions(std::size_t count);

/// The sum of x and y of the wires that answer the first count questions, as the library finds them.
std::int64_t expected_wire_answers(std::size_t count);

inline constexpr std::size_t many_points = 100000;
inline constexpr std::size_t few_points = 10000;

std::span<const BX_POINT> points(std::size_t count);

/// Nodes of wires that there are, at most many_points of them.
std::vector<BX_POINT> nodes(std::size_t count);

/// Which instances were found, without the root: how many, and the sum of their addresses.
struct cover_sums {
  std::int64_t instances = 0;
  std::uintptr_t addresses = 0;

  void count(const BX_INSTANCE* inst) noexcept {
    ++instances;
    addresses += reinterpret_cast<std::uintptr_t>(inst);
  }
  friend bool operator==(const cover_sums&, const cover_sums&) noexcept = default;
};

/// Those of the first count points, as the library finds them.
cover_sums expected_covers(std::size_t count);

/// The library's answers, for the benchmarks themselves.
std::int64_t library_wire_answers(std::span<const wire_question> asked);
cover_sums library_covers(std::span<const BX_POINT> asked);

}  // namespace bench
