// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_msgman.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>

#include "ut_string.h"

namespace {

// Never destroyed, so that static objects of a client may still report while the process ends.
union forever {
  constexpr forever() noexcept : manager() {}
  ~forever() {}
  UT_MSGMAN manager;
};
constinit forever built_in_manager;

// A client of a DLL may have a std::endl of its own, with another address.
bool ends_lines(std::ostream& (*manipulator)(std::ostream&)) {
  if (manipulator == static_cast<std::ostream& (*)(std::ostream&)>(std::endl)) return true;
  std::ostringstream written;
  manipulator(written);
  return written.str() == "\n";
}

std::string printable(const char* text) {
  std::string shown;
  for (const char* c = ut_text(text); *c != '\0'; ++c) {
    const auto byte = static_cast<unsigned char>(*c);
    if (byte >= 0x20 && byte < 0x7f) {
      shown += *c;
    } else {
      shown += neoform("\\x%02X", byte);
    }
  }
  return shown;
}

}  // namespace

constinit UT_MSGMAN* ut_msgman = &built_in_manager.manager;

UT_MSGMAN::~UT_MSGMAN() = default;

void UT_MSGMAN::msgdetail(const char* text, int /*reserved*/) { std::fprintf(stderr, "%s\n", ut_text(text)); }

void UT_MSGMAN::msgfatal(const char* message, const char* tag, const char* source, short line, const char* version,
                         bx_long code, bx_long /*reserved*/) {
  std::fprintf(stderr, "%s [%s] %s:%d version %s code %d\n", ut_text(message), printable(tag).c_str(), ut_text(source),
               line, ut_text(version), code);
  std::cout.flush();
  std::cerr.flush();
  std::fflush(nullptr);
  std::_Exit(EXIT_FAILURE);
}

void UT_MSGMAN::msgprint(const char* text) {
  if (sink_ != nullptr) {
    sink_(ut_text(text), sink_user_);
  } else {
    std::fputs(ut_text(text), stdout);
  }
}

void UT_MSGMAN::setsink(SINK sink, void* user) noexcept {
  sink_ = sink;
  sink_user_ = user;
}

UT_MSGMAN& UT_MSGMAN::operator<<(const char* text) {
  msgprint(ut_text(text));
  return *this;
}

UT_MSGMAN& UT_MSGMAN::operator<<(bx_long number) {
  msgprint(neoform("%d", number));
  return *this;
}

UT_MSGMAN& UT_MSGMAN::operator<<(bx_ulong number) {
  msgprint(neoform("%u", number));
  return *this;
}

UT_MSGMAN& UT_MSGMAN::operator<<(std::ostream& (*manipulator)(std::ostream&)) {
  if (ends_lines(manipulator)) {
    msgprint("\n");
    if (sink_ == nullptr) std::fflush(stdout);
  }
  return *this;
}
