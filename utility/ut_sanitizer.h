// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What the address and leak sanitizers cannot know of memory that does not come from malloc. Without them nothing
// happens here.
#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define UT_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define UT_ADDRESS_SANITIZER 1
#endif
#endif

#ifdef UT_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#include <sanitizer/lsan_interface.h>

/// Bytes left unused behind what is taken from a large piece, so that writing beyond its end is seen.
inline constexpr std::size_t ut_red_zone = 16;

/// Forbids and allows access to bytes.
inline void ut_forbid(void* bytes, std::size_t size) noexcept { __asan_poison_memory_region(bytes, size); }
inline void ut_allow(void* bytes, std::size_t size) noexcept { __asan_unpoison_memory_region(bytes, size); }

/// Pointers in these bytes keep what they point to from being a leak, until they are given back.
inline void ut_note_pointers(void* bytes, std::size_t size) noexcept { __lsan_register_root_region(bytes, size); }
inline void ut_forget_pointers(void* bytes, std::size_t size) noexcept { __lsan_unregister_root_region(bytes, size); }
#else
inline constexpr std::size_t ut_red_zone = 0;

inline void ut_forbid(void* /*bytes*/, std::size_t /*size*/) noexcept {}
inline void ut_allow(void* /*bytes*/, std::size_t /*size*/) noexcept {}
inline void ut_note_pointers(void* /*bytes*/, std::size_t /*size*/) noexcept {}
inline void ut_forget_pointers(void* /*bytes*/, std::size_t /*size*/) noexcept {}
#endif
