// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// One open file of the operating system. This header and its sources, one for each system, are the
// only place that knows how files are opened, synced and replaced; all names are UTF-8.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

class UT_OSFILE {
 public:
  struct fault {
    std::string text;  // one line that names the file
    bool out_of_handles = false;
  };

  UT_OSFILE(const UT_OSFILE&) = delete;
  UT_OSFILE& operator=(const UT_OSFILE&) = delete;

  /// Null and a fault when the file cannot be read, or is a directory.
  static std::unique_ptr<UT_OSFILE> open_read(const std::string& name, fault& why);

  /// Whether the name leads to what is written directly, and never replaced: a pipe, a socket, a device, or a handle
  /// that a process has open, such as /dev/stdout, whatever the handle leads to.
  static bool is_stream(const std::string& name);

  /// Opens for writing: with replace to a temporary file beside a regular target, else in place. A stream is written on
  /// from where it is.
  static std::unique_ptr<UT_OSFILE> open_write(const std::string& name, bool replace, fault& why);

  /// Closes; a temporary file that was not committed is removed.
  ~UT_OSFILE();

  /// Bytes read, 0 at the end or on a fault.
  std::size_t read(void* bytes, std::size_t count) noexcept;

  /// True when all bytes were taken.
  bool write(const void* bytes, std::size_t count) noexcept;

  /// Makes what was written durable and puts it in the target's place.
  bool commit(fault& why);

  /// What the first failed write met, as a line that names the file.
  std::string write_error() const;

  /// Bytes not read yet; 2^63 - 1 when the system cannot tell (a pipe, a device).
  std::int64_t bytes_left() const noexcept;

 private:
  // Made before the file is opened: memory running out must not lose an open file, nor a temporary one.
  explicit UT_OSFILE(std::string name) : name_(std::move(name)) {}

  std::intptr_t handle_ = -1;        // what the system knows the file by; -1 when it is closed
  std::string name_;                 // as the client gave it, for messages
  std::filesystem::path target_;     // where a commit puts the temporary file
  std::filesystem::path temporary_;  // empty when the target is written in place
  std::int64_t size_ = -1;
  std::int64_t read_ = 0;
  int write_fault_ = 0;  // the system's number for it
};
