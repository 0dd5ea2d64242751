// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_text_windows.h"

#include <windows.h>

#include <climits>

bool ut_to_utf16(std::string_view utf8, std::wstring& utf16) {
  utf16.clear();
  if (utf8.empty()) return true;
  if (utf8.size() > INT_MAX) return false;
  const int size = static_cast<int>(utf8.size());
  const int length = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), size, nullptr, 0);
  if (length <= 0) return false;
  utf16.resize(static_cast<std::size_t>(length));
  return MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), size, utf16.data(), length) == length;
}

std::string ut_to_utf8(std::wstring_view utf16) {
  if (utf16.empty() || utf16.size() > INT_MAX) return {};
  const int size = static_cast<int>(utf16.size());
  const int length = WideCharToMultiByte(CP_UTF8, 0, utf16.data(), size, nullptr, 0, nullptr, nullptr);
  std::string utf8(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(CP_UTF8, 0, utf16.data(), size, utf8.data(), length, nullptr, nullptr);
  return utf8;
}

std::string ut_windows_reason(unsigned long error) {
  wchar_t text[512];
  constexpr DWORD flags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
  DWORD length = FormatMessageW(flags, nullptr, error, 0, text, sizeof text / sizeof text[0], nullptr);
  while (length != 0 && (text[length - 1] == L' ' || text[length - 1] == L'.')) --length;
  if (length == 0) return "error " + std::to_string(error);
  return ut_to_utf8({text, length});
}
