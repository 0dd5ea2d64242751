// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// How a delta-coded wire record holds its coordinates: behind the name reference comes a byte with a two-bit code for
// each (x in bits 3 and 2, y in bits 1 and 0), then the payloads of x and y.
#pragma once

#include <cstdint>

#include "ut_arith.h"

enum bx_delta_code : unsigned {
  bx_delta_same = 0,
  bx_delta_one_byte = 1,
  bx_delta_two_bytes = 2,
  bx_delta_absolute = 3
};

constexpr unsigned bx_delta_codes(bx_delta_code x, bx_delta_code y) noexcept { return x * 4U + y; }
constexpr bx_delta_code bx_delta_x_code(unsigned codes) noexcept { return bx_delta_code{codes >> 2 & 3U}; }
constexpr bx_delta_code bx_delta_y_code(unsigned codes) noexcept { return bx_delta_code{codes & 3U}; }

/// The bytes of a payload.
constexpr int bx_delta_size(bx_delta_code code) noexcept {
  return code == bx_delta_absolute ? 4 : static_cast<int>(code);
}

/// The coordinate that a payload stands for behind the current one.
constexpr bx_long bx_delta_value(bx_delta_code code, std::uint64_t payload, bx_long current) noexcept {
  switch (code) {
    case bx_delta_one_byte:
      return ut_wrap_add(current, static_cast<std::int8_t>(static_cast<std::uint8_t>(payload)));
    case bx_delta_two_bytes:
      return ut_wrap_add(current, static_cast<std::int16_t>(static_cast<std::uint16_t>(payload)));
    case bx_delta_absolute:
      return static_cast<bx_long>(static_cast<bx_ulong>(payload));
    default:
      return current;
  }
}
