// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "packing_stream.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <new>

#include "zstd_packing.h"

namespace bxdb {
namespace {

class gzip_packer : public packer {
 public:
  gzip_packer() {
    constexpr int gzip_header = 16;
    constexpr int memory_level = 8;
    if (deflateInit2(&state_, Z_DEFAULT_COMPRESSION, Z_DEFLATED, MAX_WBITS + gzip_header, memory_level,
                     Z_DEFAULT_STRATEGY) != Z_OK) {
      throw std::bad_alloc();
    }
  }
  ~gzip_packer() override { deflateEnd(&state_); }

  bool pack(const char* bytes, std::size_t count, bool last, UT_STREAM& sink) override {
    do {
      const std::size_t part = std::min(count, block_size);
      state_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes));
      state_.avail_in = static_cast<uInt>(part);
      bytes += part;
      count -= part;
      if (!drain(last && count == 0 ? Z_FINISH : Z_NO_FLUSH, sink)) return false;
    } while (count != 0);
    return true;
  }

 private:
  bool drain(int flush, UT_STREAM& sink) {
    do {
      state_.next_out = reinterpret_cast<Bytef*>(block_.data());
      state_.avail_out = static_cast<uInt>(block_.size());
      if (deflate(&state_, flush) == Z_STREAM_ERROR) return false;
      if (!write_all(sink, block_.data(), block_.size() - state_.avail_out)) return false;
    } while (state_.avail_out == 0);
    return true;
  }

  z_stream state_{};
  std::array<char, block_size> block_;
};

std::unique_ptr<packer> make_packer(packing how) {
  switch (how) {
    case packing::gzip:
      return std::make_unique<gzip_packer>();
    case packing::zstd:
      return make_zstd_packer();
    case packing::none:
      break;
  }
  return nullptr;
}

}  // namespace

bool write_all(UT_STREAM& stream, const char* bytes, std::size_t count) {
  constexpr std::size_t most = std::size_t{1} << 30;
  while (count != 0) {
    const auto part = static_cast<bx_long>(std::min(count, most));
    if (stream.swrite(bytes, part) != part) return false;
    bytes += part;
    count -= static_cast<std::size_t>(part);
  }
  return true;
}

packing_stream::packing_stream(packing how, UT_PTRFILE& sink)
    : UT_PTRFILE(UT_WRITE), packer_(make_packer(how)), sink_(sink) {}

bool packing_stream::writebytes(const void* bytes, std::size_t count) {
  const char* from = static_cast<const char*>(bytes);
  return packer_ ? packer_->pack(from, count, false, sink_) : write_all(sink_, from, count);
}

bool packing_stream::finish() {
  if (!flush()) return false;
  return (!packer_ || packer_->pack("", 0, true, sink_)) && sink_.flush();
}

}  // namespace bxdb
