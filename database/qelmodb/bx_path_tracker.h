// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "bx_instance.h"
#include "ut_string.h"

/// The longest path, in characters, that is shown as a whole.
inline constexpr std::size_t bx_longest_path = 400;

/// Joins count names, from the root down, by "/". A tree can be as deep as it has instances, so a path of longest
/// characters or more is cut: the root and the end are kept, and "..." stands for the rest.
template <class NameAt>
std::string bx_joined_path(std::size_t count, NameAt name_at, std::size_t longest) {
  std::size_t first = count;
  for (std::size_t length = 0; first > 0 && length + name_at(first - 1).size() < longest; --first) {
    length += name_at(first - 1).size() + 1;
  }
  std::string path;
  const bool has_root = first > 0 && name_at(0).size() < longest;
  if (has_root) path += name_at(0);
  if (first > (has_root ? 1U : 0U)) path += has_root ? "/..." : "...";
  for (std::size_t i = first; i < count; ++i) {
    if (i > 0) path += '/';
    path += name_at(i);
  }
  return path;
}

/// Follows a walk and builds the path of names of the instance in hand.
class bx_path_tracker {
 public:
  void enter(const BX_INSTANCE& inst, bx_long depth) {
    names_.resize(static_cast<std::size_t>(depth));
    names_.push_back(ut_text(inst.name));
  }

  std::string text(std::size_t longest = bx_longest_path) const {
    return bx_joined_path(
        names_.size(), [this](std::size_t i) { return std::string_view(names_[i]); }, longest);
  }
  std::string whole_text() const { return text(SIZE_MAX); }

 private:
  std::vector<const char*> names_;
};
