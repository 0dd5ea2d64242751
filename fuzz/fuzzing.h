// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What the fuzz targets share: how a documented end of the process is told from a crash, and what they demand.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>

#include "qelmoext.h"
#include "ut_msgman.h"

/// Ends the run with the condition's text when it does not hold; libFuzzer keeps the input.
#define FUZZ_REQUIRE(condition)                                                           \
  do {                                                                                    \
    if (!(condition)) {                                                                   \
      std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition); \
      __builtin_trap();                                                                   \
    }                                                                                     \
  } while (false)

namespace fuzz {

/// Thrown where the process would end as documented.
struct process_end {};

/// Keeps reports to itself, and throws where the built-in manager ends the process.
class throwing_manager : public UT_MSGMAN {
 public:
  throwing_manager() { ut_msgman = this; }
  void msgdetail(const char* /*text*/, int /*reserved*/) override {}
  void msgprint(const char* /*text*/) override {}
  [[noreturn]] void msgfatal(const char* /*message*/, const char* /*tag*/, const char* /*source*/, short /*line*/,
                             const char* /*version*/, bx_long /*code*/, bx_long /*reserved*/) override {
    throw process_end();
  }
};

/// Installs the manager before the first input; it stays until the process has ended.
inline void install_manager() { [[maybe_unused]] static auto* const manager = new throwing_manager; }

/// Whether the work came to an end of the process.
inline bool ends_process(const std::function<void()>& work) {
  try {
    work();
    return false;
  } catch (const process_end&) {
    return true;
  }
}

inline std::string dumped(const BX_DB& db, qelmodb::form as, qelmodb::content what) {
  UT_MEMFILE file;
  FUZZ_REQUIRE(qelmodb::dump(db, file, as, what));
  return file.bytes();
}

inline bool loaded(BX_DB& db, std::string bytes, qelmodb::content what) {
  UT_MEMFILE file(std::move(bytes));
  return qelmodb::load(db, file, what);
}

/// Dumps, checks and loads again, and demands that the tree is the same.
inline void require_round_trip(const BX_DB& db, qelmodb::form as, qelmodb::content what) {
  if (!qelmodb::dump_objections(db, as, what, 1).empty()) return;
  std::string bytes = dumped(db, as, what);
  FUZZ_REQUIRE(qelmodb::check_bytes(bytes, what).loadable());
  BX_DB back;
  FUZZ_REQUIRE(loaded(back, std::move(bytes), what));
  FUZZ_REQUIRE(qelmodb::same_tree(db, back, what));
}

}  // namespace fuzz
