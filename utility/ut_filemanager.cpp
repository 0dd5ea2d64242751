// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_filemanager.h"

#include <algorithm>
#include <new>

#include "ut_osfile.h"
#include "ut_string.h"

namespace {

// The object outlives all other static objects, which may still load and dump while the process ends;
// what was left open by then is closed all the same.
UT_FILEMANAGER& built_in_files() {
  static UT_FILEMANAGER* const manager = new UT_FILEMANAGER;
  return *manager;
}

struct closer {
  ~closer() { built_in_files().close_left(); }
};
const closer at_exit;

}  // namespace

UT_FILEMANAGER* ut_file = &built_in_files();

UT_FILEMANAGER::UT_FILEMANAGER() = default;

UT_FILEMANAGER::~UT_FILEMANAGER() {
  close_left();
  while (!streams_.empty()) {
    UT_PTRFILE* stream = streams_.back();
    forget(stream);
    if (stream->access_ == UT_WRITE) stream->fail();  // what was written is gone
  }
}

UT_PTRFILE* UT_FILEMANAGER::add_ofile(const char* name, UT_ACCESS access, UT_PTRFILE* stream, bool replace) {
  UT_OSFILE::fault fault;
  auto open = [&] {
    return access == UT_WRITE ? UT_OSFILE::open_write(ut_text(name), replace, fault)
                              : UT_OSFILE::open_read(ut_text(name), fault);
  };
  std::unique_ptr<UT_OSFILE> file = open();
  if (!file && fault.out_of_handles && !left_.empty()) {
    close_left();
    file = open();
  }
  if (!file) {
    error_ = std::move(fault.text);
    return nullptr;
  }
  streams_.push_back(stream);
  stream->reset();
  stream->access_ = access;
  stream->file_ = std::move(file);
  stream->manager_ = this;
  return stream;
}

bool UT_FILEMANAGER::is_stream(const char* name) { return UT_OSFILE::is_stream(ut_text(name)); }

bool UT_FILEMANAGER::rm_ofile(UT_PTRFILE* stream) {
  if (stream == nullptr || stream->manager_ != this) return false;
  left_.erase(std::remove(left_.begin(), left_.end(), stream), left_.end());
  bool whole = true;
  if (stream->access_ == UT_WRITE) {
    UT_OSFILE::fault fault;
    whole = stream->flush();
    // One of them may be the target, and not every system replaces a file that is open.
    close_left();
    if (!whole) {
      error_ = stream->file_->write_error();
    } else if (!stream->file_->commit(fault)) {
      whole = false;
      error_ = std::move(fault.text);
    }
  }
  forget(stream);
  return whole;
}

void UT_FILEMANAGER::leave(UT_PTRFILE* stream) {
  try {
    left_.push_back(stream);
  } catch (const std::bad_alloc&) {
    delete stream;
  }
}

void UT_FILEMANAGER::close_left() {
  while (!left_.empty()) {
    UT_PTRFILE* stream = left_.back();
    left_.pop_back();
    delete stream;
  }
}

void UT_FILEMANAGER::forget(UT_PTRFILE* stream) noexcept {
  streams_.erase(std::remove(streams_.begin(), streams_.end(), stream), streams_.end());
  const bool was_ok = stream->ok();
  stream->reset();
  if (!was_ok) stream->fail();
  stream->file_.reset();
  stream->manager_ = nullptr;
}
