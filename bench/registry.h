// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// How the sources of the program add their benchmarks. A benchmark is an operation done by somebody:
// "text_load/library" beside "text_load/limit" and "binary_load/SQLite".
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace bench {

inline constexpr char library[] = "library";
inline constexpr char limit[] = "limit";

/// Adds a benchmark; its data is made when it first runs.
void add(const std::string& operation, const std::string& by, std::function<void(benchmark::State&)> body);

/// Ends the running benchmark, and with it the success of the program, unless an answer is as it must be.
void require(bool right, const char* otherwise);

/// For lookups: the time of an iteration is that of count of them.
void set_items(benchmark::State& state, std::int64_t count);

/// For files: how large the file is.
void set_bytes(benchmark::State& state, std::uint64_t bytes);

/// A source has one of these, at namespace level, which is called once before the benchmarks run.
class registrar {
 public:
  explicit registrar(void (*add_all)());
};

void run_registrars();

}  // namespace bench
