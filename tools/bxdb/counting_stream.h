// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// A stream that measures records.
#pragma once

#include <cstdint>

#include "ut_ptrfile.h"

namespace bxdb {

/// Counts the bytes that are written to it and keeps none of them.
class counting_stream : public UT_PTRFILE {
 public:
  counting_stream() : UT_PTRFILE(UT_WRITE) {}

  std::int64_t count() {
    flush();
    return count_;
  }

 protected:
  bool writebytes(const void* /*bytes*/, std::size_t count) override {
    count_ += static_cast<std::int64_t>(count);
    return true;
  }

 private:
  std::int64_t count_ = 0;
};

}  // namespace bxdb
