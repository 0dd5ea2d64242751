// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Loading, checking and dumping, each beside what the machine needs for the same bytes without any of our work.
#include <filesystem>
#include <memory>
#include <optional>

#include "bare_decoding.h"
#include "bench_device.h"
#include "fresh_memory.h"
#include "qelmocompress.h"
#include "registry.h"

namespace {

void load(benchmark::State& state, const std::string& file) {
  const bench::tree_sums expected = bench::expected_sums();
  bench::make_memory_fresh();
  for (auto _ : state) {
    auto db = std::make_unique<BX_DB>();
    const bool loaded = db->load(file.c_str()) != 0;
    state.PauseTiming();
    bench::require(loaded && bench::sums_of(*db) == expected, "not the device that was dumped");
    db.reset();
    bench::make_memory_fresh();
    state.ResumeTiming();
  }
  bench::set_bytes(state, std::filesystem::file_size(file));
}

using decoder = std::size_t (*)(const std::string&, bench::bare_tree&);

bench::tree_sums sums_of(const bench::bare_tree& tree, std::size_t wires) {
  bench::tree_sums sums;
  for (std::size_t i = 0; i < wires; ++i) sums.count(tree.wires()[i].x, tree.wires()[i].y);
  return sums;
}

void load_limit(benchmark::State& state, const std::string& file, decoder decode) {
  const bench::tree_sums expected = bench::expected_sums();
  const std::size_t instances = bench::flat_device().instances.size();
  bench::make_memory_fresh();
  for (auto _ : state) {
    std::optional<bench::bare_tree> tree;
    tree.emplace(instances, static_cast<std::size_t>(expected.wires));
    const std::size_t wires = decode(file, *tree);
    benchmark::ClobberMemory();
    state.PauseTiming();
    bench::require(sums_of(*tree, wires) == expected, "not the wires of the file");
    tree.reset();
    bench::make_memory_fresh();
    state.ResumeTiming();
  }
}

void compressed_load_limit(benchmark::State& state) {
  const auto wires = static_cast<std::size_t>(bench::expected_sums().wires);
  std::vector<bench::bare_wire> table;
  for (std::int32_t i = 0; i < 100; ++i) table.push_back({i, -i, reinterpret_cast<std::uint64_t>(&table), 1});
  bench::make_memory_fresh();
  for (auto _ : state) {
    std::optional<bench::bare_tree> tree;
    tree.emplace(0, wires);
    bench::fill_from_table(table, wires, *tree);
    benchmark::DoNotOptimize(tree->wires());
    benchmark::ClobberMemory();
    state.PauseTiming();
    tree.reset();
    bench::make_memory_fresh();
    state.ResumeTiming();
  }
}

void unload(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    auto db = std::make_unique<BX_DB>();
    bench::require(db->load(bench::binary_file().c_str()) != 0, "the load failed");
    state.ResumeTiming();
    db.reset();
  }
}

void check(benchmark::State& state, const std::string& file) {
  const std::string bytes = bench::read_whole(file);
  for (auto _ : state) {
    bench::require(qelmodb::check_bytes(bytes, qelmodb::content::database).sound(), "the file is faulty");
  }
  bench::set_bytes(state, bytes.size());
}

void dump(benchmark::State& state, bool ascii) {
  BX_DB& db = bench::device();
  const std::string target = bench::scratch_file("dumped.bxd");
  for (auto _ : state) {
    bench::make_memory_fresh(state);
    bench::require(db.dump(target.c_str(), ascii) != 0, "the dump failed");
  }
  bench::set_bytes(state, std::filesystem::file_size(target));
}

// A database can be compressed once; each round has a fresh one.
std::unique_ptr<BX_DB> device_to_compress() {
  auto db = std::make_unique<BX_DB>();
  bench::require(db->load(bench::binary_file().c_str()) != 0, "the load failed");
  qelmodb::intern_root_name(*db);
  return db;
}

void compressed_dump(benchmark::State& state) {
  const std::string target = bench::scratch_file("dumped.bxd");
  const std::unique_ptr<BX_DB> db = device_to_compress();
  db->compress();
  for (auto _ : state) {
    bench::make_memory_fresh(state);
    bench::require(db->dumpcompress(target.c_str(), false) != 0, "the dump failed");
  }
  bench::set_bytes(state, std::filesystem::file_size(target));
}

void compress_and_dump(benchmark::State& state) {
  const std::string target = bench::scratch_file("dumped.bxd");
  for (auto _ : state) {
    state.PauseTiming();
    std::unique_ptr<BX_DB> db = device_to_compress();
    bench::make_memory_fresh();
    state.ResumeTiming();
    db->compress();
    bench::require(db->dumpcompress(target.c_str(), false) != 0, "the dump failed");
    state.PauseTiming();
    db.reset();
    state.ResumeTiming();
  }
  bench::set_bytes(state, std::filesystem::file_size(target));
}

void write_limit(benchmark::State& state, const std::string& like) {
  const std::string bytes = bench::read_whole(like);
  const std::string target = bench::scratch_file("written.bxd");
  for (auto _ : state) {
    bench::make_memory_fresh(state);
    bench::write_whole(target, bytes);
  }
  bench::set_bytes(state, bytes.size());
}

void add_loads() {
  using benchmark::State;
  bench::add("text_load", bench::library, [](State& state) { load(state, bench::text_file()); });
  bench::add("text_load", bench::limit, [](State& s) { load_limit(s, bench::text_file(), bench::decode_text); });
  bench::add("text_check", bench::library, [](State& state) { check(state, bench::text_file()); });
  bench::add("binary_load", bench::library, [](State& state) { load(state, bench::binary_file()); });
  bench::add("binary_load", bench::limit, [](State& s) { load_limit(s, bench::binary_file(), bench::decode_binary); });
  bench::add("binary_check", bench::library, [](State& state) { check(state, bench::binary_file()); });
  bench::add("compressed_load", bench::library, [](State& state) { load(state, bench::compressed_file()); });
  bench::add("compressed_load", bench::limit, compressed_load_limit);
  bench::add("compressed_check", bench::library, [](State& state) { check(state, bench::compressed_file()); });
  bench::add("unload", bench::library, unload);
}

void add_dumps() {
  using benchmark::State;
  bench::add("text_dump", bench::library, [](State& state) { dump(state, true); });
  bench::add("text_dump", bench::limit, [](State& state) { write_limit(state, bench::text_file()); });
  bench::add("binary_dump", bench::library, [](State& state) { dump(state, false); });
  bench::add("binary_dump", bench::limit, [](State& state) { write_limit(state, bench::binary_file()); });
  bench::add("compressed_dump", bench::library, compressed_dump);
  bench::add("compressed_dump", bench::limit, [](State& state) { write_limit(state, bench::compressed_file()); });
  bench::add("compress_and_dump", bench::library, compress_and_dump);
}

const bench::registrar registered_loads(add_loads);
const bench::registrar registered_dumps(add_dumps);

}  // namespace
