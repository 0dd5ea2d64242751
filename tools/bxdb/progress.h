// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Tells the user on standard error what takes so long.
#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "qelmoext.h"

namespace bxdb {

/// While it lives and after its first second, shows the phase, the share of it that is done as far as that is known,
/// and the time it has taken so far; takes the line away in the end. Does nothing when standard error is no terminal.
class progress {
 public:
  explicit progress(std::string phase);
  progress(const progress&) = delete;
  progress& operator=(const progress&) = delete;
  ~progress();

  /// Has the library tell how far it has come. This object must outlive the work.
  qelmodb::work_options options();

 private:
  void watch();

  std::string phase_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool over_ = false;
  std::atomic<std::int64_t> done_ = 0;
  std::atomic<std::int64_t> whole_ = 0;
  std::thread watcher_;
};

}  // namespace bxdb
