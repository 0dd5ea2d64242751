// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "picture_text.h"

#include "json_output.h"

namespace bxdb {
namespace {

constexpr std::string_view replacement = "\xef\xbf\xbd";  // U+FFFD

/// The number of bytes of the character at the front of a UTF-8 text.
std::size_t character_size(std::string_view text) noexcept {
  std::size_t size = 1;
  while (size < text.size() && (static_cast<unsigned char>(text[size]) & 0xc0U) == 0x80U) ++size;
  return size;
}

bool is_control(std::string_view character) noexcept {
  const auto byte = static_cast<unsigned char>(character[0]);
  if (byte < 0x20 || byte == 0x7f) return true;
  // U+FFFE and U+FFFF are no characters, and XML does not take them.
  return character == "\xef\xbf\xbe" || character == "\xef\xbf\xbf";
}

}  // namespace

std::string shortened(std::string_view text, std::size_t most) {
  const std::string valid = valid_utf8(text);
  std::string shown;
  std::size_t count = 0;
  std::size_t kept = 0;  // bytes that remain when there are too many characters
  for (std::string_view rest = valid; !rest.empty(); ++count) {
    if (count == most) return shown.substr(0, kept) + "\xe2\x80\xa6";
    if (count + 1 == most) kept = shown.size();
    const std::string_view character = rest.substr(0, character_size(rest));
    shown += is_control(character) ? replacement : character;
    rest.remove_prefix(character.size());
  }
  return shown;
}

std::string xml_text(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

void show_text(cairo_t* cairo, const std::string& text, double x, double y, text_place place) {
  if (place != text_place::left) x -= text_width(cairo, text) / (place == text_place::centre ? 2.0 : 1.0);
  cairo_move_to(cairo, x, y);
  cairo_show_text(cairo, text.c_str());
}

double text_width(cairo_t* cairo, const std::string& text) {
  cairo_text_extents_t extents;
  cairo_text_extents(cairo, text.c_str(), &extents);
  return extents.x_advance;
}

}  // namespace bxdb
