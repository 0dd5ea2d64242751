// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// How much memory a load takes, measured in a process of its own.
#pragma once

namespace bench {

/// The argument by which the program calls itself to load a file and tell what that took.
inline constexpr char measure_load_option[] = "--measure-load";

/// The exit status of that process.
int measure_load_here(const char* file);

}  // namespace bench
