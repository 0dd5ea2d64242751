// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// An output file that appears as a whole, packed as its name says, or not at all; or standard output.
#pragma once

#include <memory>
#include <string>

#include "packing_stream.h"
#include "qelmoext.h"

namespace bxdb {

/// The form of this name: "text", "binary" or "compressed".
qelmodb::form form_named(const std::string& name);

class output_file {
 public:
  /// Opens the file for bytes that are packed as said; "-" is standard output. Throws failure with the reason when it
  /// cannot be written. The target stays what it was until commit, unless it is a stream.
  output_file(const std::string& name, packing how);

  /// Where the bytes go.
  UT_PTRFILE& stream() noexcept { return packed_; }

  /// Puts the file in its place. Throws failure with the reason when any byte was not taken; the target
  /// then stays what it was.
  void commit();

  ~output_file();

 private:
  class standard_output;

  std::unique_ptr<standard_output> standard_;  // null unless that is the output
  UT_PTRFILE file_;  // an output that is never committed is discarded by this one's destructor
  packing_stream packed_;
};

}  // namespace bxdb
