// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "zstd_packing.h"

#include <zstd.h>

#include <array>
#include <new>

namespace bxdb {
namespace {

class zstd_packer : public packer {
 public:
  zstd_packer() : context_(ZSTD_createCCtx(), &ZSTD_freeCCtx) {
    if (!context_) throw std::bad_alloc();
    ZSTD_CCtx_setParameter(context_.get(), ZSTD_c_checksumFlag, 1);
  }

  bool pack(const char* bytes, std::size_t count, bool last, UT_STREAM& sink) override {
    ZSTD_inBuffer in{bytes, count, 0};
    for (;;) {
      ZSTD_outBuffer out{block_.data(), block_.size(), 0};
      const std::size_t left = ZSTD_compressStream2(context_.get(), &out, &in, last ? ZSTD_e_end : ZSTD_e_continue);
      if (ZSTD_isError(left) != 0 || !write_all(sink, block_.data(), out.pos)) return false;
      if (last ? left == 0 : in.pos == in.size) return true;
    }
  }

 private:
  std::unique_ptr<ZSTD_CCtx, decltype(&ZSTD_freeCCtx)> context_;
  std::array<char, block_size> block_;
};

}  // namespace

void unpack_zstd(std::string_view packed, growing_text& text) {
  const std::unique_ptr<ZSTD_DCtx, decltype(&ZSTD_freeDCtx)> context(ZSTD_createDCtx(), &ZSTD_freeDCtx);
  if (!context) throw std::bad_alloc();
  ZSTD_inBuffer in{packed.data(), packed.size(), 0};
  for (;;) {
    std::size_t size = 0;
    char* room = text.room(size);
    ZSTD_outBuffer out{room, size, 0};
    const std::size_t result = ZSTD_decompressStream(context.get(), &out, &in);
    if (ZSTD_isError(result) != 0) damaged(text.name(), "zstd", in.pos, ZSTD_getErrorName(result));
    if (!text.add(out.pos)) return;
    const bool all_given = in.pos == in.size;
    if (result == 0 && all_given) return;
    if (result != 0 && all_given && out.pos < out.size) damaged(text.name(), "zstd", in.pos, "it ends too early");
  }
}

std::unique_ptr<packer> make_zstd_packer() { return std::make_unique<zstd_packer>(); }

}  // namespace bxdb
