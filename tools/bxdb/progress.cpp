// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "progress.h"

#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <system_error>

#include "host.h"
#include "text.h"

namespace bxdb {

progress::progress(std::string phase) : phase_(printable(phase)) {
  if (!error_output_is_terminal()) return;
  try {
    watcher_ = std::thread([this] { watch(); });
  } catch (const std::system_error&) {
    // The work matters, not the news of it.
  }
}

progress::~progress() {
  if (!watcher_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    over_ = true;
  }
  changed_.notify_one();
  watcher_.join();
}

qelmodb::work_options progress::options() {
  if (!watcher_.joinable()) return {};
  return {[this](const qelmodb::progress& now) {
    done_ = now.done;
    whole_ = now.whole;
    return true;
  }};
}

void progress::watch() {
  const auto start = std::chrono::steady_clock::now();
  bool shown = false;
  std::unique_lock lock(mutex_);
  for (auto next = start + std::chrono::seconds(1);; next += std::chrono::milliseconds(500)) {
    if (changed_.wait_until(lock, next, [this] { return over_; })) break;
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    const std::int64_t whole = whole_;
    const std::string share = whole > 0 ? fmt::format(" {} %", 100 * done_ / whole) : std::string();
    fmt::print(stderr, "\r\033[Kbxdb: {} ...{} {:.1f} s", phase_, share, taken.count());
    std::fflush(stderr);
    shown = true;
  }
  if (shown) fmt::print(stderr, "\r\033[K");
}

}  // namespace bxdb
