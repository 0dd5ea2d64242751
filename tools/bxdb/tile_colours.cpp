// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "tile_colours.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace bxdb {
namespace {

// Neighbours in this list, and the first ten among each other, differ in hue and in lightness.
constexpr std::array<unsigned, 20> palette = {
    0x5b8fd0, 0xf2953c, 0x5fb562, 0xd9534f, 0x9b78cc, 0xf1d34e, 0x35a7a3, 0xee8fb5, 0xa5714a, 0xa9cdf0,
    0xb9d957, 0x7a7a7a, 0xffcf9c, 0x2f6b3c, 0x8e2f3c, 0xcdb8e8, 0x27407a, 0x8a8a2c, 0xa6e3dc, 0xb83b93,
};

colour from_hex(unsigned rgb) noexcept {
  constexpr double full = 255.0;
  return {((rgb >> 16) & 0xffU) / full, ((rgb >> 8) & 0xffU) / full, (rgb & 0xffU) / full};
}

/// A pale colour; the hue goes round the circle from 0 to 1.
colour pale(double hue) noexcept {
  const auto channel = [hue](double shift) {
    const double sixth = std::fmod(hue + shift, 1.0) * 6.0;
    const double strength = std::clamp(std::abs(sixth - 3.0) - 1.0, 0.0, 1.0);
    return 0.62 + 0.30 * strength;
  };
  return {channel(0.0), channel(2.0 / 3.0), channel(1.0 / 3.0)};
}

}  // namespace

colour kind_colour(std::size_t kind) noexcept {
  if (kind < palette.size()) return from_hex(palette[kind]);
  // Steps of the golden ratio come near no hue for long.
  constexpr double golden = 0.6180339887498949;
  return pale(std::fmod(static_cast<double>(kind - palette.size()) * golden, 1.0));
}

colour ink_on(const colour& fill) noexcept {
  const double brightness = 0.30 * fill.red + 0.59 * fill.green + 0.11 * fill.blue;
  return brightness < 0.45 ? colour{1.0, 1.0, 1.0} : ink;
}

void set_colour(cairo_t* cairo, const colour& now) noexcept {
  cairo_set_source_rgb(cairo, now.red, now.green, now.blue);
}

}  // namespace bxdb
