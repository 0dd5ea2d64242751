// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_ptrfile.h"

#include <utility>

#include "ut_filemanager.h"
#include "ut_osfile.h"

UT_PTRFILE::UT_PTRFILE(UT_ACCESS access) : access_(access) {}

UT_PTRFILE::~UT_PTRFILE() {
  if (manager_ != nullptr) manager_->forget(this);
}

std::size_t UT_PTRFILE::readbytes(void* bytes, std::size_t count) {
  return file_ && access_ == UT_READ ? file_->read(bytes, count) : 0;
}

bool UT_PTRFILE::writebytes(const void* bytes, std::size_t count) {
  return file_ && access_ == UT_WRITE && file_->write(bytes, count);
}

std::int64_t UT_PTRFILE::rawbytesleft() const { return file_ ? file_->bytes_left() : 0; }

UT_MEMFILE::UT_MEMFILE() : UT_PTRFILE(UT_WRITE) {}

UT_MEMFILE::UT_MEMFILE(const void* bytes, std::size_t length)
    : UT_MEMFILE(std::string(static_cast<const char*>(bytes), length)) {}

UT_MEMFILE::UT_MEMFILE(std::string&& bytes) : UT_PTRFILE(UT_READ), bytes_(std::move(bytes)) {
  read_from_memory(bytes_.data(), bytes_.size());
}

const std::string& UT_MEMFILE::bytes() {
  if (getaccess() == UT_WRITE) flush();
  return bytes_;
}

std::size_t UT_MEMFILE::readbytes(void* /*bytes*/, std::size_t /*count*/) { return 0; }

bool UT_MEMFILE::writebytes(const void* bytes, std::size_t count) {
  if (getaccess() != UT_WRITE) return false;
  bytes_.append(static_cast<const char*>(bytes), count);
  return true;
}

std::int64_t UT_MEMFILE::rawbytesleft() const { return 0; }
