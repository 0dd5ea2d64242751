// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "text.h"

#include <fmt/format.h>

#include <algorithm>

#include "ut_string.h"

namespace bxdb {

std::string printable(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7f) {
      shown += fmt::format("\\x{:02x}", byte);
    } else {
      shown += c;
    }
  }
  return shown;
}

std::string rectangle_text(const UT_EXTREMA& box) {
  return fmt::format("({}, {}) ({}, {})", box.xmin, box.ymin, box.xmax, box.ymax);
}

std::string position_text(const BX_WIRE& wire) { return fmt::format("({}, {})", wire.nodex, wire.nodey); }

std::string counted(std::int64_t number, std::string_view one) {
  return fmt::format("{} {}{}", number, one, number == 1 ? "" : "s");
}

std::string size_text(std::uint64_t bytes) {
  if (bytes < 1000) return fmt::format("{} bytes", bytes);
  double size = static_cast<double>(bytes);
  const char* unit = "";
  for (const char* next : {"kB", "MB", "GB", "TB", "PB"}) {
    if (size < 1000.0) break;
    size /= 1000.0;
    unit = next;
  }
  return fmt::format("{:.1f} {}", size, unit);
}

bool ends_with_any_of(std::string_view name, std::initializer_list<std::string_view> endings) noexcept {
  return std::any_of(endings.begin(), endings.end(), [name](std::string_view end) { return name.ends_with(end); });
}

void path_names::enter(const BX_INSTANCE& inst, bx_long depth) {
  names_.resize(static_cast<std::size_t>(depth));
  names_.push_back(ut_text(inst.name));
}

std::string path_names::text() const {
  constexpr std::size_t half = most_names / 2;
  const std::size_t left_out = names_.size() > most_names ? names_.size() - most_names : 0;
  std::string joined;
  for (std::size_t i = 0; i < names_.size(); ++i) {
    if (i != 0) joined += '/';
    if (left_out != 0 && i == half) {
      joined += fmt::format("...{} more.../", left_out);
      i += left_out;
    }
    joined += names_[i];
  }
  return joined;
}

}  // namespace bxdb
