// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "unpack.h"

#include <zlib.h>

#include <algorithm>
#include <limits>
#include <new>

#include "growing_text.h"
#include "zstd_packing.h"

namespace bxdb {
namespace {

/// An inflate state that is released in any case.
struct inflater {
  inflater() {
    constexpr int gzip_only = 16;
    if (inflateInit2(&state, MAX_WBITS + gzip_only) != Z_OK) throw std::bad_alloc();
  }
  inflater(const inflater&) = delete;
  inflater& operator=(const inflater&) = delete;
  ~inflater() { inflateEnd(&state); }

  z_stream state{};
};

/// Gives the inflater the next part of the data; its counts have 32 bits only.
uInt part_of(std::size_t size) noexcept {
  return static_cast<uInt>(std::min<std::size_t>(size, std::numeric_limits<uInt>::max()));
}

void unpack_gzip(std::string_view packed, growing_text& text) {
  inflater gzip;
  std::size_t at = 0;
  for (;;) {
    std::size_t size = 0;
    char* room = text.room(size);
    const uInt given = part_of(packed.size() - at);
    const uInt offered = part_of(size);
    gzip.state.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data() + at));
    gzip.state.avail_in = given;
    gzip.state.next_out = reinterpret_cast<Bytef*>(room);
    gzip.state.avail_out = offered;
    const int result = inflate(&gzip.state, Z_NO_FLUSH);
    at += given - gzip.state.avail_in;
    if (!text.add(offered - gzip.state.avail_out)) return;
    if (result == Z_MEM_ERROR) throw std::bad_alloc();
    if (result == Z_STREAM_END) {
      if (at == packed.size()) return;
      inflateReset(&gzip.state);  // a further member follows
      continue;
    }
    if (result == Z_BUF_ERROR && at == packed.size()) damaged(text.name(), "gzip", at, "it ends too early");
    if (result != Z_OK) damaged(text.name(), "gzip", at, gzip.state.msg != nullptr ? gzip.state.msg : "no gzip member");
  }
}

std::string unpacked(std::string_view packed, packing how, growing_text text) {
  switch (how) {
    case packing::gzip:
      unpack_gzip(packed, text);
      return text.take();
    case packing::zstd:
      unpack_zstd(packed, text);
      return text.take();
    case packing::none:
      break;
  }
  return std::string(packed);
}

}  // namespace

damaged_data::damaged_data(const std::string& name, std::string_view format, std::uint64_t place,
                           const std::string& what)
    : failure(fmt::format("{}: {} data damaged at byte {}: {}", name, format, place, what)),
      at(place),
      reason(fmt::format("{} data damaged: {}", format, what)) {}

const char* to_string(packing how) noexcept {
  switch (how) {
    case packing::gzip:
      return "gzip";
    case packing::zstd:
      return "zstd";
    case packing::none:
      break;
  }
  return "none";
}

packing packing_of(std::string_view bytes) noexcept {
  if (bytes.starts_with("\x1f\x8b")) return packing::gzip;
  if (bytes.starts_with("\x28\xb5\x2f\xfd")) return packing::zstd;
  // A skippable frame, which some programs put first.
  const bool skippable = bytes.size() >= 4 && (static_cast<unsigned char>(bytes[0]) & 0xf0U) == 0x50U &&
                         bytes.substr(1, 3) == "\x2a\x4d\x18";
  return skippable ? packing::zstd : packing::none;
}

packing packing_for(std::string_view name) noexcept {
  if (name.ends_with(".gz")) return packing::gzip;
  return name.ends_with(".zst") ? packing::zstd : packing::none;
}

std::string unpack(std::string_view packed, packing how, const std::string& name, std::uint64_t limit) {
  return unpacked(packed, how, {name, limit, beyond_limit::fails});
}

std::string unpack_beginning(std::string_view packed, packing how, const std::string& name, std::size_t most) {
  return unpacked(packed, how, {name, most, beyond_limit::is_left_out}).substr(0, most);
}

}  // namespace bxdb
