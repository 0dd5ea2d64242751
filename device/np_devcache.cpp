// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "np_devcache.h"

#include "ut_string.h"

namespace {

// Outlives all other static objects, which may still use a database while the process ends.
NP_DEVCACHE& built_in_cache() {
  static NP_DEVCACHE* const cache = new NP_DEVCACHE;
  return *cache;
}

}  // namespace

NP_DEVCACHE* np_devcache = &built_in_cache();

NP_DEVCACHE::NP_DEVCACHE() = default;
NP_DEVCACHE::~NP_DEVCACHE() = default;

void NP_DEVCACHE::add(const char* name, NP_DEVICE* device) { devices_[ut_text(name)].reset(device); }

NP_DEVICE* NP_DEVCACHE::fetch(const PM_PIC_HDL& handle, void* /*reserved*/, bool /*flag*/) {
  if (!handle) {
    error_ = "no device named";
    return nullptr;
  }
  const char* name = handle->getDeviceName();
  const auto known = devices_.find(name);
  if (known != devices_.end() && known->second) return known->second.get();
  const std::string description = handle->getspec().getdatafilename(2, ".npd", true);
  std::unique_ptr<NP_DEVICE> device = NP_TABLEDEVICE::read(description.c_str(), error_);
  NP_DEVICE* fetched = device.get();
  if (device) devices_[name] = std::move(device);
  return fetched;
}
