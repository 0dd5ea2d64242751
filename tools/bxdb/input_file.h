// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The bytes of an input file, unpacked, in memory.
#pragma once

#include <cstdint>
#include <string>

#include "qelmoext.h"
#include "unpack.h"

namespace bxdb {

/// How an input file is to be read; what the options of all reading commands say.
struct input_options {
  bool grid_file = false;      ///< the file is a grid file, whatever its name
  bool cut = false;            ///< cut wire names at their first "$", as the library does by default
  std::uint64_t max_size = 0;  ///< the largest file, unpacked, that is taken into memory
  qelmodb::limits within;      ///< what it may hold
};

/// The default of max_size: a quarter of the machine's memory, at most 16 GiB. A loaded tree, and what
/// checking and comparing need, take up to a few times the size of the file.
std::uint64_t default_max_size() noexcept;

/// The default of within.memory: half of the machine's memory, at most 32 GiB.
std::int64_t default_max_memory() noexcept;

struct input_file {
  std::string name;  ///< as messages show it
  packing packed = packing::none;
  std::uint64_t size_on_disk = 0;
  qelmodb::content what = qelmodb::content::database;
  bool is_certain = false;  ///< what; not when neither the bytes nor the name nor the options tell
  bool is_unpacked = false;
  std::string bytes;
};

/// Reads the whole file once; "-" is standard input. Throws failure, which names the file and the reason.
input_file read_input(const std::string& name, const input_options& options);

/// The same in two steps: bytes are packed between them. The second throws damaged_data, too.
input_file read_packed_input(const std::string& name, const input_options& options);
void unpack_input(input_file& file, const input_options& options);

/// The bytes of a file as they are, at most limit of them. Throws likewise.
std::string read_input_bytes(const std::string& name, std::uint64_t limit);

/// Whether the name is one of a grid file.
bool is_grid_name(std::string_view name) noexcept;

}  // namespace bxdb
