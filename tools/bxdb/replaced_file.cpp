// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "replaced_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include "failure.h"
#include "host.h"
#include "unpack.h"

namespace bxdb {
namespace {

/// As much of a file as packed data may need before its first bytes come out.
std::string beginning_of(const std::string& name) {
  constexpr std::size_t most = std::size_t{1} << 20;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(open_for_reading(name), &std::fclose);
  std::string bytes(most, '\0');
  if (file) bytes.resize(std::fread(bytes.data(), 1, most, file.get()));
  if (file && std::ferror(file.get()) == 0) return bytes;
  throw failure(fmt::format("{}: not replaced: cannot read what it holds: {}; use --force to replace it", name,
                            std::strerror(errno)));
}

bool is_database(const std::string& bytes, const std::string& name) {
  constexpr std::string_view magic = "BX_DB:";
  const packing how = packing_of(bytes);
  if (how == packing::none) return bytes.starts_with(magic);
  try {
    return unpack_beginning(bytes, how, name, magic.size()) == magic;
  } catch (const failure&) {
    return false;
  }
}

}  // namespace

void refuse_to_replace_stranger(const std::string& name) {
  std::error_code unknown;
  if (!std::filesystem::is_regular_file(path_of(name), unknown)) return;
  const std::string bytes = beginning_of(name);
  if (bytes.empty() || is_database(bytes, name)) return;
  throw failure(name + ": not replaced: it holds no database; give the output another name, or use --force");
}

}  // namespace bxdb
