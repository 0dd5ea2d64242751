// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The colours of pictures.
#pragma once

#include <cairo.h>

#include <cstddef>

namespace bxdb {

struct colour {
  double red;
  double green;
  double blue;
};

inline constexpr colour ink{0.13, 0.13, 0.13};
inline constexpr colour ground{0.945, 0.945, 0.945};  // where no tile is

/// The colour of the kind with this number: well apart for the first 20, then pale ones of ever other hues.
colour kind_colour(std::size_t kind) noexcept;

/// The ink that can be read on a colour.
colour ink_on(const colour& fill) noexcept;

void set_colour(cairo_t* cairo, const colour& now) noexcept;

}  // namespace bxdb
