// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The device as a binary archive of Boost.Serialization: the same tree, with names as indices into one table, and the
// wires of an instance written and read as one block of bytes.
#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#include <boost/serialization/is_bitwise_serializable.hpp>
#include <boost/serialization/level.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/tracking.hpp>
#include <boost/serialization/vector.hpp>
#include <filesystem>
#include <fstream>
#include <optional>
#include <streambuf>

#include "bench_device.h"
#include "fresh_memory.h"
#include "registry.h"

namespace peer_archive {

struct wire {
  std::uint32_t name = 0;
  std::int32_t x = 0;
  std::int32_t y = 0;

  template <class Archive>
  void serialize(Archive& archive, unsigned) {
    archive& name& x& y;
  }
};

struct instance {
  std::uint32_t name = 0;
  std::int32_t xmin = 0, ymin = 0, xmax = 0, ymax = 0;
  std::vector<wire> wires;
  std::vector<instance> children;

  template <class Archive>
  void serialize(Archive& archive, unsigned) {
    archive& name& xmin& ymin& xmax& ymax& wires& children;
  }
};

struct tree {
  std::vector<std::string> names;
  instance root;

  template <class Archive>
  void serialize(Archive& archive, unsigned) {
    archive& names& root;
  }
};

}  // namespace peer_archive

BOOST_IS_BITWISE_SERIALIZABLE(peer_archive::wire)
BOOST_CLASS_IMPLEMENTATION(peer_archive::wire, boost::serialization::object_serializable)
BOOST_CLASS_IMPLEMENTATION(peer_archive::instance, boost::serialization::object_serializable)
BOOST_CLASS_TRACKING(peer_archive::wire, boost::serialization::track_never)
BOOST_CLASS_TRACKING(peer_archive::instance, boost::serialization::track_never)

namespace {

constexpr char peer[] = "Boost.Serialization";

// Bytes that go to a file of the file manager, so that they are as durable as a dump.
class managed_buffer : public std::streambuf {
 public:
  explicit managed_buffer(UT_PTRFILE& file) : file_(file) {}

 protected:
  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    return file_.swrite(bytes, static_cast<bx_long>(count));
  }
  int_type overflow(int_type byte) override {
    const char as_char = traits_type::to_char_type(byte);
    return file_.swrite(&as_char, 1) == 1 ? byte : traits_type::eof();
  }

 private:
  UT_PTRFILE& file_;
};

peer_archive::instance instance_at(const bench::flat_tree& flat, std::size_t& next) {
  const bench::flat_instance& from = flat.instances[next++];
  peer_archive::instance made{from.name, from.xmin, from.ymin, from.xmax, from.ymax, {}, {}};
  made.wires.reserve(from.wires);
  for (std::uint32_t w = from.first_wire; w < from.first_wire + from.wires; ++w) {
    made.wires.push_back({flat.wires[w].name, flat.wires[w].x, flat.wires[w].y});
  }
  made.children.reserve(from.children);
  for (std::uint32_t i = 0; i < from.children; ++i) made.children.push_back(instance_at(flat, next));
  return made;
}

const peer_archive::tree& kept_device() {
  static const peer_archive::tree made = [] {
    const bench::flat_tree& flat = bench::flat_device();
    std::size_t next = 0;
    return peer_archive::tree{flat.names, instance_at(flat, next)};
  }();
  return made;
}

bool write_archive(const std::string& target) {
  UT_PTRFILE file(UT_WRITE);
  if (ut_file->add_ofile(target.c_str(), UT_WRITE, &file, true) == nullptr) return false;
  managed_buffer buffer(file);
  {
    boost::archive::binary_oarchive archive(buffer, boost::archive::no_header);
    archive << kept_device();
  }
  return ut_file->rm_ofile(&file);
}

const std::string& archive_file() {
  static const std::string written = [] {
    const std::string file = bench::scratch_file("device.archive");
    if (!write_archive(file)) throw std::runtime_error("the archive was not written");
    return file;
  }();
  return written;
}

void add_sums(const peer_archive::instance& inst, bench::tree_sums& sums) {
  for (const peer_archive::wire& wire : inst.wires) sums.count(wire.x, wire.y);
  for (const peer_archive::instance& child : inst.children) add_sums(child, sums);
}

bool is_device(const peer_archive::tree& read) {
  bench::tree_sums sums;
  add_sums(read.root, sums);
  return sums == bench::expected_sums() && read.names == bench::flat_device().names;
}

void load(benchmark::State& state) {
  const std::string& file = archive_file();
  bench::make_memory_fresh();
  for (auto _ : state) {
    std::optional<peer_archive::tree> read;
    read.emplace();
    {
      std::filebuf buffer;
      buffer.open(file, std::ios::in | std::ios::binary);
      boost::archive::binary_iarchive archive(buffer, boost::archive::no_header);
      archive >> *read;
    }
    state.PauseTiming();
    bench::require(is_device(*read), "not the library's device");
    read.reset();
    bench::make_memory_fresh();
    state.ResumeTiming();
  }
  bench::set_bytes(state, std::filesystem::file_size(file));
}

void dump(benchmark::State& state) {
  kept_device();
  const std::string target = bench::scratch_file("dumped.archive");
  for (auto _ : state) {
    bench::make_memory_fresh(state);
    bench::require(write_archive(target), "the archive was not written");
  }
  bench::set_bytes(state, std::filesystem::file_size(target));
}

void add_all() {
  bench::add("binary_load", peer, load);
  bench::add("binary_dump", peer, dump);
}

const bench::registrar registered(add_all);

}  // namespace
