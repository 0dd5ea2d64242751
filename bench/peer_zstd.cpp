// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The binary form packed with zstd at its usual level 3: what a client without templates would do to keep files small.
#include <zstd.h>

#include <cstring>
#include <optional>
#include <stdexcept>

#include "bench_device.h"
#include "fresh_memory.h"
#include "huge_block.h"
#include "registry.h"

namespace {

constexpr char peer[] = "zstd -3";
constexpr int level = 3;

std::string packed(const std::string& bytes) {
  std::string target(ZSTD_compressBound(bytes.size()), '\0');
  const std::size_t size = ZSTD_compress(target.data(), target.size(), bytes.data(), bytes.size(), level);
  if (ZSTD_isError(size)) throw std::runtime_error(ZSTD_getErrorName(size));
  target.resize(size);
  return target;
}

void pack_and_write(benchmark::State& state) {
  const std::string bytes = bench::read_whole(bench::binary_file());
  const std::string target = bench::scratch_file("binary.bxd.zst");
  std::size_t size = 0;
  for (auto _ : state) {
    bench::make_memory_fresh(state);
    const std::string written = packed(bytes);
    bench::write_whole(target, written);
    size = written.size();
  }
  bench::set_bytes(state, size);
}

const std::string& packed_file() {
  static const std::string written = [] {
    const std::string file = bench::scratch_file("packed.bxd.zst");
    bench::write_whole(file, packed(bench::read_whole(bench::binary_file())));
    return file;
  }();
  return written;
}

void read_and_unpack(benchmark::State& state) {
  const std::string expected = bench::read_whole(bench::binary_file());
  const std::string& file = packed_file();
  std::size_t packed_size = 0;
  bench::make_memory_fresh();
  for (auto _ : state) {
    const std::string bytes = bench::read_whole(file);
    std::optional<bench::huge_block> block;
    block.emplace(expected.size());
    const std::size_t size = ZSTD_decompress(block->as<char>(), expected.size(), bytes.data(), bytes.size());
    state.PauseTiming();
    packed_size = bytes.size();
    bench::require(size == expected.size() && std::memcmp(block->as<char>(), expected.data(), size) == 0,
                   "not the bytes that were packed");
    block.reset();
    bench::make_memory_fresh();
    state.ResumeTiming();
  }
  bench::set_bytes(state, packed_size);
}

void add_all() {
  bench::add("compress_and_dump", peer, pack_and_write);
  bench::add("compressed_load", peer, read_and_unpack);
}

const bench::registrar registered(add_all);

}  // namespace
