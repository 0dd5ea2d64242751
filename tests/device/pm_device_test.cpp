// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "pm_device.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

class DevicePicture : public testing::Test {
 public:
  ~DevicePicture() override { PM_SPEC::setdatadir(nullptr); }
};

TEST_F(DevicePicture, HandleNamesItsDevice) {
  const PM_PIC_HDL handle = pm_open("x100");
  ASSERT_TRUE(handle);
  EXPECT_STREQ(handle->getDeviceName(), "x100");
  EXPECT_EQ(handle.get()->getDeviceName(), handle->getDeviceName());
}

TEST_F(DevicePicture, EmptyHandleHasNoPicture) {
  EXPECT_FALSE(PM_PIC_HDL());
  EXPECT_EQ(PM_PIC_HDL().get(), nullptr);
  EXPECT_FALSE(pm_open(nullptr));
}

TEST_F(DevicePicture, HandleIsNotMadeFromTextByItself) {
  static_assert(!std::is_convertible_v<const char*, PM_PIC_HDL>);
  static_assert(!std::is_convertible_v<std::string, PM_PIC_HDL>);
  static_assert(!std::is_convertible_v<std::nullptr_t, PM_PIC_HDL>);
  static_assert(std::is_copy_constructible_v<PM_PIC_HDL>);
}

TEST_F(DevicePicture, CopiesShareThePicture) {
  PM_PIC_HDL copy;
  const PM_DEVPIC* picture = nullptr;
  {
    const PM_PIC_HDL handle = pm_open("x100");
    copy = handle;
    picture = handle.get();
  }
  EXPECT_EQ(copy.get(), picture);
  EXPECT_STREQ(copy->getDeviceName(), "x100");
}

TEST_F(DevicePicture, DataFileIsDirectoryNameAndExtension) {
  const PM_PIC_HDL handle = pm_open("x100");
  EXPECT_STREQ(PM_SPEC::getdatadir(), ".");
  EXPECT_EQ(handle->getspec().getdatafilename(2, ".bxd", true), "./x100.bxd");
  PM_SPEC::setdatadir("data/devices");
  EXPECT_STREQ(PM_SPEC::getdatadir(), "data/devices");
  EXPECT_EQ(handle->getspec().getdatafilename(2, ".bxg", true), "data/devices/x100.bxg");
  EXPECT_EQ(handle->getspec().getdatafilename(2, nullptr, true), "data/devices/x100");
}

TEST_F(DevicePicture, EmptyDirectoryRestoresTheDefault) {
  for (const char* none : {"", static_cast<const char*>(nullptr)}) {
    PM_SPEC::setdatadir("elsewhere");
    PM_SPEC::setdatadir(none);
    EXPECT_STREQ(PM_SPEC::getdatadir(), ".");
  }
}

}  // namespace
