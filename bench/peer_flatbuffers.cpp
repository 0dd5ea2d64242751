// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The device in a FlatBuffer, which is used as it was read: wires of an instance are found by their names with the
// search that comes with it.
#include <filesystem>

#include "device_generated.h"
#include "fresh_memory.h"
#include "questions.h"
#include "registry.h"

namespace {

namespace schema = device_schema;
using flatbuffers::Offset;

constexpr char peer[] = "FlatBuffers";

class device_writer {
 public:
  explicit device_writer(const bench::flat_tree& flat) : flat_(flat), builder_(std::size_t{64} << 20) {
    for (const std::string& name : flat.names) names_.push_back(builder_.CreateString(name));
  }

  std::string write() {
    std::vector<Offset<schema::Instance>> instances;
    for (const bench::flat_instance& inst : flat_.instances) instances.push_back(instance(inst));
    builder_.Finish(schema::CreateDevice(builder_, builder_.CreateVector(instances)));
    return {reinterpret_cast<const char*>(builder_.GetBufferPointer()), builder_.GetSize()};
  }

 private:
  Offset<schema::Instance> instance(const bench::flat_instance& inst) {
    wires_.clear();
    for (std::uint32_t w = inst.first_wire; w < inst.first_wire + inst.wires; ++w) {
      const bench::flat_wire& wire = flat_.wires[w];
      wires_.push_back(schema::CreateWire(builder_, names_[wire.name], wire.x, wire.y));
    }
    const auto wires = builder_.CreateVector(wires_);
    return schema::CreateInstance(builder_, names_[inst.name], inst.xmin, inst.ymin, inst.xmax, inst.ymax, inst.parent,
                                  wires);
  }

  const bench::flat_tree& flat_;
  flatbuffers::FlatBufferBuilder builder_;
  std::vector<Offset<flatbuffers::String>> names_;
  std::vector<Offset<schema::Wire>> wires_;
};

const std::string& flat_file() {
  static const std::string written = [] {
    const std::string file = bench::scratch_file("device.flatbuffer");
    bench::write_whole(file, device_writer(bench::flat_device()).write());
    return file;
  }();
  return written;
}

const std::string& kept_bytes() {
  static const std::string bytes = bench::read_whole(flat_file());
  return bytes;
}

bool is_valid(const std::string& bytes) {
  constexpr flatbuffers::uoffset_t most_depth = 64;
  constexpr flatbuffers::uoffset_t most_tables = UINT32_MAX;
  flatbuffers::Verifier verifier(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(), most_depth,
                                 most_tables);
  return schema::VerifyDeviceBuffer(verifier);
}

bench::tree_sums sums_of(const schema::Device& device) {
  bench::tree_sums sums;
  for (const schema::Instance* inst : *device.instances()) {
    for (const schema::Wire* wire : *inst->wires()) sums.count(wire->x(), wire->y());
  }
  return sums;
}

// Reading and verifying: nothing is decoded.
void load(benchmark::State& state) {
  const std::string& file = flat_file();
  bench::make_memory_fresh();
  for (auto _ : state) {
    std::string bytes = bench::read_whole(file);
    const bool valid = is_valid(bytes);
    state.PauseTiming();
    bench::require(valid && sums_of(*schema::GetDevice(bytes.data())) == bench::expected_sums(),
                   "not the library's device");
    bytes = std::string();
    bench::make_memory_fresh();
    state.ResumeTiming();
  }
  bench::set_bytes(state, std::filesystem::file_size(file));
}

void walk(benchmark::State& state) {
  const schema::Device& device = *schema::GetDevice(kept_bytes().data());
  bench::tree_sums sums;
  for (auto _ : state) benchmark::DoNotOptimize(sums = sums_of(device));
  bench::require(sums == bench::expected_sums(), "not the library's device");
}

void wire_by_name(benchmark::State& state) {
  const schema::Device& device = *schema::GetDevice(kept_bytes().data());
  const bench::flat_tree& flat = bench::flat_device();
  const auto asked = bench::wire_questions(bench::many_questions);
  std::int64_t sum = 0;
  for (auto _ : state) {
    sum = 0;
    for (const bench::wire_question& q : asked) {
      const schema::Wire* wire = device.instances()->Get(q.instance)->wires()->LookupByKey(flat.names[q.name].c_str());
      if (wire != nullptr) sum += std::int64_t{wire->x()} + wire->y();
    }
    benchmark::DoNotOptimize(sum);
  }
  bench::require(sum == bench::expected_wire_answers(asked.size()), "not the library's answers");
  bench::set_items(state, static_cast<std::int64_t>(asked.size()));
}

void add_all() {
  bench::add("binary_load", peer, load);
  bench::add("traversal", peer, walk);
  bench::add("wire_by_name", peer, wire_by_name);
}

const bench::registrar registered(add_all);

}  // namespace
