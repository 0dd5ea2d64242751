// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Impossible states of templates. All end the process, unless a client's message manager returns: code behind
// them must be memory-safe.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ut_types.h"

void bx_report_empty_range_map();
void bx_report_out_of_range(std::uint16_t index, std::uint16_t size);
void bx_report_template_overflow(int index);
void bx_report_missing_wire_template(const char* wire_name);
void bx_report_missing_wire_list();
void bx_report_no_basic_ass(bx_long x, bx_long y);
void bx_report_beyond(const char* what, std::size_t index, std::size_t count);
void bx_report_too_many(const char* what, std::size_t count);

/// The largest index of an instance's template, of either kind.
inline constexpr int bx_most_template_index = 32767;

/// The most wires of a wire list, and of a template.
inline constexpr std::size_t bx_most_list_wires = 65535;

/// The most columns, rows, wire lists and wire templates of a switch-matrix template set.
inline constexpr std::size_t bx_most_in_set = 65535;
