// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "file_window.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

namespace bench {

namespace {

constexpr std::size_t window_bytes = std::size_t{256} << 10;

}  // namespace

file_window::file_window(const std::string& file)
    : handle_(open(file.c_str(), O_RDONLY | O_CLOEXEC)),
      buffer_(new char[window_bytes + 1]),
      at_(buffer_.get()),
      end_(buffer_.get()) {
  if (handle_ < 0) throw std::runtime_error("cannot open " + file);
}

file_window::~file_window() { close(handle_); }

void file_window::refill() {
  const std::size_t kept = shown();
  std::memmove(buffer_.get(), at_, kept);
  std::size_t filled = kept;
  while (filled < window_bytes) {
    const ssize_t got = read(handle_, buffer_.get() + filled, window_bytes - filled);
    if (got <= 0) break;
    filled += static_cast<std::size_t>(got);
  }
  read_ += filled - kept;
  at_ = buffer_.get();
  end_ = at_ + filled;
  buffer_[filled] = '\0';
}

}  // namespace bench
