// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What tests of dumps over an old file share: every kind of dump, of something that takes several writes, and what is
// to be found afterwards.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "file_calls.h"
#include "record_bytes.h"

namespace test {

/// A way to write a file by name; false when it failed.
struct dump_way {
  const char* name;
  std::function<bool(const std::string& file)> write;
};

/// A device description of about as many bytes as there are digits in 64 thousand edges.
inline std::shared_ptr<NP_TABLEDEVICE> large_device() {
  std::vector<bx_long> edges;
  for (bx_long i = 0; i <= NP_TABLEDEVICE::max_lines; ++i) edges.push_back(2000000000 + i);
  return std::make_shared<NP_TABLEDEVICE>(edges, edges);
}

/// All dumps of a database that was compressed with so many small instances, and of a device.
inline std::vector<dump_way> all_dumps(int instances, std::shared_ptr<NP_TABLEDEVICE> device) {
  auto db = std::make_shared<BX_DB>("TOP", 0, 0, 9, 9);
  for (int i = 0; i < instances; ++i) db->addinstance(new BX_INSTANCE("C", 0, i, 4, i + 1));
  db->compress();
  return {
      {"text", [db](const std::string& file) { return db->dump(file.c_str(), true) != 0; }},
      {"binary", [db](const std::string& file) { return db->dump(file.c_str(), false) != 0; }},
      {"grid_text", [db](const std::string& file) { return db->dumpgrid(file.c_str(), true) != 0; }},
      {"grid_binary", [db](const std::string& file) { return db->dumpgrid(file.c_str(), false) != 0; }},
      {"compressed", [db](const std::string& file) { return db->dumpcompress(file.c_str(), false) != 0; }},
      {"device",
       [device](const std::string& file) {
         std::string why;
         const bool whole = device->write(file.c_str(), why);
         EXPECT_EQ(whole, why.empty());
         return whole;
       }},
  };
}

/// The names in a folder.
inline std::vector<std::string> names_in(const temporary_folder& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path())) names.push_back(entry.path().filename());
  return names;
}

}  // namespace test
