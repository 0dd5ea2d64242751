// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "input_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include "failure.h"
#include "file_names.h"
#include "host.h"
#include "progress.h"
#include "text.h"

namespace bxdb {
namespace {

constexpr std::uint64_t gibibyte = std::uint64_t{1} << 30;

[[noreturn]] void cannot_read(const std::string& name, int error) {
  throw failure(fmt::format("{}: cannot read: {}", name, std::strerror(error)));
}

/// How many bytes to make room for at first; a guess that the reading corrects.
std::size_t expected_size(const std::string& name, std::uint64_t limit) {
  std::error_code unknown;
  const std::uintmax_t size = std::filesystem::file_size(path_of(name), unknown);
  return static_cast<std::size_t>(unknown ? 0 : std::min<std::uintmax_t>(size, limit));
}

std::string read_bytes(std::FILE* file, const std::string& name, std::size_t expected, std::uint64_t limit) {
  constexpr std::size_t block = std::size_t{1} << 20;
  std::string bytes;
  bytes.reserve(expected + block);
  for (;;) {
    const std::size_t held = bytes.size();
    if (bytes.capacity() < held + block) bytes.reserve(held + std::max(held / 2, block));
    bytes.resize(held + block);
    const std::size_t got = std::fread(bytes.data() + held, 1, block, file);
    bytes.resize(held + got);
    if (std::ferror(file) != 0) cannot_read(name, errno);
    if (bytes.size() > limit) throw failure(fmt::format("{}: more than {} bytes; see --max-size", name, limit));
    if (got < block) return bytes;
  }
}

void find_content(input_file& file, const input_options& options) {
  const bool is_grid = options.grid_file || is_grid_name(file.name);
  const std::optional<qelmodb::content> told = is_grid ? qelmodb::content::grid : qelmodb::find_content(file.bytes);
  file.is_certain = told.has_value();
  file.what = told.value_or(qelmodb::content::database);
}

}  // namespace

bool is_grid_name(std::string_view name) noexcept { return ends_with_any_of(name, {".bxg", ".bxg.gz", ".bxg.zst"}); }

std::uint64_t default_max_size() noexcept {
  const std::uint64_t memory = physical_memory();
  return memory == 0 ? 16 * gibibyte : std::min(memory / 4, 16 * gibibyte);
}

std::int64_t default_max_memory() noexcept { return static_cast<std::int64_t>(2 * default_max_size()); }

std::string read_input_bytes(const std::string& name, std::uint64_t limit) {
  if (is_standard_stream(name)) return read_bytes(stdin, shown_input(name), 0, limit);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(open_for_reading(name), &std::fclose);
  if (!file) cannot_read(name, errno);
  return read_bytes(file.get(), name, expected_size(name, limit), limit);
}

input_file read_packed_input(const std::string& name, const input_options& options) {
  input_file file;
  file.name = shown_input(name);
  const progress shown("reading " + file.name);
  refuse_printing_into(name);
  file.bytes = read_input_bytes(name, options.max_size);
  file.size_on_disk = file.bytes.size();
  file.packed = packing_of(file.bytes);
  return file;
}

void unpack_input(input_file& file, const input_options& options) {
  const progress shown("unpacking " + file.name);
  if (file.packed != packing::none) file.bytes = unpack(file.bytes, file.packed, file.name, options.max_size);
  file.is_unpacked = true;
  find_content(file, options);
}

input_file read_input(const std::string& name, const input_options& options) {
  input_file file = read_packed_input(name, options);
  unpack_input(file, options);
  return file;
}

}  // namespace bxdb
