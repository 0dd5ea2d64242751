// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "np_devcache.h"

#include <gtest/gtest.h>

#include "builders.h"
#include "test_host.h"

namespace {

constexpr const char* description = "NP_DEVICE:1\nrows 2 0 100 200\ncolumns 3 0 50 100 150\n";

class counted_device : public NP_TABLEDEVICE {
 public:
  explicit counted_device(int& destroyed) : NP_TABLEDEVICE({0, 1}, {0, 1}), destroyed_(destroyed) {}
  counted_device(const counted_device&) = delete;
  counted_device& operator=(const counted_device&) = delete;
  ~counted_device() override { ++destroyed_; }

 private:
  int& destroyed_;
};

class DeviceCache : public testing::Test {
 public:
  DeviceCache() { PM_SPEC::setdatadir(folder.name().c_str()); }
  ~DeviceCache() override { PM_SPEC::setdatadir(nullptr); }

 protected:
  NP_DEVICE* fetch(const char* name) { return cache.fetch(pm_open(name), nullptr, false); }

  test::temporary_folder folder;
  NP_DEVCACHE cache;
};

TEST_F(DeviceCache, GivesTheRegisteredDevice) {
  auto* device = new NP_TABLEDEVICE({0, 1}, {0, 1});
  cache.add("x100", device);
  EXPECT_EQ(fetch("x100"), device);
  EXPECT_EQ(fetch("x100"), device);
  EXPECT_EQ(fetch("x200"), nullptr);
}

TEST_F(DeviceCache, OwnsItsDevicesAndDestroysTheOneThatIsReplaced) {
  int destroyed = 0;
  {
    NP_DEVCACHE own;
    own.add("x", new counted_device(destroyed));
    own.add("y", new counted_device(destroyed));
    EXPECT_EQ(destroyed, 0);
    own.add("x", new counted_device(destroyed));
    EXPECT_EQ(destroyed, 1);
  }
  EXPECT_EQ(destroyed, 3);
}

TEST_F(DeviceCache, ReadsADescriptionOnceAndKeepsTheDevice) {
  test::write_file(folder.file("x100.npd"), description);
  NP_DEVICE* device = fetch("x100");
  ASSERT_NE(device, nullptr) << cache.geterror();
  EXPECT_EQ(device->maxrow(), 1);
  EXPECT_EQ(device->maxcol(), 2);
  test::write_file(folder.file("x100.npd"), "no longer one");
  EXPECT_EQ(fetch("x100"), device);
}

TEST_F(DeviceCache, LooksForAMissingDescriptionOnEveryCall) {
  EXPECT_EQ(fetch("late"), nullptr);
  EXPECT_TRUE(test::is_fault(cache.geterror(),
                             folder.file("late.npd") + ": cannot open for reading: ", "No such file or directory"));
  test::write_file(folder.file("late.npd"), description);
  EXPECT_NE(fetch("late"), nullptr);
}

TEST_F(DeviceCache, FaultyDescriptionGivesNoDeviceAndSaysWhere) {
  test::write_file(folder.file("bad.npd"), "NP_DEVICE:1\nrows 0\n");
  EXPECT_EQ(fetch("bad"), nullptr);
  EXPECT_EQ(std::string(cache.geterror()).substr(0, folder.file("bad.npd:2: expected").size()),
            folder.file("bad.npd:2: expected"));
  test::write_file(folder.file("bad.npd"), description);
  EXPECT_NE(fetch("bad"), nullptr);
}

TEST_F(DeviceCache, RegisteredDeviceHidesTheDescription) {
  test::write_file(folder.file("x100.npd"), description);
  auto* device = new NP_TABLEDEVICE({0, 1}, {0, 1});
  cache.add("x100", device);
  EXPECT_EQ(fetch("x100"), device);
}

TEST_F(DeviceCache, EmptyHandleHasNoDevice) {
  EXPECT_EQ(cache.fetch(PM_PIC_HDL(), nullptr, false), nullptr);
  EXPECT_STRNE(cache.geterror(), "");
}

TEST_F(DeviceCache, RemovedRegistrationGivesNoDevice) {
  int destroyed = 0;
  cache.add("x", new counted_device(destroyed));
  cache.add("x", nullptr);
  EXPECT_EQ(destroyed, 1);
  EXPECT_EQ(fetch("x"), nullptr);
}

TEST_F(DeviceCache, NameMayBeMissing) {
  cache.add(nullptr, new NP_TABLEDEVICE({0, 1}, {0, 1}));
  EXPECT_NE(fetch(""), nullptr);
}

TEST_F(DeviceCache, InUseIsNeverNullAndReplaceable) {
  ASSERT_NE(np_devcache, nullptr);
  NP_DEVCACHE* const built_in = np_devcache;
  np_devcache = &cache;
  EXPECT_EQ(np_devcache, &cache);
  np_devcache = built_in;
}

}  // namespace
