// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// An output file that appears as a whole, packed as its name says, or not at all.
#pragma once

#include <string>

#include "packing_stream.h"
#include "qelmoext.h"

namespace bxdb {

/// The form of this name: "text", "binary" or "compressed".
qelmodb::form form_named(const std::string& name);

class output_file {
 public:
  /// Opens the file for bytes that are packed as said. Throws failure with the reason when it cannot be
  /// written. The target stays what it was until commit.
  output_file(std::string name, packing how);

  /// Where the bytes go.
  UT_PTRFILE& stream() noexcept { return packed_; }

  /// Puts the file in its place. Throws failure with the reason when any byte was not taken; the target
  /// then stays what it was.
  void commit();

 private:
  std::string name_;
  UT_PTRFILE raw_;  // an output that is never committed is discarded by this one's destructor
  packing_stream packed_;
};

}  // namespace bxdb
