// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <filesystem>
#include <optional>

#include "program.h"
#include "windows_process.h"

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
  const standard_handles handles{open_file(files.input, GENERIC_READ, OPEN_EXISTING),
                                 open_file(files.output, GENERIC_WRITE, CREATE_ALWAYS),
                                 open_file(files.error, GENERIC_WRITE, CREATE_ALWAYS)};
  const std::optional<int> ended = run_process(line, handles);
  for (const HANDLE file : {handles.input, handles.output, handles.error}) CloseHandle(file);
  if (ended) status = *ended;
  return ended.has_value();
}

}  // namespace test
