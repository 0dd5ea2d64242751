// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "output_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "failure.h"
#include "file_names.h"
#include "ut_filemanager.h"

namespace bxdb {

class output_file::standard_output : public UT_PTRFILE {
 public:
  standard_output() : UT_PTRFILE(UT_WRITE) {}

  /// Throws failure with the reason for the first write that was not taken; nobody else has to report it then.
  void report_fault() {
    if (ok()) return;
    std::clearerr(stdout);
    throw failure(std::string("standard output: cannot write: ") + std::strerror(error_ != 0 ? error_ : EIO));
  }

 protected:
  bool writebytes(const void* bytes, std::size_t count) override {
    errno = 0;
    if (std::fwrite(bytes, 1, count, stdout) == count && std::fflush(stdout) == 0) return true;
    if (error_ == 0) error_ = errno;
    return false;
  }

 private:
  int error_ = 0;
};

qelmodb::form form_named(const std::string& name) {
  if (name == "compressed") return qelmodb::form::compressed;
  return name == "text" ? qelmodb::form::text : qelmodb::form::binary;
}

output_file::output_file(const std::string& name, packing how)
    : standard_(is_standard_stream(name) ? std::make_unique<standard_output>() : nullptr),
      file_(UT_WRITE),
      packed_(how, standard_ ? *standard_ : file_) {
  if (standard_) return;
  if (ut_file->add_ofile(name.c_str(), UT_WRITE, &file_, true) == nullptr) throw failure(ut_file->geterror());
}

output_file::~output_file() = default;

void output_file::commit() {
  const bool whole = packed_.finish();
  if (standard_) {
    if (!whole) standard_->fail();
    standard_->report_fault();
    return;
  }
  if (!whole) file_.fail();
  if (!ut_file->rm_ofile(&file_)) throw failure(ut_file->geterror());
}

}  // namespace bxdb
