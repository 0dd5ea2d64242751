// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The system calls by which a file is replaced, seen and disturbed by a test of the same process. A program that wants
// them is built with file_calls_posix.cpp.
#pragma once

#include <cstddef>
#include <set>
#include <string>

namespace test {

enum class file_call { open, set_mode, write, sync, close, rename, open_folder, sync_folder, close_folder };
inline constexpr int file_call_count = 9;

const char* to_string(file_call what);

/// While it lives, it is asked what becomes of each call for a temporary file in a folder, and of those for the folder
/// itself that make such a file durable. All other calls of the process go their way. One at a time.
class file_call_watcher {
 public:
  explicit file_call_watcher(std::string folder);
  file_call_watcher(const file_call_watcher&) = delete;
  file_call_watcher& operator=(const file_call_watcher&) = delete;
  virtual ~file_call_watcher();

  /// What becomes of a call.
  struct fate {
    int error = 0;                                    ///< it fails with this; a close closes all the same
    std::size_t most = static_cast<std::size_t>(-1);  ///< a write takes no more bytes
  };

  virtual fate before(file_call what, std::size_t bytes) = 0;
  virtual void behind(file_call /*what*/) {}

 private:
  friend struct file_call_hooks;

  std::string folder_;  // with a slash
  std::set<int> files_;
  std::set<int> folders_;
};

/// Files that this process has open.
int open_descriptors();

/// Whether this is the name, without folder, of a temporary file.
bool is_temporary_name(const std::string& name);

}  // namespace test
