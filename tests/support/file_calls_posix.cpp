// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Functions that stand before those of the C library, for the shared library too.
#undef _FORTIFY_SOURCE

#include "file_calls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <utility>

namespace {

test::file_call_watcher* watcher = nullptr;

// The function that would be called without ours: the C library's, or a sanitizer's that stands before it.
template <class Function>
Function* next_function(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// Asks, does it, and tells. A call that fails is not done.
template <class Do>
auto disturbed(test::file_call what, std::size_t bytes, Do action) -> decltype(action(bytes)) {
  const test::file_call_watcher::fate fate = watcher->before(what, bytes);
  decltype(action(bytes)) result = -1;
  int error = fate.error;
  if (error == 0) {
    result = action(std::min(bytes, fate.most));
    error = errno;
  }
  watcher->behind(what);
  errno = error;
  return result;
}

}  // namespace

namespace test {

struct file_call_hooks {
  static bool is_temporary(const char* path) {
    const std::string name = path;
    return name.starts_with(watcher->folder_) && is_temporary_name(name.substr(watcher->folder_.size()));
  }
  static bool is_folder(const char* path) { return watcher->folder_ == path; }
  static std::set<int>& files() { return watcher->files_; }
  static std::set<int>& folders() { return watcher->folders_; }
};

const char* to_string(file_call what) {
  constexpr const char* names[] = {"open",   "set_mode",    "write",       "sync",        "close",
                                   "rename", "open_folder", "sync_folder", "close_folder"};
  static_assert(std::size(names) == file_call_count);
  return names[static_cast<int>(what)];
}

file_call_watcher::file_call_watcher(std::string folder) : folder_(std::move(folder) + "/") { watcher = this; }

file_call_watcher::~file_call_watcher() { watcher = nullptr; }

int open_descriptors() {
  return static_cast<int>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

bool is_temporary_name(const std::string& name) { return name.starts_with(".qelmodb-") && name.ends_with(".tmp"); }

}  // namespace test

using test::file_call;
using hooks = test::file_call_hooks;

// The shared library is to find them.
#pragma GCC visibility push(default)
extern "C" {

int open(const char* path, int flags, ...) {
  static auto* const next = next_function<int(const char*, int, ...)>("open");
  unsigned mode = 0;
  if ((flags & O_CREAT) != 0) {
    std::va_list values;
    va_start(values, flags);
    mode = va_arg(values, unsigned);
    va_end(values);
  }
  if (watcher == nullptr) return next(path, flags, mode);
  const bool folder = hooks::is_folder(path);
  if (!folder && !hooks::is_temporary(path)) return next(path, flags, mode);
  const int handle = disturbed(folder ? file_call::open_folder : file_call::open, 0,
                               [&](std::size_t) { return next(path, flags, mode); });
  if (handle >= 0) (folder ? hooks::folders() : hooks::files()).insert(handle);
  return handle;
}

ssize_t write(int handle, const void* bytes, std::size_t count) {
  static auto* const next = next_function<ssize_t(int, const void*, std::size_t)>("write");
  if (watcher == nullptr || hooks::files().count(handle) == 0) return next(handle, bytes, count);
  return disturbed(file_call::write, count, [&](std::size_t part) { return next(handle, bytes, part); });
}

int fsync(int handle) {
  static auto* const next = next_function<int(int)>("fsync");
  if (watcher == nullptr) return next(handle);
  const bool folder = hooks::folders().count(handle) != 0;
  if (!folder && hooks::files().count(handle) == 0) return next(handle);
  return disturbed(folder ? file_call::sync_folder : file_call::sync, 0, [&](std::size_t) { return next(handle); });
}

int close(int handle) {
  static auto* const next = next_function<int(int)>("close");
  if (watcher == nullptr) return next(handle);
  const bool folder = hooks::folders().erase(handle) != 0;
  if (!folder && hooks::files().erase(handle) == 0) return next(handle);
  // Whatever it says, the system closes.
  const int closed = next(handle);
  return disturbed(folder ? file_call::close_folder : file_call::close, 0, [&](std::size_t) { return closed; });
}

int fchmod(int handle, mode_t mode) noexcept {
  static auto* const next = next_function<int(int, mode_t)>("fchmod");
  if (watcher == nullptr || hooks::files().count(handle) == 0) return next(handle, mode);
  return disturbed(file_call::set_mode, 0, [&](std::size_t) { return next(handle, mode); });
}

int rename(const char* from, const char* to) noexcept {
  static auto* const next = next_function<int(const char*, const char*)>("rename");
  if (watcher == nullptr || !hooks::is_temporary(from)) return next(from, to);
  return disturbed(file_call::rename, 0, [&](std::size_t) { return next(from, to); });
}
}
#pragma GCC visibility pop
