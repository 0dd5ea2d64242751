// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "unpack.h"

#include <fmt/format.h>
#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <limits>
#include <memory>

#include "failure.h"
#include "text.h"

namespace bxdb {
namespace {

[[noreturn]] void damaged(const std::string& name, const char* format, std::size_t at, const std::string& what) {
  throw failure(fmt::format("{}: {} data damaged at byte {}: {}", name, format, at, what));
}

/// A text that grows up to a limit.
class growing_text {
 public:
  growing_text(const std::string& name, std::uint64_t limit) : name_(name), limit_(limit) {}

  /// Room behind what is there already; at least one byte.
  char* room(std::size_t& size) {
    if (used_ == text_.size()) grow();
    size = text_.size() - used_;
    return text_.data() + used_;
  }

  void add(std::size_t count) {
    used_ += count;
    if (used_ > limit_) throw failure(fmt::format("{}: more than {} bytes unpacked; see --max-size", name_, limit_));
  }

  std::string take() {
    text_.resize(used_);
    return std::move(text_);
  }

 private:
  void grow() {
    constexpr std::uint64_t first = std::uint64_t{1} << 18;
    // One byte beyond the limit tells data that fills it from data that exceeds it.
    const std::uint64_t size = std::min(std::max<std::uint64_t>(first, used_ + used_ / 2), limit_ + 1);
    text_.resize(static_cast<std::size_t>(size));
  }

  const std::string& name_;
  std::uint64_t limit_;
  std::string text_;
  std::size_t used_ = 0;
};

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

std::string unpack_gzip(std::string_view packed, const std::string& name, std::uint64_t limit) {
  inflater gzip;
  growing_text text(name, limit);
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
    text.add(offered - gzip.state.avail_out);
    if (result == Z_MEM_ERROR) throw std::bad_alloc();
    if (result == Z_STREAM_END) {
      if (at == packed.size()) return text.take();
      inflateReset(&gzip.state);  // a further member follows
      continue;
    }
    if (result == Z_BUF_ERROR && at == packed.size()) damaged(name, "gzip", at, "it ends too early");
    if (result != Z_OK) damaged(name, "gzip", at, gzip.state.msg != nullptr ? gzip.state.msg : "no gzip member");
  }
}

std::string unpack_zstd(std::string_view packed, const std::string& name, std::uint64_t limit) {
  const std::unique_ptr<ZSTD_DCtx, decltype(&ZSTD_freeDCtx)> context(ZSTD_createDCtx(), &ZSTD_freeDCtx);
  if (!context) throw std::bad_alloc();
  growing_text text(name, limit);
  ZSTD_inBuffer in{packed.data(), packed.size(), 0};
  for (;;) {
    std::size_t size = 0;
    char* room = text.room(size);
    ZSTD_outBuffer out{room, size, 0};
    const std::size_t result = ZSTD_decompressStream(context.get(), &out, &in);
    if (ZSTD_isError(result) != 0) damaged(name, "zstd", in.pos, ZSTD_getErrorName(result));
    text.add(out.pos);
    const bool all_given = in.pos == in.size;
    if (result == 0 && all_given) return text.take();
    if (result != 0 && all_given && out.pos < out.size) damaged(name, "zstd", in.pos, "it ends too early");
  }
}

}  // namespace

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
  switch (how) {
    case packing::gzip:
      return unpack_gzip(packed, name, limit);
    case packing::zstd:
      return unpack_zstd(packed, name, limit);
    case packing::none:
      break;
  }
  return std::string(packed);
}

}  // namespace bxdb
