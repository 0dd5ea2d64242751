// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What a file is that is no BX_DB file.
#pragma once

#include <string_view>

/// What the bytes of a whole file are known to be, such as "a PNG picture" or "packed by gzip"; null when nothing is
/// known about them. Fits after "it is".
const char* bx_foreign_kind(std::string_view bytes) noexcept;
