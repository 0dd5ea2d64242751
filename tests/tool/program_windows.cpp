// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <windows.h>

#include <filesystem>

#include "program.h"

namespace test {

const char* const no_input = "NUL";

namespace {

std::wstring wide(const std::string& text) {
  return std::filesystem::path(std::u8string(text.begin(), text.end())).native();
}

// Quoted so that the program finds the word as it is: backslashes count only before a quote.
std::wstring quoted(const std::wstring& word) {
  std::wstring text = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t c : word) {
    if (c == L'"') text.append(backslashes + 1, L'\\');
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    text += c;
  }
  return text.append(backslashes, L'\\') + L'"';
}

HANDLE open_file(const std::string& name, DWORD access, DWORD disposition) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  return CreateFileW(wide(name).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, disposition, 0,
                     nullptr);
}

}  // namespace

bool start_program(const std::vector<std::string>& words, const program_files& files, int& status) {
  std::wstring line;
  for (const std::string& word : words) line += quoted(wide(word)) + L" ";
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = open_file(files.input, GENERIC_READ, OPEN_EXISTING);
  start.hStdOutput = open_file(files.output, GENERIC_WRITE, CREATE_ALWAYS);
  start.hStdError = open_file(files.error, GENERIC_WRITE, CREATE_ALWAYS);
  PROCESS_INFORMATION child{};
  const bool started =
      CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &child) != 0;
  for (const HANDLE file : {start.hStdInput, start.hStdOutput, start.hStdError}) CloseHandle(file);
  if (!started) return false;
  DWORD ended = 0;
  WaitForSingleObject(child.hProcess, INFINITE);
  if (GetExitCodeProcess(child.hProcess, &ended) != 0) status = static_cast<int>(ended);
  CloseHandle(child.hThread);
  CloseHandle(child.hProcess);
  return true;
}

}  // namespace test
