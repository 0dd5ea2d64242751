// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Runs programs on Windows.
#pragma once

#include <windows.h>

#include <optional>
#include <string>

namespace test {

/// What a program reads and writes; the handles are inheritable and stay the caller's.
struct standard_handles {
  HANDLE input;
  HANDLE output;
  HANDLE error;
};

/// Runs a command line and waits for the program's end: its exit code, or nothing when it cannot be started.
std::optional<int> run_process(const std::wstring& line, const standard_handles& handles);

}  // namespace test
