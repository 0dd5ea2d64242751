// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_string.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

char* ut_strdup(const char* text) {
  if (text == nullptr) return nullptr;
  const std::size_t size = std::strlen(text) + 1;
  void* copy = std::malloc(size);
  if (copy == nullptr) throw std::bad_alloc();
  return static_cast<char*>(std::memcpy(copy, text, size));
}

namespace {

constexpr std::size_t texts_at_once = 8;

// What a thread destroys at its end costs an allocation at its first use, and where that fails the system ends the
// process. So only long texts lie in such objects.
struct short_text {
  char bytes[512];
};

std::string& long_text(std::size_t number) {
  thread_local std::array<std::string, texts_at_once> texts;
  return texts[number];
}

}  // namespace

char* neoform(const char* format, ...) {
  thread_local std::array<short_text, texts_at_once> texts;
  thread_local std::size_t next = 0;
  const std::size_t number = next;
  next = (next + 1) % texts_at_once;
  char* const bytes = texts[number].bytes;

  std::va_list values;
  va_start(values, format);
  const int length = std::vsnprintf(bytes, sizeof(short_text), format, values);
  va_end(values);
  if (length < 0) *bytes = '\0';
  if (length < static_cast<int>(sizeof(short_text))) return bytes;

  std::string& text = long_text(number);
  text.resize(static_cast<std::size_t>(length));
  va_start(values, format);
  std::vsnprintf(text.data(), text.size() + 1, format, values);
  va_end(values);
  return text.data();
}

bx_long ut_atoi(const char* text) noexcept {
  while (*text == ' ' || (*text >= '\t' && *text <= '\r')) ++text;
  const bool negative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  constexpr std::int64_t beyond = std::int64_t{1} << 32;
  std::int64_t value = 0;
  for (; *text >= '0' && *text <= '9'; ++text) {
    if (value < beyond) value = value * 10 + (*text - '0');
  }
  if (negative) value = -value;
  constexpr std::int64_t least = std::numeric_limits<bx_long>::min();
  constexpr std::int64_t most = std::numeric_limits<bx_long>::max();
  return static_cast<bx_long>(value < least ? least : value > most ? most : value);
}

bx_long UT_STROBJ::find(const UT_STROBJ& what, bx_long start) const noexcept {
  if (start < 0) return -1;
  const std::size_t at = text_.find(what.text_, static_cast<std::size_t>(start));
  return at == std::string::npos ? -1 : static_cast<bx_long>(at);
}
