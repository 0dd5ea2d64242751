// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Database and grid files on open streams; the classes' load and dump bind them to named files.
#pragma once

#include "bx_db.h"
#include "bx_records.h"
#include "ut_ptrfile.h"

/// Reads the first line. False when it does not begin as every file does; otherwise letter is the character
/// behind that, NUL when there is none.
bool bx_read_first_line(UT_STREAM& file, char& letter);

/// Replaces the content of the database by what follows the first line. False when that is damaged, cut
/// off or of an unknown form, or when memory runs out.
bool bx_read_database(BX_DB& db, UT_PTRFILE& file, char letter);
bool bx_read_grid(BX_DB& db, UT_PTRFILE& file, char letter);

/// Writes a whole file, first line included.
bool bx_write_database(const BX_DB& db, UT_PTRFILE& file, bool ascii);
bool bx_write_grid(const BX_DB& db, UT_PTRFILE& file, bool ascii);

/// The same for a database that was compressed; false for any other.
bool bx_write_compressed(BX_DB& db, UT_PTRFILE& file);
