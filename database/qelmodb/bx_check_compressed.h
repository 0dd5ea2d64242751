// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bx_check_coders.h"

/// Checks a compressed file from behind its first line on. False when a record was damaged.
bool bx_check_compressed(bx_check_context& context);
