// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Unpacking gzip and zstd data in memory.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "failure.h"

namespace bxdb {

/// Packed data that cannot be read.
class damaged_data : public failure {
 public:
  damaged_data(const std::string& name, std::string_view format, std::uint64_t at, const std::string& reason);

  std::uint64_t at;    ///< the packed byte where that was found
  std::string reason;  ///< without name and place
};

enum class packing { none, gzip, zstd };

const char* to_string(packing how) noexcept;

/// How the bytes of a file are packed, told by the first of them.
packing packing_of(std::string_view bytes) noexcept;

/// How a file of this name is to be packed, told by its ending.
packing packing_for(std::string_view name) noexcept;

/// Unpacks all members or frames. Throws failure, whose text begins with the name, when it holds more than limit bytes,
/// and damaged_data when the data is damaged or ends too early.
std::string unpack(std::string_view packed, packing how, const std::string& name, std::uint64_t limit);

/// The first bytes only, as many as there are, but at most so many. The data may itself be the beginning of more.
std::string unpack_beginning(std::string_view packed, packing how, const std::string& name, std::size_t most);

}  // namespace bxdb
