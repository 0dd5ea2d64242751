// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// For builds without the library.
#include "failure.h"
#include "zstd_packing.h"

namespace bxdb {

void unpack_zstd(std::string_view /*packed*/, growing_text& text) {
  throw failure(text.name() + ": packed with zstd, which this build of bxdb was made without");
}

std::unique_ptr<packer> make_zstd_packer() {
  throw failure("cannot pack with zstd: this build of bxdb was made without it");
}

}  // namespace bxdb
