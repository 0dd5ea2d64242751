// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "replaced_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>

#include "failure.h"
#include "host.h"
#include "unpack.h"

namespace bxdb {
namespace {

/// As much of a file as packed data may need before its first bytes come out, and most name tables take.
std::string beginning_of(const std::string& name) {
  constexpr std::size_t most = std::size_t{1} << 24;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(open_for_reading(name), &std::fclose);
  std::string bytes(most, '\0');
  if (file) bytes.resize(std::fread(bytes.data(), 1, most, file.get()));
  if (file && std::ferror(file.get()) == 0) return bytes;
  throw failure(fmt::format("{}: not replaced: cannot read what it holds: {}; use --force to replace it", name,
                            std::strerror(errno)));
}

/// As much of what the packed bytes hold as tells databases and grid files; nothing when they are damaged.
std::string unpacked_beginning(const std::string& bytes, packing how, const std::string& name) {
  constexpr std::size_t enough = std::size_t{1} << 22;
  if (how == packing::none) return bytes;
  try {
    return unpack_beginning(bytes, how, name, enough);
  } catch (const failure&) {
    return {};
  }
}

[[noreturn]] void refuse(const std::string& name, const std::string& held) {
  throw failure(name + ": not replaced: it holds " + held + "; give the output another name, or use --force");
}

}  // namespace

void refuse_to_replace_stranger(const std::string& name, qelmodb::content what) {
  constexpr std::string_view magic = "BX_DB:";
  std::error_code unknown;
  if (!std::filesystem::is_regular_file(path_of(name), unknown)) return;
  const std::string packed = beginning_of(name);
  if (packed.empty()) return;
  const std::string bytes = unpacked_beginning(packed, packing_of(packed), name);
  if (!bytes.starts_with(magic)) refuse(name, "no database");
  const std::optional<qelmodb::content> held = qelmodb::find_content(bytes);
  if (!held || *held == what) return;
  refuse(name, what == qelmodb::content::grid ? "a database and no grid file" : "a grid file and no database");
}

}  // namespace bxdb
