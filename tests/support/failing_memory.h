// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Every allocation of a process counted, and some made fail: malloc, calloc, realloc, operator new and mmap, as the
// program itself and the shared libraries call them. A program that wants this is built with failing_memory_posix.cpp.
#pragma once

#include <limits>
#include <new>
#include <ostream>

namespace test {

/// Counts allocations while it lives, and has some fail. One at a time.
class allocation_watch {
 public:
  static constexpr long none = std::numeric_limits<long>::max();

  /// From allocation number first on, counted from 0, so many fail.
  explicit allocation_watch(long first = none, long many = none);
  allocation_watch(const allocation_watch&) = delete;
  allocation_watch& operator=(const allocation_watch&) = delete;
  ~allocation_watch();

  static long made() noexcept;    ///< that were asked for, by the last watch or while it lives
  static long failed() noexcept;  ///< those of them that failed

  /// Those of these that asked the system for pages.
  static long failed_pages() noexcept;

  /// The most bytes that were held at a time of those allocated since the watch began, pages apart.
  static long peak() noexcept;
};

/// How something ended that may run out of memory.
enum class memory_end { gave_true, gave_false, threw };

std::ostream& operator<<(std::ostream& to, memory_end end);

/// A loop over what is tried with less and less memory: with the first allocation failing, the second and so on until
/// none fails, then with all allocations failing from the first on, from the second on and so on. Far out most
/// numbers are left out. Expects that every round gives back the memory that it took.
///
///     for (test::memory_trials trials(100); trials.next();) {
///       BX_DB db;
///       EXPECT_NE(trials.run([&] { return db.load(name) != 0; }), test::memory_end::threw);
///     }
class memory_trials {
 public:
  /// At least so many allocations are expected to fail, one at a time.
  explicit memory_trials(long least) : least_(least) {}
  memory_trials(const memory_trials&) = delete;
  memory_trials& operator=(const memory_trials&) = delete;

  bool next();

  /// Does it with the failures of this round. True is expected where none came to pass.
  template <class Run>
  memory_end run(Run action) {
    memory_end end = memory_end::threw;
    begin();
    {
      const allocation_watch watch(number_, mode_ == lasting ? allocation_watch::none : 1);
      try {
        end = action() ? memory_end::gave_true : memory_end::gave_false;
      } catch (const std::bad_alloc&) {
      }
    }
    finish(end);
    return end;
  }

  /// Rounds in which something failed.
  long failures() const noexcept { return failures_; }

  /// Allocations of pages that failed.
  long page_failures() const noexcept { return page_failures_; }

 private:
  // What is made once and for all is made in the first pass.
  enum mode { once, lasting, once_more, done };

  void begin() noexcept { ran_ = true; }
  void finish(memory_end end);
  void expect_nothing_left();

  long least_;
  mode mode_ = once;
  long number_ = -1;
  bool ran_ = false;
  bool struck_ = false;
  long blocks_ = 0;  // at the beginning of the round
  long failures_ = 0;
  long page_failures_ = 0;
  long failures_of_mode_ = 0;
};

}  // namespace test
