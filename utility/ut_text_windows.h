// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Names and messages between UTF-8, which is what the library speaks, and UTF-16, which is what Windows does.
#pragma once

#include <string>
#include <string_view>

/// False when the text is not UTF-8.
bool ut_to_utf16(std::string_view utf8, std::wstring& utf16);

/// What is no UTF-16 comes out as U+FFFD.
std::string ut_to_utf8(std::wstring_view utf16);

/// What the system says about one of its error numbers, in the language of its user and without line ends.
std::string ut_windows_reason(unsigned long error);
