// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Bytes of records and files put together by hand, files in memory, and loads in a process of their own.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "builders.h"
#include "qelmoext.h"
#include "test_host.h"

namespace test {

using qelmodb::content;
using qelmodb::form;

inline std::string little_endian(std::uint64_t value, int count) {
  std::string bytes;
  for (int i = 0; i < count; ++i) bytes += static_cast<char>(static_cast<unsigned char>(value >> (8 * i)));
  return bytes;
}

inline std::string number(bx_long value) { return little_endian(static_cast<bx_ulong>(value), 4); }
inline std::string reference(std::uint64_t address) { return little_endian(address, 8); }
inline std::string stored(const std::string& text) { return text + '\0'; }

/// What a name reference to this string is in a file.
inline std::uint64_t address_of(const char* string) { return reinterpret_cast<std::uintptr_t>(string); }

struct box {
  bx_long xmin, ymin, xmax, ymax;
};

inline std::string box_bytes(const box& b) { return number(b.xmin) + number(b.ymin) + number(b.xmax) + number(b.ymax); }

inline std::string list_bytes(const std::vector<std::string>& records) {
  std::string bytes = number(static_cast<bx_long>(records.size()));
  for (const std::string& record : records) bytes += record;
  return bytes;
}

inline std::string wire_bytes(std::uint64_t name, bx_long x, bx_long y) {
  return reference(name) + number(x) + number(y);
}

inline std::string instance_bytes(std::uint64_t name, const box& b, const std::vector<std::string>& wires = {},
                                  const std::vector<std::string>& children = {}) {
  return reference(name) + box_bytes(b) + list_bytes(wires) + list_bytes(children);
}

inline std::string grid_bytes(const std::string& name, const box& b, const std::vector<std::string>& children = {}) {
  return stored(name) + box_bytes(b) + list_bytes(children);
}

inline std::string table_bytes(const std::vector<std::pair<std::uint64_t, std::string>>& entries) {
  std::string bytes = number(static_cast<bx_long>(entries.size()));
  for (const auto& [address, text] : entries) bytes += reference(address) + stored(text);
  return bytes;
}

inline std::uint64_t number_at(const std::string& bytes, std::size_t at, int count) {
  std::uint64_t value = 0;
  for (int i = count; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes.at(at + std::size_t(i)));
  return value;
}

/// The bytes with every reference to a name replaced by the name's number in the table: what two processes that write
/// the same tree have in common.
inline std::string with_numbered_names(std::string bytes) {
  // By reference. The root's name may be there twice, first and in its place.
  std::map<std::string, std::pair<std::uint64_t, std::string>> names;
  std::size_t at = bytes.find('\n') + 1;
  const std::uint64_t count = number_at(bytes, at, 4);
  at += 4;
  for (std::uint64_t i = 0; i < count; ++i) {
    const std::string text = bytes.c_str() + at + 8;
    const auto& name = names.try_emplace(bytes.substr(at, 8), i + 1, text).first->second;
    EXPECT_EQ(name.second, text) << "names share a reference";
    bytes.replace(at, 8, reference(name.first));
    at += 8 + text.size() + 1;
  }
  while (at + 8 <= bytes.size()) {
    const auto found = names.find(bytes.substr(at, 8));
    if (found == names.end()) {
      ++at;
      continue;
    }
    bytes.replace(at, 8, reference(found->second.first));
    at += 8;
  }
  return bytes;
}

inline const std::string text_line = "BX_DB:A\n";
inline const std::string binary_line = "BX_DB:B\n";

inline std::string dumped(const BX_DB& db, form as, content what = content::database) {
  UT_MEMFILE file;
  EXPECT_TRUE(qelmodb::dump(db, file, as, what));
  return file.bytes();
}

inline bool loaded(BX_DB& db, std::string bytes, content what = content::database) {
  UT_MEMFILE file(std::move(bytes));
  return qelmodb::load(db, file, what);
}

/// Lets a test call what only the library and derived databases may.
class opened_db : public BX_DB {
 public:
  using BX_DB::BX_DB;
  using BX_DB::getcachedname;
};

/// Loads in a child process: one of the two above, or how else the child ended.
inline int loaded_in_child(const std::string& bytes, content what) {
  return in_child([&] {
    BX_DB db;
    return loaded(db, bytes, what) ? child_said_true : child_said_false;
  });
}

/// A database with one of everything: nested instances, missing and repeated wires, a switch matrix, names
/// with "$" and without characters, two children at one place, coordinates of both signs.
inline void fill_rich_database(BX_DB& db) {
  const auto add = [](BX_INSTANCE& parent, const char* name, const box& b) {
    auto* inst = new BX_INSTANCE(name, b.xmin, b.ymin, b.xmax, b.ymax);
    parent.addinstance(inst);
    return inst;
  };
  const auto wire = [](BX_INSTANCE& inst, const char* name, bx_long x, bx_long y) {
    const BX_WIRE w(name, x, y);
    inst.addwire(&w);
  };
  wire(db, "CLK", 0, 0);
  BX_INSTANCE* logic = add(db, "LOGIC_1", {0, 0, 9, 9});
  wire(*logic, "IN$a$b", -3, 2147483647);
  wire(*logic, "IN$a$b", 4, -2147483647 - 1);
  wire(*logic, "OUT", 5, 6);
  BX_INSTANCE* matrix = add(*logic, "BASIC_ASS", {0, 2, 3, 4});
  wire(*matrix, "W1", 1, 2);
  wire(*matrix, "W2", 10, -2);
  wire(*matrix, "CLK", 0, 3);
  add(db, "", {0, 20, 9, 29});
  add(db, "LOGIC_2", {0, 20, 9, 29});
  add(db, "RAM", {10, 0, 19, 29});
}

}  // namespace test
