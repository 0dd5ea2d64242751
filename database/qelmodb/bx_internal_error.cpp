// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_internal_error.h"

#include <cstdlib>

#include "ut_msgman.h"

void bx_internal_error(const char* detail, const bx_error_site& site) {
  if (std::getenv("KRT_SHOW_INTERNAL_ERROR") != nullptr) ut_msgman->msgdetail(detail, 0);
  ut_msgman->msgfatal("A fatal error occurred. The process will now exit.", site.tag, site.source,
                      static_cast<short>(site.line), "1.0", site.code, 0);
}
