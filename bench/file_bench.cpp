// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Loading, checking and dumping, each beside what the machine needs for the same bytes without any of our work:
// reading or writing the file, and decoding its numbers into one block.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <vector>

#include "bench_device.h"
#include "qelmoext.h"

namespace {

void set_bytes(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * static_cast<std::int64_t>(state.iterations()));
}

void load(benchmark::State& state, const std::string& file) {
  const std::size_t bytes = bench::read_whole(file).size();
  for (auto _ : state) {
    auto db = std::make_unique<BX_DB>();
    if (db->load(file.c_str()) == 0) state.SkipWithError("the load failed");
    state.PauseTiming();
    db.reset();
    state.ResumeTiming();
  }
  set_bytes(state, bytes);
}

void text_load(benchmark::State& state) { load(state, bench::text_file()); }
void binary_load(benchmark::State& state) { load(state, bench::binary_file()); }

// Reads the file and turns every number of the text into a coordinate.
void text_load_limit(benchmark::State& state) {
  std::size_t bytes = 0;
  for (auto _ : state) {
    const std::string text = bench::read_whole(bench::text_file());
    bytes = text.size();
    std::vector<bx_long> numbers;
    numbers.reserve(text.size() / 6);
    bx_long value = 0;
    bool in_number = false;
    for (const char c : text) {
      const bool digit = c >= '0' && c <= '9';
      if (digit) {
        value = (in_number ? value * 10 : 0) + (c - '0');
      } else if (in_number) {
        numbers.push_back(value);
      }
      in_number = digit;
    }
    benchmark::DoNotOptimize(numbers.data());
  }
  set_bytes(state, bytes);
}

// Reads the file and decodes it, as if it were wires only, into one block.
void binary_load_limit(benchmark::State& state) {
  struct wire {
    bx_long x, y;
    std::uint64_t name;
    std::uint64_t flags;
  };
  std::size_t bytes = 0;
  for (auto _ : state) {
    const std::string file = bench::read_whole(bench::binary_file());
    bytes = file.size();
    std::vector<wire> wires(bytes / 16);
    const char* from = file.data();
    for (wire& w : wires) {
      std::memcpy(&w.name, from, 8);
      std::memcpy(&w.x, from + 8, 4);
      std::memcpy(&w.y, from + 12, 4);
      from += 16;
    }
    benchmark::DoNotOptimize(wires.data());
  }
  set_bytes(state, bytes);
}

void unload(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    auto db = std::make_unique<BX_DB>();
    if (db->load(bench::binary_file().c_str()) == 0) state.SkipWithError("the load failed");
    state.ResumeTiming();
    db.reset();
  }
}

void check(benchmark::State& state, const std::string& file) {
  const std::string bytes = bench::read_whole(file);
  for (auto _ : state) {
    if (!qelmodb::check_bytes(bytes, qelmodb::content::database).sound()) state.SkipWithError("the file is faulty");
  }
  set_bytes(state, bytes.size());
}

void text_check(benchmark::State& state) { check(state, bench::text_file()); }
void binary_check(benchmark::State& state) { check(state, bench::binary_file()); }

void dump(benchmark::State& state, bool ascii, const std::string& like) {
  const std::size_t bytes = bench::read_whole(like).size();
  const std::string target = bench::scratch_file("dumped.bxd");
  for (auto _ : state) {
    if (bench::device().dump(target.c_str(), ascii) == 0) state.SkipWithError("the dump failed");
  }
  set_bytes(state, bytes);
}

void text_dump(benchmark::State& state) { dump(state, true, bench::text_file()); }
void binary_dump(benchmark::State& state) { dump(state, false, bench::binary_file()); }

// Writes the same bytes through the file manager, which syncs and renames as a dump does.
void write_limit(benchmark::State& state, const std::string& like) {
  const std::string bytes = bench::read_whole(like);
  const std::string target = bench::scratch_file("written.bxd");
  for (auto _ : state) {
    UT_PTRFILE file(UT_WRITE);
    if (ut_file->add_ofile(target.c_str(), UT_WRITE, &file, true) == nullptr) state.SkipWithError("no file");
    file.swrite(bytes.data(), static_cast<bx_long>(bytes.size()));
    if (!ut_file->rm_ofile(&file)) state.SkipWithError("the write failed");
  }
  set_bytes(state, bytes.size());
}

void text_dump_limit(benchmark::State& state) { write_limit(state, bench::text_file()); }
void binary_dump_limit(benchmark::State& state) { write_limit(state, bench::binary_file()); }

BENCHMARK(text_load)->Unit(benchmark::kMillisecond);
BENCHMARK(text_load_limit)->Unit(benchmark::kMillisecond);
BENCHMARK(text_check)->Unit(benchmark::kMillisecond);
BENCHMARK(binary_load)->Unit(benchmark::kMillisecond);
BENCHMARK(binary_load_limit)->Unit(benchmark::kMillisecond);
BENCHMARK(binary_check)->Unit(benchmark::kMillisecond);
BENCHMARK(unload)->Unit(benchmark::kMillisecond);
BENCHMARK(text_dump)->Unit(benchmark::kMillisecond);
BENCHMARK(text_dump_limit)->Unit(benchmark::kMillisecond);
BENCHMARK(binary_dump)->Unit(benchmark::kMillisecond);
BENCHMARK(binary_dump_limit)->Unit(benchmark::kMillisecond);

}  // namespace
