// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The end of the process where going on would break a bound.
#pragma once

#include <cstdlib>

#ifdef _MSC_VER
#include <intrin.h>
#endif
#ifdef QELMODB_FUZZ
#include "ut_msgman.h"
#endif

/// Ends the process at once, without running handlers or flushing streams: by SIGABRT, or by the fast-fail of Windows,
/// whose status is 0xC0000409. Built for fuzzing it asks the message manager first, which may throw: so this end is
/// told from a crash.
#ifdef QELMODB_FUZZ
[[noreturn]] inline void ut_fast_fail() {
  ut_msgman->msgfatal("fast-fail", "", __FILE__, __LINE__, "", 0, 0);
  std::abort();
}
#else
[[noreturn]] inline void ut_fast_fail() noexcept {
#ifdef _WIN32
  constexpr unsigned range_check_failure = 8;
#ifdef _MSC_VER
  __fastfail(range_check_failure);
#else
  asm volatile("int $0x29" : : "c"(range_check_failure));
  __builtin_unreachable();
#endif
#else
  std::abort();
#endif
}
#endif
