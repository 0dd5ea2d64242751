// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Templates that are nearly the same: a few wires more in common, and one of them would do.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "template_census.h"

namespace bxdb {

/// A wire that one of two templates has alone, or has at another node than the other. Nodes are relative.
struct wire_difference {
  const char* name = nullptr;
  std::optional<BX_POINT> here;
  std::optional<BX_POINT> there;
};

/// A template and the one that is nearest to it.
struct near_miss {
  int number = 0;
  int other = 0;
  std::vector<wire_difference> wires;  ///< by name; empty when the wires are the same in another order
};

struct near_options {
  std::size_t most_wires = 3;  ///< that may keep two templates apart
  std::int64_t most_comparisons = 50'000'000;
};

struct near_templates {
  std::vector<near_miss> found;  ///< those with most instances first
  bool complete = true;          ///< false when the comparisons did not suffice
};

/// For each template the nearest one of the same name that has more instances, or as many and a smaller number: so no
/// two are each other's. Wires are compared by name and node; those of one name that stand at different nodes count as
/// one moved wire. Of several equally near ones the first is taken. Templates without instances are left out.
near_templates find_near_templates(const std::vector<template_use>& templates, const near_options& options);

}  // namespace bxdb
