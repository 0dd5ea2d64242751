// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "registry.h"

#include <stdexcept>
#include <vector>

#include "bench_device.h"

namespace bench {

namespace {

std::vector<void (*)()>& registrars() {
  static std::vector<void (*)()> all;
  return all;
}

}  // namespace

void add(const std::string& operation, const std::string& by, std::function<void(benchmark::State&)> body) {
  const auto guarded = [body = std::move(body)](benchmark::State& state) {
    try {
      body(state);
      state.counters["wires"] = static_cast<double>(expected_sums().wires);
    } catch (const std::exception& fault) {
      state.SkipWithError(fault.what());
    }
  };
  benchmark::RegisterBenchmark((operation + "/" + by).c_str(), guarded)->Unit(benchmark::kMillisecond)->UseRealTime();
}

void require(bool right, const char* otherwise) {
  if (!right) throw std::runtime_error(otherwise);
}

void set_items(benchmark::State& state, std::int64_t count) { state.counters["items"] = static_cast<double>(count); }

void set_bytes(benchmark::State& state, std::uint64_t bytes) { state.counters["bytes"] = static_cast<double>(bytes); }

registrar::registrar(void (*add_all)()) { registrars().push_back(add_all); }

void run_registrars() {
  for (void (*const add_all)() : registrars()) add_all();
}

}  // namespace bench
