// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// How names, rectangles and places in a tree are shown.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "qelmodb.h"
#include "ut_string.h"

namespace bxdb {

/// The text with the bytes of control characters as \xNN, so that one fact stays on one line and a name cannot steer
/// the terminal. Those of U+0080 to U+009F are among them, and bytes 0x80 to 0x9f that are part of no letter in UTF-8.
std::string printable(std::string_view text);

/// "(xmin, ymin) (xmax, ymax)", "(x, y)".
std::string rectangle_text(const UT_EXTREMA& box);
std::string position_text(const BX_WIRE& wire);

/// "1 wire", "2 wires".
std::string counted(std::int64_t number, std::string_view one);

/// "12.3 MB" and the like, for the eye.
std::string size_text(std::uint64_t bytes);

bool ends_with_any_of(std::string_view name, std::initializer_list<std::string_view> endings) noexcept;

/// The names from the root down to the instance in hand, while a tree is walked.
class path_names {
 public:
  /// Paths of more names show the first and the last of them only: in a tree of 100 thousand levels the
  /// paths of all instances together would not fit into any memory.
  static constexpr std::size_t most_names = 64;

  /// The walk has reached the instance at this depth; the root has 0.
  void enter(const BX_INSTANCE& inst, bx_long depth);

  /// The names joined by "/".
  std::string text() const;

 private:
  std::vector<const char*> names_;
};

}  // namespace bxdb
