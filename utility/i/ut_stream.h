// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Byte streams: the buffered text and binary operations on which all records are written and read.
//
// A stream is used in one direction, by one thread. A derived class supplies the raw transfer; all
// buffering is here, so the operations below cost little more than copying the bytes.
//
// Faults are remembered, not thrown: after any operation ok() tells whether every write so far was
// taken and every read got what it asked for.
#pragma once

#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>

#include "ut_types.h"

class BX_API UT_STREAM {
 public:
  UT_STREAM(const UT_STREAM&) = delete;
  UT_STREAM& operator=(const UT_STREAM&) = delete;
  virtual ~UT_STREAM();

  // ---- reading

  /// Reads count bytes and returns how many there were; fewer only at the end of the stream.
  bx_long sread(void* bytes, bx_long count);

  /// Consumes bytes through the delimiter, copies the first limit of them (the delimiter among
  /// them) to key and returns how many were consumed. Without a delimiter all that is left is
  /// consumed and counted; 0 when nothing was left. Writes no NUL. The answer saturates at
  /// 2147483647.
  bx_long readkey(char* key, bx_long limit, char delimiter);

  /// Consumes one line with its end ("\n" or "\r\n"), stores at most limit - 1 characters of it and
  /// a NUL. Returns 1 when a line end was consumed, 0 when the stream ended first. The stream fails only when it ended
  /// before the line began: what there is of a last line without end is stored like any other line.
  int readline(char* line, bx_long limit);

  /// Reads a NUL-terminated text of at most limit bytes, NUL included, and returns its length
  /// without the NUL; -1 when the text is longer (limit bytes are consumed) or not terminated.
  bx_long readstring(char* text, bx_long limit);

  /// Drops count bytes.
  void skip(bx_long count);

  // ---- writing

  /// Writes count bytes and returns count, or fewer when the stream failed.
  bx_long swrite(const void* bytes, bx_long count);

  /// Writes length bytes, no terminator.
  void write(const char* text, bx_long length);

  /// Writes the text and the line end "\n", on every platform.
  void writeline(const char* text);

  /// Hands everything buffered to the raw stream; true while ok().
  bool flush();

  // ---- state

  /// False once a write was not taken or a read found less than it asked for.
  bool ok() const noexcept { return !failed_; }

  /// Records a fault found by the user of the stream.
  void fail() noexcept { failed_ = true; }

  /// How many bytes can still be read at the most: no reader allocates for more than these can
  /// hold. 2^63 - 1 when the stream cannot tell.
  std::int64_t bytesleft() const;

  // ---- being watched

  /// Told how many bytes were read or written since the stream was watched; false asks for an end.
  using watcher = std::function<bool(std::int64_t)>;

  /// From now on the watcher is asked, about once for each megabyte, where the users of the stream call go_on. An empty
  /// one ends that.
  void watch(watcher asked);

  /// To be called between records. False when the watcher asked for an end, which counts as a fault of the stream; a
  /// watched stream that failed asks no more.
  bool go_on() { return watched_ == nullptr || ask_when_due(); }

  /// The same, asking at once: for work that follows the reading.
  bool go_on_now() { return watched_ == nullptr || ask(); }

  // ---- blocks: the fast way for whole records

  /// The bytes that can be read next, without consuming them: at least count, or fewer at the end
  /// of the stream (available says how many). count is at most max_block. The pointer is valid
  /// until the next operation.
  const char* peek(std::size_t count, std::size_t& available) {
    if (static_cast<std::size_t>(read_end_ - read_at_) < count) fill(count);
    available = static_cast<std::size_t>(read_end_ - read_at_);
    return read_at_;
  }

  /// Consumes bytes that peek showed.
  void consume(std::size_t count) noexcept { read_at_ += count; }

  /// Room for count bytes to be written, count at most max_block; commit tells how many were.
  char* room(std::size_t count) {
    if (static_cast<std::size_t>(write_end_ - write_at_) < count) make_room();
    return write_at_;
  }
  void commit(std::size_t count) noexcept { write_at_ += count; }

  static constexpr std::size_t max_block = std::size_t{64} << 10;

 protected:
  UT_STREAM() noexcept;

  /// Reads up to count bytes; 0 means the end or a fault.
  virtual std::size_t readbytes(void* bytes, std::size_t count);

  /// Writes all bytes; false on a fault.
  virtual bool writebytes(const void* bytes, std::size_t count);

  /// Bytes that readbytes can still deliver at the most.
  virtual std::int64_t rawbytesleft() const;

  /// Reads from bytes in memory, which must outlive the stream, instead of calling readbytes.
  void read_from_memory(const char* bytes, std::size_t count) noexcept;

  /// Forgets buffered bytes and faults, for a stream that is bound anew.
  void reset() noexcept;

 private:
  struct watched_state;

  void fill(std::size_t count);
  void make_room();
  std::int64_t position() const noexcept;
  bool ask_when_due();
  bool ask();
  void write_block(const char* bytes, std::size_t count);

  std::unique_ptr<char[]> buffer_;
  const char* read_at_ = nullptr;
  const char* read_end_ = nullptr;
  char* write_at_ = nullptr;
  char* write_end_ = nullptr;
  bool in_memory_ = false;
  bool failed_ = false;
  std::int64_t moved_ = 0;  // bytes that came into the buffer to be read, or left it when written
  std::unique_ptr<watched_state> watched_;
};
