// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "file_names.h"

#include <fmt/format.h>

#include "device_description.h"
#include "failure.h"
#include "host.h"

namespace bxdb {
namespace {

std::optional<file_identity> identity(const std::string& name, std::FILE* standard) {
  return is_standard_stream(name) ? identity_of(standard) : identity_of(name);
}

bool is_one_file(const std::optional<file_identity>& a, const std::optional<file_identity>& b) {
  return a.has_value() && a == b;
}

/// Where a name leads that links are followed from.
std::filesystem::path followed(std::filesystem::path path) {
  constexpr int most_links = 40;
  std::error_code fault;
  for (int links = 0; links < most_links && std::filesystem::is_symlink(path, fault); ++links) {
    path = path.parent_path() / std::filesystem::read_symlink(path, fault);
  }
  return path;
}

/// Where a file that need not exist is or would be made.
std::filesystem::path place_of(const std::string& name) {
  std::error_code fault;
  const std::filesystem::path path = followed(path_of(name));
  const std::filesystem::path whole = std::filesystem::weakly_canonical(std::filesystem::absolute(path, fault), fault);
  return fault ? path : whole;
}

bool lead_to_one_place(const std::string& a, const std::string& b) {
  if (is_one_file(identity(a, stdout), identity(b, stdout))) return true;
  if (is_standard_stream(a) || is_standard_stream(b)) return a == b;
  std::error_code unknown;
  return !std::filesystem::exists(path_of(a), unknown) && place_of(a) == place_of(b);
}

}  // namespace

bool is_standard_stream(std::string_view name) noexcept { return name == "-"; }

std::string shown_input(const std::string& name) { return is_standard_stream(name) ? "standard input" : name; }

std::string shown_output(const std::string& name) { return is_standard_stream(name) ? "standard output" : name; }

std::string link_target(const std::string& name) {
  const std::filesystem::path path = path_of(name);
  std::error_code unknown;
  if (!std::filesystem::is_symlink(path, unknown)) return name;
  const std::u8string target = followed(path).u8string();
  return {target.begin(), target.end()};
}

bool is_same_file(const std::string& input, const std::string& output) {
  const std::optional<file_identity> read = identity(input, stdin);
  return is_one_file(read, identity(output, stdout)) && read->is_regular;
}

void refuse_input_as_output(const std::string& input, const std::string& output) {
  if (!is_same_file(input, output)) return;
  throw failure(fmt::format("{}: not written: it is the same file as {}, which is read; give the output another name",
                            shown_output(output), shown_input(input)));
}

void refuse_description_as_output(const std::string& input, const std::string& output) {
  if (is_standard_stream(input) || (!is_same_file(description_beside(input), output) &&
                                    !is_same_file(description_beside(link_target(input)), output))) {
    return;
  }
  throw failure(fmt::format("{}: not written: it is the device description of {}; give the output another name",
                            shown_output(output), input));
}

void refuse_same_outputs(const std::string& a, const std::string& b) {
  if (!lead_to_one_place(a, b)) return;
  throw failure(fmt::format("{}: not written: {} is written there; give each output a name of its own", shown_output(b),
                            a == b ? "another output" : shown_output(a)));
}

void refuse_same_streams(const std::string& a, const std::string& b) {
  const std::optional<file_identity> first = identity(a, stdin);
  const bool one_pipe = is_one_file(first, identity(b, stdin)) && !first->is_regular;
  if (!one_pipe && !(is_standard_stream(a) && is_standard_stream(b))) return;
  throw failure(fmt::format("{}: cannot be read twice; put it into a file first", shown_input(a)));
}

void refuse_standard_output(const std::string& output) {
  if (!is_standard_stream(output) && !is_one_file(identity_of(output), identity_of(stdout))) return;
  throw failure(fmt::format("{}: not written: standard output shows something else then; give the output another name",
                            shown_output(output)));
}

void refuse_printing_into(const std::string& input) {
  if (!is_same_file(input, "-")) return;
  throw failure(
      fmt::format("{}: standard output goes into this file, which is read; send it elsewhere", shown_input(input)));
}

}  // namespace bxdb
