// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_file_kind.h"

#include <algorithm>
#include <iterator>

namespace {

using namespace std::string_view_literals;

struct known_kind {
  std::string_view beginning;
  const char* name;
};

constexpr known_kind known_kinds[] = {
    {"\x1f\x8b"sv, "packed by gzip"},
    {"\x28\xb5\x2f\xfd"sv, "packed by zstd"},
    {"\xfd"
     "7zXZ\0"sv,
     "packed by xz"},
    {"BZh"sv, "packed by bzip2"},
    {"PK\x03\x04"sv, "a ZIP archive"},
    {"\x89PNG\r\n\x1a\n"sv, "a PNG picture"},
    {"\xff\xd8\xff"sv, "a JPEG picture"},
    {"GIF8"sv, "a GIF picture"},
    {"II*\0"sv, "a TIFF picture"},
    {"MM\0*"sv, "a TIFF picture"},
    {"<svg"sv, "an SVG picture"},
    {"%PDF-"sv, "a PDF document"},
    {"\x7f"
     "ELF"sv,
     "a program"},
    {"NP_DEVICE:"sv, "a device description"},
    {"\xff\xfe"sv, "a text in UTF-16"},
    {"\xfe\xff"sv, "a text in UTF-16"},
    {"\xef\xbb\xbf"
     "BX_DB:"sv,
     "a text with a byte order mark before \"BX_DB:\""},
};

// A frame that holds nothing, which some programs write before what they pack.
bool is_skippable_frame(std::string_view bytes) noexcept {
  return bytes.size() >= 4 && (static_cast<unsigned char>(bytes[0]) & 0xf0U) == 0x50U &&
         bytes.substr(1, 3) == "\x2a\x4d\x18"sv;
}

// Comments and the like may come before the element.
const char* kind_of_xml(std::string_view bytes) noexcept {
  constexpr std::size_t searched = 4096;
  return bytes.substr(0, searched).find("<svg"sv) != std::string_view::npos ? "an SVG picture" : "an XML document";
}

}  // namespace

const char* bx_foreign_kind(std::string_view bytes) noexcept {
  if (bytes.empty()) return "empty";
  if (is_skippable_frame(bytes)) return "packed by zstd";
  const auto* known = std::find_if(std::begin(known_kinds), std::end(known_kinds),
                                   [bytes](const known_kind& kind) { return bytes.starts_with(kind.beginning); });
  if (known != std::end(known_kinds)) return known->name;
  const bool has_mark = bytes.starts_with("\xef\xbb\xbf"sv);
  return bytes.substr(has_mark ? 3 : 0).starts_with("<?xml"sv) ? kind_of_xml(bytes) : nullptr;
}
