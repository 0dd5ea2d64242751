// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The message manager: the one way by which the library speaks to the user, and the one way by which
// it ends the process on an impossible state.
//
// A client may derive its own manager and point ut_msgman at it, or give the built-in one a sink. The
// library calls the manager from whatever thread reports and takes no lock.
#pragma once

#include <iosfwd>

#include "ut_types.h"

class BX_API UT_MSGMAN {
 public:
  /// Receives report text; user is the pointer given to setsink.
  using SINK = void (*)(const char* text, void* user);

  constexpr UT_MSGMAN() noexcept = default;
  UT_MSGMAN(const UT_MSGMAN&) = delete;
  UT_MSGMAN& operator=(const UT_MSGMAN&) = delete;

  /// Shows one line of detail about the fault that msgfatal will report next. The second argument
  /// is 0 and has no meaning yet. The built-in manager writes the line to standard error.
  virtual void msgdetail(const char* text, int reserved);

  /// Reports a fatal fault and ends the process. The tag may hold bytes above 127. The built-in
  /// manager writes one line to standard error with the message, tag (unprintable bytes as \xNN),
  /// source, line, version and code, flushes all streams and calls std::_Exit(EXIT_FAILURE).
  ///
  /// A substitute may return or throw (a test does). The caller is then memory-safe but its
  /// result has no meaning.
  virtual void msgfatal(const char* message, const char* tag, const char* source, short line, const char* version,
                        bx_long code, bx_long reserved);

  /// Appends text to the user-visible report; adds no line end. The built-in manager hands it to
  /// its sink, or writes it to standard output when it has none.
  virtual void msgprint(const char* text);

  virtual ~UT_MSGMAN();

  /// Sends all report text of the built-in manager to sink; null restores standard output.
  void setsink(SINK sink, void* user) noexcept;

  /// Writes the text, the number, or (for std::endl) a line end through msgprint.
  UT_MSGMAN& operator<<(const char* text);
  UT_MSGMAN& operator<<(bx_long number);
  UT_MSGMAN& operator<<(bx_ulong number);
  UT_MSGMAN& operator<<(std::ostream& (*manipulator)(std::ostream&));

 private:
  SINK sink_ = nullptr;
  void* sink_user_ = nullptr;
};

/// The manager in use. Never null: a client that sets it points it at an object that outlives the
/// library's use, and may set it back to the value it found.
extern BX_API UT_MSGMAN* ut_msgman;
