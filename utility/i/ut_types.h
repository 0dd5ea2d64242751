// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The number types and the export mark that every layer shares.
#pragma once

#include <cstdint>

// Every public header includes this one before anything that an older language lacks.
#if defined(_MSVC_LANG) ? _MSVC_LANG <= 201703L : __cplusplus <= 201703L
#error "qelmodb needs C++20: compile with -std=c++20, or with /std:c++20"
#endif

static_assert(sizeof(void*) == 8, "binary files hold 64-bit name references: a 64-bit platform is needed");

/// Marks what the shared library exports. A client never defines QELMODB_BUILDING; a client of the
/// static library defines QELMODB_STATIC (the CMake target does it).
#if defined(QELMODB_STATIC)
#define BX_API
#elif defined(_WIN32)
#if defined(QELMODB_BUILDING)
#define BX_API __declspec(dllexport)
#else
#define BX_API __declspec(dllimport)
#endif
#else
#define BX_API __attribute__((visibility("default")))
#endif

/// Lets the compiler check the arguments of a printf-style function: FORMAT is the position of the
/// format text, FIRST that of the first value.
#if defined(__MINGW32__) && !defined(__clang__)
#define BX_PRINTF(FORMAT, FIRST) __attribute__((format(gnu_printf, FORMAT, FIRST)))
#elif defined(__GNUC__)
#define BX_PRINTF(FORMAT, FIRST) __attribute__((format(printf, FORMAT, FIRST)))
#else
#define BX_PRINTF(FORMAT, FIRST)
#endif

/// Coordinates and counts: exactly 32 bits, signed, on every platform.
using bx_long = std::int32_t;
using bx_ulong = std::uint32_t;
