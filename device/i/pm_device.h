// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Device pictures: handles that name a device and know where its installed data files lie.
#pragma once

#include <memory>
#include <string>

#include "ut_types.h"

/// Where the data files of devices lie.
class BX_API PM_SPEC {
 public:
  explicit PM_SPEC(std::string device) : device_(std::move(device)) {}

  /// The data file of the device: data directory, "/", device name, extension. kind 2 asks for the
  /// block database, the only kind there is; installed asks for the installed file, the only place
  /// there is. Other values give the same answer.
  std::string getdatafilename(int kind, const char* extension, bool installed) const;

  /// The directory of all data files of this process, "." at first. Null or "" restores ".".
  static void setdatadir(const char* directory);
  static const char* getdatadir() noexcept;

 private:
  std::string device_;
};

/// The picture of one device.
class BX_API PM_DEVPIC {
 public:
  explicit PM_DEVPIC(std::string device) : device_(std::move(device)), spec_(device_) {}

  const char* getDeviceName() const noexcept { return device_.c_str(); }
  const PM_SPEC& getspec() const noexcept { return spec_; }

 private:
  std::string device_;
  PM_SPEC spec_;
};

/// A counted handle on a device picture; copies share the picture, which goes with the last of them.
class BX_API PM_PIC_HDL {
 public:
  /// No device.
  PM_PIC_HDL() noexcept = default;
  explicit PM_PIC_HDL(std::shared_ptr<const PM_DEVPIC> picture) noexcept : picture_(std::move(picture)) {}

  /// The picture, or null.
  const PM_DEVPIC* get() const noexcept { return picture_.get(); }
  const PM_DEVPIC* operator->() const noexcept { return picture_.get(); }
  explicit operator bool() const noexcept { return picture_ != nullptr; }

 private:
  std::shared_ptr<const PM_DEVPIC> picture_;
};

/// A handle on the picture of the device of this name. Opens no file. Null gives an empty handle.
BX_API PM_PIC_HDL pm_open(const char* device);
