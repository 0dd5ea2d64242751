// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "bx_instance.h"
#include "ut_string.h"

/// What is shown of the end of a path, in characters.
inline constexpr std::size_t bx_longest_path = 400;

/// Joins count names, from the root down, by "/". A tree can be as deep as it has instances, so of a long path the root
/// and at most longest characters of the end are kept, the last name among them, and "..." stands for the rest. Of a
/// name that is longer by itself that many characters are kept.
template <class NameAt>
std::string bx_joined_path(std::size_t count, NameAt name_at, std::size_t longest) {
  std::size_t first = count;
  for (std::size_t length = 0; first > 0; --first) {
    const std::size_t more = name_at(first - 1).size() + 1;
    if (first != count && length + more > longest) break;
    length += more;
  }
  std::string path;
  if (first > 0) path.append(name_at(0).substr(0, longest)).append(first > 1 ? "/..." : "");
  for (std::size_t i = first; i < count; ++i) {
    if (i > 0) path += '/';
    path += name_at(i).substr(0, longest);
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
