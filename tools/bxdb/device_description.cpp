// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "device_description.h"

#include <fmt/format.h>

#include <filesystem>
#include <initializer_list>
#include <string_view>

#include "failure.h"
#include "file_names.h"
#include "host.h"
#include "text.h"
#include "ut_filemanager.h"

namespace bxdb {
namespace {

void drop_one_of(std::string_view& name, std::initializer_list<std::string_view> endings) {
  for (const std::string_view end : endings) {
    if (!name.ends_with(end)) continue;
    name.remove_suffix(end.size());
    return;
  }
}

bool is_regular(const std::string& name) {
  std::error_code unknown;
  return std::filesystem::is_regular_file(path_of(name), unknown);
}

void write_copy(const std::string& name, const std::string& original, const NP_TABLEDEVICE& device) {
  std::string why;
  if (!device.write(name.c_str(), why)) throw failure(why);
  fmt::print(stderr, "bxdb: {}: written, a copy of {}\n", printable(name), printable(original));
}

}  // namespace

std::string description_beside(const std::string& file) {
  std::string_view stem = file;
  drop_one_of(stem, {".gz", ".zst"});
  drop_one_of(stem, {".bxd", ".bxg"});
  return std::string(stem) + ".npd";
}

std::string description_found(const std::string& input) {
  for (const std::string& name : {description_beside(input), description_place(input)}) {
    if (is_regular(name)) return name;
  }
  return {};
}

std::string description_place(const std::string& output) { return description_beside(link_target(output)); }

bool is_described(const std::string& output) {
  return !UT_FILEMANAGER::is_stream(output.c_str()) && is_regular(output);
}

bool will_be_described(const std::string& output) {
  std::error_code unknown;
  return !UT_FILEMANAGER::is_stream(output.c_str()) &&
         (is_regular(output) || !std::filesystem::exists(path_of(output), unknown));
}

in_place what_stands_at(const std::string& name, const NP_TABLEDEVICE& device, std::string& why) {
  std::error_code unknown;
  if (!std::filesystem::exists(std::filesystem::symlink_status(path_of(name), unknown))) return in_place::nothing;
  if (std::filesystem::exists(path_of(name), unknown) && !is_regular(name)) {
    why = name + ": it is no regular file";
    return in_place::no_description;
  }
  const std::unique_ptr<NP_TABLEDEVICE> found = NP_TABLEDEVICE::read(name.c_str(), why);
  if (!found) return in_place::no_description;
  return *found == device ? in_place::the_same : in_place::another_device;
}

void refuse_stream(const std::string& name) {
  if (!UT_FILEMANAGER::is_stream(name.c_str())) return;
  throw failure(
      name +
      ": not written: the description of the device belongs there, but it is no regular file; move it, or give "
      "the output another name");
}

void refuse_to_replace(const std::string& name, const NP_TABLEDEVICE& device) {
  std::string why;
  const in_place found = what_stands_at(name, device, why);
  if (found == in_place::nothing || found == in_place::the_same) return;
  const std::string reason =
      found == in_place::another_device ? "it describes another device" : "it is no device description (" + why + ")";
  throw failure(
      fmt::format("{}: not replaced: {}; move it, give the output another name, or use --force", name, reason));
}

void take_description_along(const std::string& from, const std::string& to) {
  const std::string original = description_found(from);
  const std::string copy = description_place(to);
  if (original.empty() || original == copy || !is_described(to)) return;
  std::string why;
  const std::unique_ptr<NP_TABLEDEVICE> device = NP_TABLEDEVICE::read(original.c_str(), why);
  if (!device) {
    fmt::print(stderr, "bxdb: {}: not written: {}\n", printable(copy), printable(why));
    return;
  }
  switch (what_stands_at(copy, *device, why)) {
    case in_place::nothing:
      write_copy(copy, original, *device);
      return;
    case in_place::the_same:
      return;
    case in_place::another_device:
    case in_place::no_description:
      fmt::print(stderr, "bxdb: {}: not replaced: it is another file than {}; remove it, or copy that one there\n",
                 printable(copy), printable(original));
      return;
  }
}

}  // namespace bxdb
