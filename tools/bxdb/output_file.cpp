// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "output_file.h"

#include "failure.h"
#include "ut_filemanager.h"

namespace bxdb {

qelmodb::form form_named(const std::string& name) {
  if (name == "compressed") return qelmodb::form::compressed;
  return name == "text" ? qelmodb::form::text : qelmodb::form::binary;
}

output_file::output_file(std::string name, packing how) : name_(std::move(name)), raw_(UT_WRITE), packed_(how, raw_) {
  if (ut_file->add_ofile(name_.c_str(), UT_WRITE, &raw_, true) == nullptr) throw failure(ut_file->geterror());
}

void output_file::commit() {
  if (!packed_.finish()) raw_.fail();
  if (!ut_file->rm_ofile(&raw_)) throw failure(ut_file->geterror());
}

}  // namespace bxdb
