// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What packs the bytes of an output file.
#pragma once

#include <cstddef>

#include "ut_stream.h"

namespace bxdb {

/// A packer of one format.
class packer {
 public:
  /// Bytes that are handed on at once.
  static constexpr std::size_t block_size = std::size_t{256} << 10;

  packer() = default;
  packer(const packer&) = delete;
  packer& operator=(const packer&) = delete;
  virtual ~packer() = default;

  /// Packs the bytes and writes what comes out to the sink; last ends the packed data. False on a fault.
  virtual bool pack(const char* bytes, std::size_t count, bool last, UT_STREAM& sink) = 0;
};

/// Writes all bytes, however many.
bool write_all(UT_STREAM& stream, const char* bytes, std::size_t count);

}  // namespace bxdb
