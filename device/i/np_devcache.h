// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <memory>
#include <string>

#include "np_device.h"
#include "pm_device.h"

/// The registry of devices by name. It owns its devices; a database only borrows one.
/// Not thread-safe.
class BX_API NP_DEVCACHE {
 public:
  NP_DEVCACHE();
  NP_DEVCACHE(const NP_DEVCACHE&) = delete;
  NP_DEVCACHE& operator=(const NP_DEVCACHE&) = delete;

  /// Registers the device under the name and takes ownership. A device that the name had before is
  /// destroyed, so no database may still refer to it.
  void add(const char* name, NP_DEVICE* device);

  /// The device of the handle. A name that is not registered is looked for once more on every call:
  /// its description NAME.npd is read from the data directory (NP_TABLEDEVICE::read), and registered
  /// when it is sound. Null when there is none; geterror tells why. The other two arguments have no
  /// meaning yet; pass null and false.
  virtual NP_DEVICE* fetch(const PM_PIC_HDL& handle, void* reserved, bool flag);

  /// Why the last fetch found no device; names the file.
  const char* geterror() const noexcept { return error_.c_str(); }

  virtual ~NP_DEVCACHE();

 private:
  std::map<std::string, std::unique_ptr<NP_DEVICE>, std::less<>> devices_;
  std::string error_;
};

/// The cache in use; never null, replaceable like ut_msgman.
extern BX_API NP_DEVCACHE* np_devcache;
