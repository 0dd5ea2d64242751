// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_stream.h"

#include <algorithm>
#include <limits>

#include "ut_string.h"

namespace {

constexpr std::size_t buffer_size = std::size_t{256} << 10;
static_assert(buffer_size >= 2 * UT_STREAM::max_block, "a block must fit behind what is left of the last one");

bx_long saturated(std::uint64_t count) noexcept {
  return static_cast<bx_long>(std::min<std::uint64_t>(count, std::numeric_limits<bx_long>::max()));
}

}  // namespace

struct UT_STREAM::watched_state {
  watcher asked;
  std::int64_t start;  // positions
  std::int64_t next_due;
};

UT_STREAM::UT_STREAM() noexcept = default;
UT_STREAM::~UT_STREAM() = default;

std::size_t UT_STREAM::readbytes(void* /*bytes*/, std::size_t /*count*/) { return 0; }

bool UT_STREAM::writebytes(const void* /*bytes*/, std::size_t /*count*/) { return false; }

std::int64_t UT_STREAM::rawbytesleft() const { return std::numeric_limits<std::int64_t>::max(); }

void UT_STREAM::read_from_memory(const char* bytes, std::size_t count) noexcept {
  in_memory_ = true;
  read_at_ = bytes;
  read_end_ = bytes + count;
  moved_ = static_cast<std::int64_t>(count);
}

void UT_STREAM::reset() noexcept {
  read_at_ = read_end_ = nullptr;
  write_at_ = write_end_ = nullptr;
  in_memory_ = false;
  failed_ = false;
  moved_ = 0;
  watched_.reset();
}

std::int64_t UT_STREAM::bytesleft() const {
  const std::int64_t buffered = read_end_ - read_at_;
  if (in_memory_) return buffered;
  const std::int64_t raw = rawbytesleft();
  return raw > std::numeric_limits<std::int64_t>::max() - buffered ? raw : raw + buffered;
}

void UT_STREAM::fill(std::size_t count) {
  if (in_memory_) return;
  if (!buffer_) buffer_ = std::make_unique_for_overwrite<char[]>(buffer_size);
  std::size_t held = static_cast<std::size_t>(read_end_ - read_at_);
  if (held != 0) std::memmove(buffer_.get(), read_at_, held);
  while (held < count) {
    const std::size_t got = readbytes(buffer_.get() + held, buffer_size - held);
    if (got == 0) break;
    held += got;
    moved_ += static_cast<std::int64_t>(got);
  }
  read_at_ = buffer_.get();
  read_end_ = read_at_ + held;
}

bx_long UT_STREAM::sread(void* bytes, bx_long count) {
  char* to = static_cast<char*>(bytes);
  std::size_t wanted = count > 0 ? static_cast<std::size_t>(count) : 0;
  while (wanted != 0) {
    std::size_t available = 0;
    const char* from = peek(1, available);
    if (available == 0) {
      failed_ = true;
      break;
    }
    const std::size_t part = std::min(available, wanted);
    std::memcpy(to, from, part);
    consume(part);
    to += part;
    wanted -= part;
  }
  return static_cast<bx_long>(to - static_cast<char*>(bytes));
}

bx_long UT_STREAM::readkey(char* key, bx_long limit, char delimiter) {
  std::size_t room = limit > 0 ? static_cast<std::size_t>(limit) : 0;
  std::uint64_t consumed = 0;
  bool found = false;
  while (!found) {
    std::size_t available = 0;
    const char* from = peek(1, available);
    if (available == 0) {
      failed_ = true;
      break;
    }
    const void* hit = std::memchr(from, delimiter, available);
    found = hit != nullptr;
    const std::size_t part = found ? static_cast<std::size_t>(static_cast<const char*>(hit) - from) + 1 : available;
    const std::size_t copied = std::min(part, room);
    if (copied != 0) std::memcpy(key, from, copied);
    key += copied;
    room -= copied;
    consume(part);
    consumed += part;
  }
  return saturated(consumed);
}

int UT_STREAM::readline(char* line, bx_long limit) {
  // One byte beyond the room is remembered, so that a "\r" before the line end is recognised even
  // where it would not fit.
  const std::size_t room = limit > 1 ? static_cast<std::size_t>(limit) - 1 : 0;
  std::size_t stored = 0;
  char last = '\0';
  bool last_stored = false;
  bool found_any = false;
  int whole = 0;
  while (whole == 0) {
    std::size_t available = 0;
    const char* from = peek(1, available);
    if (available == 0) {
      // The last line of a file may lack its end. A line that is missing as a whole was asked for in vain.
      if (!found_any) failed_ = true;
      break;
    }
    found_any = true;
    const void* hit = std::memchr(from, '\n', available);
    const std::size_t part =
        hit != nullptr ? static_cast<std::size_t>(static_cast<const char*>(hit) - from) : available;
    const std::size_t copied = std::min(part, room - stored);
    if (copied != 0) std::memcpy(line + stored, from, copied);
    stored += copied;
    if (part != 0) {
      last = from[part - 1];
      last_stored = copied == part;
    }
    consume(hit != nullptr ? part + 1 : part);
    whole = hit != nullptr ? 1 : 0;
  }
  if (whole == 1 && last == '\r' && last_stored) --stored;
  if (limit > 0) line[stored] = '\0';
  return whole;
}

bx_long UT_STREAM::readstring(char* text, bx_long limit) {
  bx_long length = 0;
  while (length < limit) {
    std::size_t available = 0;
    const char* from = peek(1, available);
    if (available == 0) break;
    const std::size_t part = std::min(available, static_cast<std::size_t>(limit - length));
    const void* hit = std::memchr(from, '\0', part);
    const std::size_t copied =
        hit != nullptr ? static_cast<std::size_t>(static_cast<const char*>(hit) - from) + 1 : part;
    std::memcpy(text + length, from, copied);
    consume(copied);
    length += static_cast<bx_long>(copied);
    if (hit != nullptr) return length - 1;
  }
  failed_ = true;
  return -1;
}

void UT_STREAM::skip(bx_long count) {
  std::size_t wanted = count > 0 ? static_cast<std::size_t>(count) : 0;
  while (wanted != 0) {
    std::size_t available = 0;
    peek(1, available);
    if (available == 0) {
      failed_ = true;
      return;
    }
    const std::size_t part = std::min(available, wanted);
    consume(part);
    wanted -= part;
  }
}

void UT_STREAM::make_room() {
  if (!buffer_) {
    buffer_ = std::make_unique_for_overwrite<char[]>(buffer_size);
  } else if (write_at_ != nullptr) {
    write_block(buffer_.get(), static_cast<std::size_t>(write_at_ - buffer_.get()));
  }
  write_at_ = buffer_.get();
  write_end_ = write_at_ + buffer_size;
}

void UT_STREAM::write_block(const char* bytes, std::size_t count) {
  if (count != 0 && !failed_ && !writebytes(bytes, count)) failed_ = true;
  moved_ += static_cast<std::int64_t>(count);
}

// What was moved, less what still waits to be read, and what waits to be written.
std::int64_t UT_STREAM::position() const noexcept {
  return moved_ - (read_end_ - read_at_) + (write_at_ != nullptr ? write_at_ - buffer_.get() : 0);
}

void UT_STREAM::watch(watcher asked) {
  watched_.reset();
  if (asked) watched_ = std::make_unique<watched_state>(watched_state{std::move(asked), position(), position()});
}

bool UT_STREAM::ask_when_due() { return position() < watched_->next_due ? !failed_ : ask(); }

// A stream that failed, by an answer of the watcher or otherwise, is at its end: nobody is asked any more.
bool UT_STREAM::ask() {
  constexpr std::int64_t step = std::int64_t{1} << 20;
  if (failed_) return false;
  watched_->next_due = position() + step;
  failed_ = !watched_->asked(position() - watched_->start);
  return !failed_;
}

bx_long UT_STREAM::swrite(const void* bytes, bx_long count) {
  if (count <= 0) return 0;
  const char* from = static_cast<const char*>(bytes);
  std::size_t left = static_cast<std::size_t>(count);
  while (left != 0) {
    const std::size_t part = std::min(left, max_block);
    std::memcpy(room(part), from, part);
    commit(part);
    from += part;
    left -= part;
  }
  return failed_ ? 0 : count;
}

void UT_STREAM::write(const char* text, bx_long length) { swrite(text, length); }

void UT_STREAM::writeline(const char* text) {
  const char* line = ut_text(text);
  std::size_t left = std::strlen(line);
  while (left != 0) {
    const auto part = static_cast<bx_long>(std::min<std::size_t>(left, max_block));
    swrite(line, part);
    line += part;
    left -= static_cast<std::size_t>(part);
  }
  swrite("\n", 1);
}

bool UT_STREAM::flush() {
  if (write_at_ != nullptr) {
    write_block(buffer_.get(), static_cast<std::size_t>(write_at_ - buffer_.get()));
    write_at_ = buffer_.get();
  }
  return !failed_;
}
