// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "pm_device.h"

#include "ut_string.h"

namespace {

std::string& data_directory() {
  static std::string directory = ".";
  return directory;
}

}  // namespace

std::string PM_SPEC::getdatafilename(int /*kind*/, const char* extension, bool /*installed*/) const {
  return data_directory() + "/" + device_ + ut_text(extension);
}

void PM_SPEC::setdatadir(const char* directory) { data_directory() = *ut_text(directory) != '\0' ? directory : "."; }

const char* PM_SPEC::getdatadir() noexcept { return data_directory().c_str(); }

PM_PIC_HDL pm_open(const char* device) {
  return device != nullptr ? PM_PIC_HDL(std::make_shared<const PM_DEVPIC>(device)) : PM_PIC_HDL();
}
