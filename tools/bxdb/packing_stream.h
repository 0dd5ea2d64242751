// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// A stream that packs what is written to it and hands it on.
#pragma once

#include <memory>

#include "packer.h"
#include "unpack.h"
#include "ut_ptrfile.h"

namespace bxdb {

/// A stream for dumps. The sink is borrowed and gets plain or packed bytes; the same bytes for the same
/// input, whenever and wherever.
class packing_stream : public UT_PTRFILE {
 public:
  packing_stream(packing how, UT_PTRFILE& sink);

  /// Hands everything to the sink and ends the packed data; nothing may be written afterwards. False when
  /// anything was not taken.
  bool finish();

 protected:
  bool writebytes(const void* bytes, std::size_t count) override;

 private:
  std::unique_ptr<packer> packer_;  // null where nothing is packed
  UT_PTRFILE& sink_;
};

}  // namespace bxdb
