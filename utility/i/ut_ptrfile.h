// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Files with a pointer fix-up table: the streams on which binary records travel.
#pragma once

#include <memory>
#include <string>

#include "ut_ptrfixtable.h"
#include "ut_stream.h"

class UT_FILEMANAGER;
class UT_OSFILE;

/// What a file is opened for.
enum UT_ACCESS : int { UT_READ = 1, UT_WRITE = 2 };

/// A stream that a file manager binds to a file, with the fix-up table of that file. Unbound, it
/// reads nothing and takes no writes. Destroying a bound one unregisters it; what was written and not
/// yet committed by UT_FILEMANAGER::rm_ofile is discarded.
class BX_API UT_PTRFILE : public UT_STREAM {
 public:
  explicit UT_PTRFILE(UT_ACCESS access);
  ~UT_PTRFILE() override;

  UT_ACCESS getaccess() const noexcept { return access_; }

  /// The fix-up table, owned by the stream.
  UT_PTRFIXTABLE& fixtable() noexcept { return fixtable_; }

 protected:
  std::size_t readbytes(void* bytes, std::size_t count) override;
  bool writebytes(const void* bytes, std::size_t count) override;
  std::int64_t rawbytesleft() const override;

 private:
  friend class UT_FILEMANAGER;

  UT_ACCESS access_;
  UT_PTRFIXTABLE fixtable_;
  UT_FILEMANAGER* manager_ = nullptr;
  std::unique_ptr<UT_OSFILE> file_;
};

/// A UT_PTRFILE in memory.
class BX_API UT_MEMFILE : public UT_PTRFILE {
 public:
  /// An empty stream for writing.
  UT_MEMFILE();

  /// A stream that reads a copy of length bytes.
  UT_MEMFILE(const void* bytes, std::size_t length);

  /// A stream that takes the text over and reads it.
  explicit UT_MEMFILE(std::string&& bytes);

  /// What was written so far, or what is read.
  const std::string& bytes();

 protected:
  std::size_t readbytes(void* bytes, std::size_t count) override;
  bool writebytes(const void* bytes, std::size_t count) override;
  std::int64_t rawbytesleft() const override;

 private:
  std::string bytes_;
};
