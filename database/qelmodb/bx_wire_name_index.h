// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// One index for the whole process from a wire's name, by the address of its string, to the number of its wire
// template. Builds overwrite the entries of their own wires and leave others in place. Whoever frees a string that may
// have been a wire's name withdraws it first, so that a new string at an old address meets no stale entry.
#pragma once

/// The number stored for the string, or bx_no_wire_number when there is none.
int bx_wire_name_number(const char* name) noexcept;
inline constexpr int bx_no_wire_number = -1;

void bx_set_wire_name_number(const char* name, int number);

/// Withdraws the string and frees it.
void bx_free_name(char* name) noexcept;
