// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// A database that was checked and then loaded from the very bytes that were checked, so that no file can
// end the process.
#pragma once

#include <memory>

#include "input_file.h"
#include "qelmoindex.h"

namespace bxdb {

/// Seconds that a step took.
struct load_times {
  double check = 0.0;
  double load = 0.0;
};

struct loaded_database {
  std::string name;  ///< as messages show it
  packing packed = packing::none;
  std::uint64_t size_on_disk = 0;
  std::uint64_t size = 0;  ///< of the unpacked bytes
  qelmodb::content what = qelmodb::content::database;
  qelmodb::check_report report;
  load_times times;
  std::unique_ptr<BX_DB> db;
};

/// Reads, checks and loads a file; "-" is standard input. A "$" in a wire name survives unless options say otherwise.
/// Throws failure when the file cannot be read or loaded, or goes beyond what the options allow; its faults go to
/// standard error.
loaded_database load_database(const std::string& name, const input_options& options);

/// An index over the whole tree, which the database must outlive.
qelmodb::tree_index index_of(const loaded_database& loaded);

/// "FILE: error: line 12: ..."
std::string fault_text(const std::string& name, const qelmodb::fault& fault);

}  // namespace bxdb
