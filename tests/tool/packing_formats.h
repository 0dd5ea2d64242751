// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The packings that this build of the tool has, made without it.
#pragma once

#include <string>
#include <vector>

namespace test {

struct packing_format {
  std::string name;    ///< as the tool calls it
  std::string ending;  ///< of the names of packed files
  std::string (*pack)(const std::string& bytes);
  std::string (*unpack)(const std::string& packed);  ///< of up to a megabyte
};

/// gzip first, and zstd last where there is zstd.
const std::vector<packing_format>& packings();

}  // namespace test
