// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <utility>

#include "ut_osfile.h"
#include "ut_text_windows.h"

namespace {

constexpr const char* cannot_read = "cannot open for reading";
constexpr const char* cannot_open_to_write = "cannot open for writing";

std::string reason(const std::string& name, const char* what, DWORD error) {
  return name + ": " + what + ": " + ut_windows_reason(error);
}

std::unique_ptr<UT_OSFILE> refuse(UT_OSFILE::fault& why, const std::string& name, const char* what, DWORD error) {
  why.text = reason(name, what, error);
  why.out_of_handles = error == ERROR_TOO_MANY_OPEN_FILES;
  return nullptr;
}

HANDLE system_handle(std::intptr_t handle) noexcept { return reinterpret_cast<HANDLE>(handle); }

bool is_device(const std::wstring& path) { return path.compare(0, 4, L"\\\\.\\") == 0; }

// The whole path, in the form that may be longer than 260 characters. What is a device to the system stays one.
bool full_path(const std::string& name, std::wstring& path) {
  std::wstring given;
  if (name.empty() || name.find('\0') != std::string::npos || !ut_to_utf16(name, given)) {
    SetLastError(ERROR_INVALID_NAME);
    return false;
  }
  if (given.compare(0, 4, L"\\\\?\\") == 0) {
    path = given;
    return true;
  }
  const DWORD room = GetFullPathNameW(given.c_str(), 0, nullptr, nullptr);
  path.resize(room);
  const DWORD length = GetFullPathNameW(given.c_str(), room, path.data(), nullptr);
  if (length == 0 || length >= room) return false;
  path.resize(length);
  if (is_device(path)) return true;
  path.insert(0, path.compare(0, 2, L"\\\\") == 0 ? L"\\\\?\\UNC" : L"\\\\?\\");
  if (path.compare(0, 8, L"\\\\?\\UNC\\") == 0) path.erase(8, 1);  // one of the two that were there
  return true;
}

// An open handle that is closed with the object.
class opened {
 public:
  opened(const std::wstring& path, DWORD access, DWORD share, DWORD disposition, DWORD flags)
      : handle_(CreateFileW(path.c_str(), access, share, nullptr, disposition, flags, nullptr)) {}
  opened(const opened&) = delete;
  opened& operator=(const opened&) = delete;
  ~opened() {
    if (valid()) CloseHandle(handle_);
  }

  bool valid() const noexcept { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE get() const noexcept { return handle_; }
  std::intptr_t release() noexcept {
    return reinterpret_cast<std::intptr_t>(std::exchange(handle_, INVALID_HANDLE_VALUE));
  }

 private:
  HANDLE handle_;
};

/// What stands at a path.
struct standing {
  bool exists = false;
  bool is_regular = false;
  DWORD attributes = 0;
};

constexpr DWORD share_all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Looks at what a path leads to and follows links to it, so that it is the file that is replaced and not the link.
// False when there is something that cannot be looked at.
bool look_at(std::wstring& path, standing& found) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES && !is_device(path)) {
    const DWORD error = GetLastError();
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
  }
  const opened file(path, FILE_READ_ATTRIBUTES, share_all, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
  if (!file.valid()) return false;
  found.exists = true;
  if (is_device(path)) return true;
  found.attributes = attributes;
  found.is_regular = GetFileType(file.get()) == FILE_TYPE_DISK;
  if (found.is_regular && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
    std::wstring target(32768, L'\0');
    const DWORD length = GetFinalPathNameByHandleW(file.get(), target.data(), static_cast<DWORD>(target.size()),
                                                   FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
    if (length == 0 || length >= target.size()) return false;
    target.resize(length);
    path = target;
    found.attributes = GetFileAttributesW(path.c_str());
  }
  return true;
}

// Opens a new file of its own in the target's folder, with the target's visible attributes.
std::intptr_t create_temporary(const std::wstring& target, DWORD attributes, std::filesystem::path& path) {
  static std::atomic<unsigned> counter{0};
  constexpr DWORD kept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
  for (int attempt = 0; attempt < 10000; ++attempt) {
    path = target.substr(0, target.find_last_of(L'\\') + 1) + L".qelmodb-" + std::to_wstring(GetCurrentProcessId()) +
           L"-" + std::to_wstring(counter++) + L".tmp";
    opened file(path.native(), GENERIC_WRITE, FILE_SHARE_READ, CREATE_NEW,
                (attributes & kept) | FILE_ATTRIBUTE_ARCHIVE);
    if (file.valid()) return file.release();
    if (GetLastError() != ERROR_FILE_EXISTS) break;
  }
  return -1;
}

}  // namespace

std::unique_ptr<UT_OSFILE> UT_OSFILE::open_read(const std::string& name, fault& why) {
  std::wstring path;
  if (!full_path(name, path)) return refuse(why, name, cannot_read, GetLastError());
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    return refuse(why, name, cannot_read, ERROR_DIRECTORY);
  }
  std::unique_ptr<UT_OSFILE> read(new UT_OSFILE(name));
  // Whether another program may replace the file meanwhile is left to the system.
  opened file(path, GENERIC_READ, share_all, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN);
  if (!file.valid()) return refuse(why, name, cannot_read, GetLastError());
  LARGE_INTEGER size{};
  const bool sized = GetFileType(file.get()) == FILE_TYPE_DISK && GetFileSizeEx(file.get(), &size) != 0;
  read->handle_ = file.release();
  if (sized) read->size_ = size.QuadPart;
  return read;
}

bool UT_OSFILE::is_stream(const std::string& name) {
  std::wstring path;
  standing there;
  return full_path(name, path) && look_at(path, there) && there.exists && !there.is_regular &&
         (there.attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

std::unique_ptr<UT_OSFILE> UT_OSFILE::open_write(const std::string& name, bool replace, fault& why) {
  const auto refused = [&](DWORD error) { return refuse(why, name, cannot_open_to_write, error); };
  std::wstring target;
  standing there;
  if (!full_path(name, target) || !look_at(target, there)) return refused(GetLastError());
  if (there.exists && (there.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return refused(ERROR_DIRECTORY);
  if (there.is_regular && (there.attributes & FILE_ATTRIBUTE_READONLY) != 0) return refused(ERROR_ACCESS_DENIED);
  std::unique_ptr<UT_OSFILE> written(new UT_OSFILE(name));
  if (!replace || (there.exists && !there.is_regular)) {
    opened file(target, GENERIC_WRITE, FILE_SHARE_READ,
                there.is_regular || !there.exists ? CREATE_ALWAYS : OPEN_EXISTING,
                there.attributes & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM));
    if (!file.valid()) return refused(GetLastError());
    written->handle_ = file.release();
    return written;
  }
  written->target_ = target;
  std::filesystem::path temporary;
  const std::intptr_t handle = create_temporary(target, there.exists ? there.attributes : 0, temporary);
  if (handle == -1) return refused(GetLastError());
  written->handle_ = handle;
  written->temporary_.swap(temporary);
  return written;
}

UT_OSFILE::~UT_OSFILE() {
  if (handle_ != -1) CloseHandle(system_handle(handle_));
  if (!temporary_.empty()) DeleteFileW(temporary_.c_str());
}

std::size_t UT_OSFILE::read(void* bytes, std::size_t count) noexcept {
  constexpr std::size_t most = std::size_t{1} << 30;
  DWORD got = 0;
  if (ReadFile(system_handle(handle_), bytes, static_cast<DWORD>(std::min(count, most)), &got, nullptr) == 0) return 0;
  read_ += got;
  return got;
}

bool UT_OSFILE::write(const void* bytes, std::size_t count) noexcept {
  constexpr std::size_t most = std::size_t{1} << 30;
  const char* from = static_cast<const char*>(bytes);
  while (count != 0) {
    DWORD put = 0;
    const bool done =
        WriteFile(system_handle(handle_), from, static_cast<DWORD>(std::min(count, most)), &put, nullptr) != 0;
    if (!done || put == 0) {
      if (write_fault_ == 0) write_fault_ = static_cast<int>(done ? DWORD{ERROR_DISK_FULL} : GetLastError());
      return false;
    }
    from += put;
    count -= put;
  }
  return true;
}

bool UT_OSFILE::commit(fault& why) {
  const bool in_place = temporary_.empty();
  const bool on_disk = GetFileType(system_handle(handle_)) == FILE_TYPE_DISK;
  const bool synced = !on_disk || FlushFileBuffers(system_handle(handle_)) != 0;
  const DWORD sync_error = GetLastError();
  const bool closed = CloseHandle(system_handle(handle_)) != 0;
  const DWORD error = synced ? GetLastError() : sync_error;
  handle_ = -1;
  if (!synced || !closed) {
    refuse(why, name_, "cannot write", error);
    return false;
  }
  if (in_place) return true;
  if (MoveFileExW(temporary_.c_str(), target_.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0) {
    refuse(why, name_, "cannot replace", GetLastError());
    return false;
  }
  temporary_.clear();
  return true;
}

std::string UT_OSFILE::write_error() const {
  return reason(name_, "cannot write", write_fault_ != 0 ? static_cast<DWORD>(write_fault_) : DWORD{ERROR_WRITE_FAULT});
}

std::int64_t UT_OSFILE::bytes_left() const noexcept {
  if (size_ < 0) return std::numeric_limits<std::int64_t>::max();
  return size_ > read_ ? size_ - read_ : 0;
}
