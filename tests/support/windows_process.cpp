// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "windows_process.h"

namespace test {

namespace {

// Under Wine a start fails now and then, before the program has done anything: the system has put the heap of Wine's
// loader, by chance, where Windows has its shared page (scripts/wine.sh). Failing three times in a row is no chance.
constexpr int starts = 3;

bool start(const std::wstring& line, const standard_handles& handles, PROCESS_INFORMATION& child) {
  STARTUPINFOW how{};
  how.cb = sizeof how;
  how.dwFlags = STARTF_USESTDHANDLES;
  how.hStdInput = handles.input;
  how.hStdOutput = handles.output;
  how.hStdError = handles.error;
  // The call may write to the line.
  std::wstring copy = line;
  return CreateProcessW(nullptr, copy.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &how, &child) != 0;
}

}  // namespace

std::optional<int> run_process(const std::wstring& line, const standard_handles& handles) {
  PROCESS_INFORMATION child{};
  int tries = 1;
  while (!start(line, handles, child)) {
    if (tries++ == starts) return std::nullopt;
  }
  WaitForSingleObject(child.hProcess, INFINITE);
  DWORD status = 0;
  const bool known = GetExitCodeProcess(child.hProcess, &status) != 0;
  CloseHandle(child.hThread);
  CloseHandle(child.hProcess);
  return known ? std::optional(static_cast<int>(status)) : std::nullopt;
}

}  // namespace test
