// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "packing_formats.h"

#include <gtest/gtest.h>
#include <zlib.h>
#ifdef BXDB_HAS_ZSTD
#include <zstd.h>
#endif

namespace test {

namespace {

constexpr std::size_t most_unpacked = std::size_t{1} << 20;
constexpr int gzip_header = 16;

void set_bytes(z_stream& state, const std::string& from, std::string& to) {
  state.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(from.data()));
  state.avail_in = static_cast<uInt>(from.size());
  state.next_out = reinterpret_cast<Bytef*>(to.data());
  state.avail_out = static_cast<uInt>(to.size());
}

std::string gzip(const std::string& bytes) {
  z_stream state{};
  deflateInit2(&state, Z_DEFAULT_COMPRESSION, Z_DEFLATED, MAX_WBITS + gzip_header, 8, Z_DEFAULT_STRATEGY);
  std::string packed(deflateBound(&state, static_cast<uLong>(bytes.size())), '\0');
  set_bytes(state, bytes, packed);
  EXPECT_EQ(deflate(&state, Z_FINISH), Z_STREAM_END);
  packed.resize(state.total_out);
  deflateEnd(&state);
  return packed;
}

std::string gunzip(const std::string& packed) {
  z_stream state{};
  inflateInit2(&state, MAX_WBITS + gzip_header);
  std::string bytes(most_unpacked, '\0');
  set_bytes(state, packed, bytes);
  EXPECT_EQ(inflate(&state, Z_FINISH), Z_STREAM_END);
  bytes.resize(state.total_out);
  inflateEnd(&state);
  return bytes;
}

#ifdef BXDB_HAS_ZSTD
std::string zstd(const std::string& bytes) {
  std::string packed(ZSTD_compressBound(bytes.size()), '\0');
  packed.resize(ZSTD_compress(packed.data(), packed.size(), bytes.data(), bytes.size(), 3));
  return packed;
}

std::string unzstd(const std::string& packed) {
  std::string bytes(most_unpacked, '\0');
  const std::size_t got = ZSTD_decompress(bytes.data(), bytes.size(), packed.data(), packed.size());
  EXPECT_EQ(ZSTD_isError(got), 0U);
  bytes.resize(got);
  return bytes;
}
#endif

}  // namespace

const std::vector<packing_format>& packings() {
  static const std::vector<packing_format> known{
      {"gzip", ".gz", gzip, gunzip},
#ifdef BXDB_HAS_ZSTD
      {"zstd", ".zst", zstd, unzstd},
#endif
  };
  return known;
}

}  // namespace test
