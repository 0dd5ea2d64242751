// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <windows.h>
// Behind it.
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include "host.h"

namespace bxdb {
namespace {

std::string to_utf8(const wchar_t* word) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, word, -1, nullptr, 0, nullptr, nullptr);
  if (size <= 1) return {};
  std::string utf8(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, word, -1, utf8.data(), size, nullptr, nullptr);
  utf8.pop_back();  // the NUL
  return utf8;
}

std::optional<file_identity> identity_of_handle(HANDLE file) {
  BY_HANDLE_FILE_INFORMATION about{};
  if (GetFileType(file) != FILE_TYPE_DISK || GetFileInformationByHandle(file, &about) == 0) return std::nullopt;
  const std::uint64_t index = std::uint64_t{about.nFileIndexHigh} << 32 | about.nFileIndexLow;
  return file_identity{about.dwVolumeSerialNumber, index, true};
}

}  // namespace

std::vector<std::string> command_line_words(int argc, char** argv) {
  for (std::FILE* stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
  SetConsoleOutputCP(CP_UTF8);
  // The words that main gets have lost what the code page of the system does not have.
  int count = 0;
  wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
  if (words == nullptr) return {argv, argv + argc};
  std::vector<std::string> result;
  for (int i = 0; i < count; ++i) result.push_back(to_utf8(words[i]));
  LocalFree(words);
  return result;
}

std::filesystem::path path_of(const std::string& name) {
  return std::u8string(name.begin(), name.end());  // throws filesystem_error when it is not UTF-8
}

std::FILE* open_for_reading(const std::string& name) { return _wfopen(path_of(name).c_str(), L"rb"); }

std::optional<file_identity> identity_of(const std::string& name) {
  constexpr DWORD share_all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE file = CreateFileW(path_of(name).c_str(), FILE_READ_ATTRIBUTES, share_all, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (file == INVALID_HANDLE_VALUE) return std::nullopt;
  const std::optional<file_identity> identity = identity_of_handle(file);
  CloseHandle(file);
  return identity;
}

std::optional<file_identity> identity_of(std::FILE* stream) {
  return identity_of_handle(reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream))));
}

bool error_output_is_terminal() noexcept { return _isatty(_fileno(stderr)) != 0; }

std::uint64_t physical_memory() noexcept {
  MEMORYSTATUSEX status{};
  status.dwLength = sizeof status;
  return GlobalMemoryStatusEx(&status) != 0 ? status.ullTotalPhys : 0;
}

}  // namespace bxdb
