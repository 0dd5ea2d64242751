// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The one way by which the library reports a state that should be impossible. It ends the process,
// unless a client has installed a message manager that returns or throws: code behind a report must be
// memory-safe, and nothing more.
#pragma once

#include "ut_types.h"

/// The tag of most sites.
inline constexpr char BX_TAG[] = "BXDB";

/// The tag of the sites that identify the module by its token; the bytes have no meaning.
inline constexpr char BX_MODULE_TOKEN[] = "\xD1\xC5\xCC\xCD\xCF\xC4\xC2";

/// Where a report comes from; line is __LINE__.
struct bx_error_site {
  const char* tag;
  const char* source;
  bx_long code;
  int line;
};

/// Shows the detail when KRT_SHOW_INTERNAL_ERROR is in the environment (whatever its value, looked up
/// each time), then the fatal message.
void bx_internal_error(const char* detail, const bx_error_site& site);
