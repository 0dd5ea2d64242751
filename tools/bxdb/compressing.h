// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Compressing a database so that neither an end of the process nor a change of the tree goes unseen.
#pragma once

#include <string>

#include "loaded_database.h"
#include "qelmocompress.h"

namespace bxdb {

/// Throws failure for a grid file, which has no compressed form.
void check_compressible(const loaded_database& loaded);

/// Compresses the database. False when that would end the process: then nothing was compressed, and each reason
/// stands on standard error behind the name of the source.
bool compress_database(BX_DB& db, const std::string& source, const std::string& consequence);

/// What a compressed file would not give back, on standard error: single cases, and of each kind how many there are.
void report_losses(const qelmodb::compression_losses& losses, const std::string& source);

/// What a compressed file of the database, which was compressed, would not give back.
qelmodb::compression_losses losses_of(const BX_DB& db, const std::string& source);

/// "1 wire comes back at another node", "12 wires come back at other nodes".
std::string counted_loss(qelmodb::loss what, std::int64_t count);

}  // namespace bxdb
