// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What the templates of a compressed database cost, and what they save.
#pragma once

#include <cstdint>
#include <vector>

#include "qelmotmplt.h"

namespace bxdb {

/// What an instance takes in a compressed file, whatever wires it has.
inline constexpr std::int64_t compressed_instance_size = 22;

/// An instance template and its use. Sizes are bytes.
struct template_use {
  int number = 0;  ///< in the table
  const ASS_TEMPLATE* layout = nullptr;
  const BX_INSTANCE* first = nullptr;  ///< of its instances, in the order of bx_walk; null when there is none
  std::int64_t instances = 0;
  std::int64_t binary_size = 0;  ///< of its instances in a binary file
  std::int64_t record_size = 0;  ///< of its own record in a compressed file

  /// By how much the compressed file is smaller than the binary one; negative when a template costs more.
  std::int64_t saved() const noexcept { return binary_size - instances * compressed_instance_size - record_size; }
};

/// A list of switch-matrix wires and its use.
struct wire_list_use {
  int number = 0;
  int wires = 0;
  std::int64_t places = 0;  ///< switch matrices that refer to it
};

struct wire_template_size {
  int number = 0;
  const WIRE_TEMPLATE_SM* wire = nullptr;
  std::int64_t runs = 0;  ///< entries of the index map and all offset maps
  std::int64_t record_size = 0;
};

struct template_census {
  std::vector<template_use> templates;  ///< by number, as the lists and wires
  std::vector<wire_list_use> wire_lists;
  std::vector<wire_template_size> wire_templates;
  std::int64_t instances = 0;  ///< root included
  std::int64_t wires = 0;
  std::int64_t matrices = 0;  ///< instances that refer to a wire list
  std::int64_t matrix_wires = 0;
  std::int64_t columns = 0;  ///< of switch matrices
  std::int64_t rows = 0;
};

/// Counts over a database that was compressed, or loaded from a compressed file. What was found points into it. Moves
/// the running position of delta-coded wires.
template_census take_census(const BX_DB& db);

}  // namespace bxdb
