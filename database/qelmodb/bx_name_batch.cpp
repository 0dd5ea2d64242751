// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_access.h"
#include "qelmoext.h"

namespace qelmodb {

name_batch::name_batch(BX_DB& db) noexcept : db_(db) { bx_access::names(db_).open_batch(); }

name_batch::~name_batch() { bx_access::names(db_).close_batch(); }

}  // namespace qelmodb
