// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <benchmark/benchmark.h>

namespace bench {

/// Called between rounds, untimed: gives what the heap keeps back to the system, so that every round asks it for memory
/// as a process does that just began, and sees to it that the system has enough at hand. A virtual machine may have
/// returned its free memory to its host, and getting it again takes ten times as long as clearing it, now and then, for
/// the library and for its limits.
void make_memory_fresh();

/// The same at the beginning of a round.
void make_memory_fresh(benchmark::State& state);

}  // namespace bench
