// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_msgman.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>

#include "builders.h"
#include "test_host.h"

namespace {

TEST(MessageManager, PrintsToStandardOutputWithoutALineEnd) {
  testing::internal::CaptureStdout();
  ut_msgman->msgprint("one, ");
  ut_msgman->msgprint("two");
  ut_msgman->msgprint(nullptr);
  std::fflush(stdout);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "one, two");
}

TEST(MessageManager, ShowsDetailsAsLinesOnStandardError) {
  testing::internal::CaptureStderr();
  ut_msgman->msgdetail("detail %d", 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "detail %d\n");
}

TEST(MessageManager, SinkReceivesThePiecesUntilItIsTakenAway) {
  {
    const test::caught_report caught;
    ut_msgman->msgprint("one");
    ut_msgman->msgprint("");
    ut_msgman->msgprint("%s");
    EXPECT_EQ(caught.pieces(), (std::vector<std::string>{"one", "", "%s"}));
  }
  testing::internal::CaptureStdout();
  ut_msgman->msgprint("again");
  std::fflush(stdout);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "again");
}

TEST(MessageManager, WritesTextsNumbersAndLineEnds) {
  const test::caught_report caught;
  *ut_msgman << "a" << static_cast<const char*>(nullptr) << bx_long{-2147483647 - 1} << bx_ulong{4294967295U}
             << std::endl
             << std::flush;
  EXPECT_EQ(caught.text(), "a-21474836484294967295\n");
}

// As a client of a DLL may have a std::endl of its own.
TEST(MessageManager, TakesForALineEndWhateverWritesOne) {
  const test::caught_report caught;
  *ut_msgman << "a" << [](std::ostream& out) -> std::ostream& { return out << '\n' << std::flush; };
  *ut_msgman << "b" << [](std::ostream& out) -> std::ostream& { return out << ' '; };
  EXPECT_EQ(caught.text(), "a\nb");
}

TEST(MessageManager, SubstituteReceivesWhatTheStreamOperatorsWrite) {
  struct substitute : UT_MSGMAN {
    void msgprint(const char* text) override { all += text; }
    std::string all;
  } own;
  own << "x" << bx_long{5} << std::endl;
  EXPECT_EQ(own.all, "x5\n");
}

TEST(MessageManager, ManagersOfAClientHaveSinksOfTheirOwn) {
  std::string seen;
  UT_MSGMAN own;
  own.setsink([](const char* text, void* user) { *static_cast<std::string*>(user) += text; }, &seen);
  own.msgprint("mine");
  const test::caught_report caught;
  ut_msgman->msgprint("theirs");
  EXPECT_EQ(seen, "mine");
  EXPECT_EQ(caught.text(), "theirs");
}

// A substitute that takes the operations by their places in the interface.
TEST(MessageManager, OperationsStandInTheOrderDetailFatalPrint) {
  struct recording : UT_MSGMAN {
    void msgdetail(const char*, int) override { order += 'd'; }
    void msgfatal(const char*, const char*, const char*, short, const char*, bx_long, bx_long) override {
      order += 'f';
    }
    void msgprint(const char*) override { order += 'p'; }
    std::string order;
  } own;
  UT_MSGMAN* const manager = &own;
  manager->msgdetail("", 0);
  manager->msgfatal("", "", "", 0, "", 0, 0);
  manager->msgprint("");
  EXPECT_EQ(own.order, "dfp");
#if defined(__GNUC__) && !defined(_WIN32)
  // A pointer to a virtual member holds 1 plus its offset in the table.
  const auto place = [](auto member) {
    std::uintptr_t value = 0;
    std::memcpy(&value, &member, sizeof value);
    return (value - 1) / sizeof(void*);
  };
  EXPECT_EQ(place(&UT_MSGMAN::msgdetail), 0U);
  EXPECT_EQ(place(&UT_MSGMAN::msgfatal), 1U);
  EXPECT_EQ(place(&UT_MSGMAN::msgprint), 2U);
#endif
}

class MessageManagerDeathTest : public testing::Test {
 protected:
  MessageManagerDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(MessageManagerDeathTest, FatalMessageIsOneLineWithItsOriginAndEndsTheProcess) {
  EXPECT_EXIT(ut_msgman->msgfatal("It is over.", "TAG", "source", 123, "1.0", 20, 0),
              testing::ExitedWithCode(EXIT_FAILURE), "^It is over\\. \\[TAG\\] source:123 version 1\\.0 code 20\n$");
}

TEST_F(MessageManagerDeathTest, UnprintableBytesOfTheTagAreSpelledOut) {
  EXPECT_EXIT(ut_msgman->msgfatal("M", "\xd1\x01 a", "s", 1, "v", 1, 0), testing::ExitedWithCode(EXIT_FAILURE),
              "^M \\[\\\\xD1\\\\x01 a\\] s:1 version v code 1\n$");
}

TEST_F(MessageManagerDeathTest, MissingTextsAreEmpty) {
  EXPECT_EXIT(ut_msgman->msgfatal(nullptr, nullptr, nullptr, -1, nullptr, -1, 0), testing::ExitedWithCode(EXIT_FAILURE),
              "^ \\[\\] :-1 version  code -1\n$");
}

TEST_F(MessageManagerDeathTest, BufferedOutputIsFlushedBeforeTheEnd) {
  const auto write_and_end = [] {
    // A buffered stream of its own that leads where the test looks.
    std::FILE* file = test::open_error_output();
    if (file == nullptr || setvbuf(file, nullptr, _IOFBF, 4096) != 0) std::abort();
    std::fputs("still in the buffer\n", file);
    ut_msgman->msgfatal("M", "T", "s", 1, "v", 1, 0);
  };
  EXPECT_EXIT(write_and_end(), testing::ExitedWithCode(EXIT_FAILURE), "code 1\nstill in the buffer\n$");
}

TEST_F(MessageManagerDeathTest, ProcessEndsWithoutRunningDestructorsOrExitHandlers) {
  const auto end = [] {
    std::atexit([] { std::fputs("exit handler\n", stderr); });
    ut_msgman->msgfatal("M", "T", "s", 1, "v", 1, 0);
  };
  EXPECT_EXIT(end(), testing::ExitedWithCode(EXIT_FAILURE), "code 1\n$");
}

}  // namespace
