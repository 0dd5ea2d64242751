// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The file manager: opens files for UT_PTRFILE streams and closes them, so that a file that is being
// written replaces the old one as a whole or not at all.
//
// Not thread-safe, like all reading and writing of the library.
#pragma once

#include <string>
#include <vector>

#include "ut_ptrfile.h"

class BX_API UT_FILEMANAGER {
 public:
  UT_FILEMANAGER();
  UT_FILEMANAGER(const UT_FILEMANAGER&) = delete;
  UT_FILEMANAGER& operator=(const UT_FILEMANAGER&) = delete;

  /// Opens the file and binds the stream to it. Returns the stream, or null when the file cannot be
  /// opened for the access (geterror says why); a directory cannot.
  ///
  /// With access UT_WRITE and replace true, the bytes go to a temporary file beside the target
  /// (behind symbolic links), which rm_ofile puts in the target's place. What is_stream says to be a
  /// stream is written directly. With replace false an existing file is cut and written in place.
  /// Reading ignores replace. The stream stays the caller's and must not be registered already.
  virtual UT_PTRFILE* add_ofile(const char* name, UT_ACCESS access, UT_PTRFILE* stream, bool replace);

  /// Whether the name leads to what is written directly and never replaced: a pipe, a socket, a device, or a
  /// handle that a process has open, such as /dev/stdout and /dev/fd/5, even when a regular file is behind it. A
  /// handle of this process is written on from where it is.
  static bool is_stream(const char* name);

  /// Flushes and closes the stream and unregisters it. For a file that is written: makes the bytes
  /// durable and moves the temporary file over the target, but only when every write was taken;
  /// otherwise the target stays what it was. Returns true when everything that was written stands
  /// in the target, and always for a file that was read; false for a stream not registered here.
  virtual bool rm_ofile(UT_PTRFILE* stream);

  /// Takes over a registered stream, allocated with new, that its user leaves open. It is closed
  /// and deleted before a file is replaced, when file handles or memory run out, or with the manager.
  virtual void leave(UT_PTRFILE* stream);

  /// Closes what leave left; discards what was not committed of the other streams.
  virtual ~UT_FILEMANAGER();

  /// Number of registered streams, those left open included.
  bx_long getcount() const noexcept { return static_cast<bx_long>(streams_.size()); }

  /// Why the last add_ofile or rm_ofile failed: one line that names the file. Empty at first.
  const char* geterror() const noexcept { return error_.c_str(); }

  /// Closes and deletes the streams that were left open.
  void close_left();

 private:
  friend class UT_PTRFILE;

  void forget(UT_PTRFILE* stream) noexcept;

  std::vector<UT_PTRFILE*> streams_;
  std::vector<UT_PTRFILE*> left_;
  std::string error_;
};

/// The manager in use; never null, replaceable like ut_msgman.
extern BX_API UT_FILEMANAGER* ut_file;
