// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "fresh_memory.h"

#include <malloc.h>

#include "bench_device.h"
#include "huge_block.h"

namespace bench {

namespace {

constexpr std::size_t bytes_per_wire = 48;  // more than any load takes

constexpr std::size_t page = 4096;

}  // namespace

void make_memory_fresh() {
  malloc_trim(0);
  const std::size_t bytes = static_cast<std::size_t>(expected_sums().wires) * bytes_per_wire;
  const huge_block block(bytes);
  for (std::size_t i = 0; i < bytes; i += page) const_cast<volatile char*>(block.as<char>())[i] = 1;
}

void make_memory_fresh(benchmark::State& state) {
  state.PauseTiming();
  make_memory_fresh();
  state.ResumeTiming();
}

}  // namespace bench
