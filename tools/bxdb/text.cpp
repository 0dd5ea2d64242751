// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "text.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "ut_string.h"

namespace bxdb {

namespace {

unsigned byte_at(std::string_view text, std::size_t at) {
  return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
}

/// The least and greatest byte that may follow the first one of a letter in UTF-8: no letter is written longer than it
/// need be, and surrogates and what lies beyond U+10FFFF are none.
std::pair<unsigned, unsigned> second_bytes(unsigned first) {
  switch (first) {
    case 0xe0:
      return {0xa0, 0xbf};
    case 0xed:
      return {0x80, 0x9f};
    case 0xf0:
      return {0x90, 0xbf};
    case 0xf4:
      return {0x80, 0x8f};
    default:
      return {0x80, 0xbf};
  }
}

/// The bytes of the letter in UTF-8 with which the text begins; 1 when it begins with none.
std::size_t letter_size(std::string_view text) {
  const unsigned first = byte_at(text, 0);
  if (first < 0xc2 || first > 0xf4) return 1;
  const std::size_t size = first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
  const auto [least, greatest] = second_bytes(first);
  if (byte_at(text, 1) < least || byte_at(text, 1) > greatest) return 1;
  for (std::size_t i = 2; i < size; ++i) {
    if ((byte_at(text, i) & 0xc0U) != 0x80) return 1;
  }
  return size;
}

/// Whether it is a control character, or a byte alone that terminals take for one.
bool is_control(std::string_view letter) {
  const unsigned first = byte_at(letter, 0);
  if (letter.size() == 2) return first == 0xc2 && byte_at(letter, 1) < 0xa0;
  return letter.size() == 1 && (first < 0x20 || (first >= 0x7f && first < 0xa0));
}

}  // namespace

std::string printable(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    const std::string_view letter = text.substr(0, letter_size(text));
    text.remove_prefix(letter.size());
    if (is_control(letter)) {
      for (const char c : letter) shown += fmt::format("\\x{:02x}", static_cast<unsigned char>(c));
    } else {
      shown += letter;
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
