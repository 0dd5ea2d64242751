// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Loading a device's installed data file, and dumping under the device's name.
#include <gtest/gtest.h>

#include <filesystem>

#include "record_bytes.h"

namespace {

using test::content;

class DeviceFiles : public testing::Test {
 protected:
  DeviceFiles() : old_cache_(np_devcache), old_place_(std::filesystem::current_path()), small_("TOP", 0, 0, 9, 9) {
    np_devcache = &cache_;
    PM_SPEC::setdatadir(folder_.name().c_str());
    small_.addinstance(new BX_INSTANCE("C", 0, 3, 4, 5));
  }

  ~DeviceFiles() override {
    std::filesystem::current_path(old_place_);
    PM_SPEC::setdatadir(nullptr);
    np_devcache = old_cache_;
  }

  void describe(const std::string& text) const { test::write_file(folder_.file("D1.npd"), text); }

  NP_DEVCACHE cache_;
  NP_DEVCACHE* old_cache_;
  std::filesystem::path old_place_;
  test::temporary_folder folder_;
  BX_DB small_;
};

TEST_F(DeviceFiles, LoadReadsTheInstalledDataFileAndTheDescriptionBesideIt) {
  ASSERT_EQ(small_.dump(folder_.file("D1.bxd").c_str(), false), 1);
  describe("NP_DEVICE:1\nrows 2 0 100 200\ncolumns 3 0 50 100 150\n");
  BX_DB db;
  ASSERT_EQ(db.load(pm_open("D1")), 1);
  EXPECT_TRUE(qelmodb::same_tree(db, small_, content::database));
  NP_DEVICE* device = db.getdevice();
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(device->maxrow(), 1);
  EXPECT_EQ(device->maxcol(), 2);
  EXPECT_EQ(device->rowof({0, 150}), 1);
  EXPECT_EQ(device->colof({49, 0}), 0);
  BX_DB second;
  ASSERT_EQ(second.load(pm_open("D1")), 1);
  EXPECT_EQ(second.getdevice(), device);
}

TEST_F(DeviceFiles, WithoutADescriptionTheDeviceIsNullAndTheResultIsTheFiles) {
  ASSERT_EQ(small_.dump(folder_.file("D1.bxd").c_str(), true), 1);
  BX_DB db;
  EXPECT_EQ(db.load(pm_open("D1")), 1);
  EXPECT_EQ(db.getdevice(), nullptr);
  EXPECT_NE(std::string(cache_.geterror()).find("D1.npd"), std::string::npos);
}

TEST_F(DeviceFiles, WithAFaultyDescriptionTheDeviceIsNullAndTheResultIsTheFiles) {
  ASSERT_EQ(small_.dump(folder_.file("D1.bxd").c_str(), true), 1);
  describe("NP_DEVICE:1\nrows 2 0 200 100\ncolumns 1 0 1\n");
  BX_DB db;
  EXPECT_EQ(db.load(pm_open("D1")), 1);
  EXPECT_EQ(db.getdevice(), nullptr);
  EXPECT_NE(std::string(cache_.geterror()).find("D1.npd:2:"), std::string::npos) << cache_.geterror();
}

TEST_F(DeviceFiles, WithADescriptionButNoDataFileTheDeviceIsKeptAndTheLoadFails) {
  describe("NP_DEVICE:1\nrows 1 0 1\ncolumns 1 0 1\n");
  BX_DB db;
  EXPECT_EQ(db.load(pm_open("D1")), 0);
  EXPECT_NE(db.getdevice(), nullptr);
}

TEST_F(DeviceFiles, ARegisteredDeviceIsPreferredToADescription) {
  auto* device = new NP_TABLEDEVICE({0, 1}, {0, 1});
  cache_.add("D1", device);
  describe("NP_DEVICE:1\nrows 2 0 100 200\ncolumns 3 0 50 100 150\n");
  ASSERT_EQ(small_.dump(folder_.file("D1.bxd").c_str(), true), 1);
  BX_DB db;
  ASSERT_EQ(db.load(pm_open("D1")), 1);
  EXPECT_EQ(db.getdevice(), device);
}

TEST_F(DeviceFiles, LoadgridReadsTheInstalledGridFile) {
  ASSERT_EQ(small_.dumpgrid(folder_.file("D1.bxg").c_str(), false), 1);
  cache_.add("D1", new NP_TABLEDEVICE({0, 1}, {0, 1}));
  BX_DB db;
  ASSERT_EQ(db.loadgrid(pm_open("D1")), 1);
  EXPECT_TRUE(qelmodb::same_tree(db, small_, content::grid));
  EXPECT_NE(db.getdevice(), nullptr);
}

TEST_F(DeviceFiles, DumpsWriteTheBareDeviceNameIntoTheCurrentFolder) {
  const test::temporary_folder here;
  std::filesystem::current_path(here.path());
  const PM_PIC_HDL picture = pm_open("D1");
  ASSERT_EQ(small_.dump(picture, true), 1);
  ASSERT_EQ(small_.dumpgrid(picture, true), 1);
  EXPECT_EQ(test::read_file(here.file("D1.bxd")).substr(0, 8), "BX_DB:A\n");
  EXPECT_EQ(test::read_file(here.file("D1.bxg")),
            "BX_DB:A\nBX_INSTANCE: \"TOP\" (0, 0) (9, 9)\n1\nBX_INSTANCE: \"C\" (0, 3) (4, 5)\n0\n");
  EXPECT_FALSE(std::filesystem::exists(folder_.file("D1.bxd")));
  std::filesystem::current_path(old_place_);
}

TEST_F(DeviceFiles, BinaryDumpsByDeviceHaveTheBinaryFirstLine) {
  const test::temporary_folder here;
  std::filesystem::current_path(here.path());
  ASSERT_EQ(small_.dump(pm_open("D1"), false), 1);
  ASSERT_EQ(small_.dumpgrid(pm_open("D1"), false), 1);
  EXPECT_EQ(test::read_file(here.file("D1.bxd")).substr(0, 8), "BX_DB:B\n");
  EXPECT_EQ(test::read_file(here.file("D1.bxg")).substr(0, 8), "BX_DB:B\n");
  std::filesystem::current_path(old_place_);
}

TEST_F(DeviceFiles, TheHandleIsReleasedWhenTheOperationEnds) {
  const auto picture = std::make_shared<const PM_DEVPIC>("D1");
  ASSERT_EQ(small_.dump(folder_.file("D1.bxd").c_str(), true), 1);
  BX_DB db;
  ASSERT_EQ(db.load(PM_PIC_HDL(picture)), 1);
  EXPECT_EQ(picture.use_count(), 1);
}

TEST_F(DeviceFiles, AnEmptyHandleGivesFalse) {
  EXPECT_EQ(small_.load(pm_open(nullptr)), 0);
  EXPECT_EQ(small_.loadgrid(PM_PIC_HDL()), 0);
  EXPECT_EQ(small_.dump(PM_PIC_HDL(), true), 0);
  EXPECT_EQ(small_.dumpgrid(PM_PIC_HDL(), false), 0);
  EXPECT_EQ(small_.getnuminstances(), 1);
}

TEST_F(DeviceFiles, TheLargeDesignVariableConvertsALoadByDeviceToo) {
  BX_DB wide("TOP", 0, 0, 9, 100);
  for (int i = 0; i < 41; ++i) wide.addinstance(new BX_INSTANCE("C", 0, i, 9, i));
  ASSERT_EQ(wide.dump(folder_.file("D1.bxd").c_str(), true), 1);
  const test::environment large("KRT_LARGE_DESIGN", "0");
  BX_DB db;
  ASSERT_EQ(db.load(pm_open("D1")), 1);
  EXPECT_EQ(db.getnuminstances(), 6);
}

}  // namespace
