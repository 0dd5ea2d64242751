// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Impossible states: what is reported, how the process ends, and that a manager that does not end it leaves
// everything in one piece.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "exposed.h"
#include "test_host.h"

namespace {

using test::add;

constexpr const char* no_start = "BX_INSTANCE::getinstance Couldn't find start instance";

// Two parents with a child each, so that one's child is a foreign start for the other.
struct two_parents {
  BX_INSTANCE first{"P", 0, 0, 1, 1};
  BX_INSTANCE second{"Q", 0, 0, 1, 1};
  BX_INSTANCE* own = add(first, "A", 0, 0, 1, 1);
  BX_INSTANCE* foreign = add(second, "A", 0, 0, 1, 1);
};

// One whole standard error output: an optional detail line, then the fatal line.
std::string output(const std::string& detail, const std::string& message, const std::string& source,
                   const std::string& version, int code) {
  return "^" + detail + message + " \\[.+\\] " + source + ":" + test::digits + " version " + version + " code " +
         std::to_string(code) + "\n$";
}

std::string generic_output(const std::string& detail, int code) {
  return output(detail.empty() ? "" : detail + "\n", "A fatal error occurred\\. The process will now exit\\.",
                "qelmodb", "1\\.0", code);
}

class InternalErrorDeathTest : public testing::Test {
 protected:
  InternalErrorDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  two_parents parents;
};

TEST_F(InternalErrorDeathTest, ForeignStartByNameEndsTheProcessWithTheFatalMessageOnly) {
  const test::environment hidden(test::show_internal_error, nullptr);
  EXPECT_EXIT(parents.first.getinstance("A", parents.foreign), testing::ExitedWithCode(EXIT_FAILURE),
              generic_output("", 1));
}

TEST_F(InternalErrorDeathTest, ForeignStartByPositionEndsTheProcessWithCodeTwo) {
  const test::environment hidden(test::show_internal_error, nullptr);
  EXPECT_EXIT(parents.first.getinstance(0, 0, parents.foreign), testing::ExitedWithCode(EXIT_FAILURE),
              generic_output("", 2));
}

TEST_F(InternalErrorDeathTest, DetailLineIsShownWhenTheVariableIsPresent) {
  const test::environment shown(test::show_internal_error, "1");
  EXPECT_EXIT(parents.first.getinstance("A", parents.foreign), testing::ExitedWithCode(EXIT_FAILURE),
              generic_output(no_start, 1));
  EXPECT_EXIT(parents.first.getinstance(0, 0, parents.foreign), testing::ExitedWithCode(EXIT_FAILURE),
              generic_output(no_start, 2));
}

TEST_F(InternalErrorDeathTest, DetailLineIsShownWhenTheVariableIsPresentAndEmpty) {
  const test::environment shown(test::show_internal_error, "");
  EXPECT_EXIT(parents.first.getinstance("A", parents.foreign), testing::ExitedWithCode(EXIT_FAILURE),
              generic_output(no_start, 1));
}

TEST_F(InternalErrorDeathTest, GrandchildIsNoChildAsAStart) {
  BX_INSTANCE* grandchild = add(*parents.own, "G", 0, 0, 1, 1);
  EXPECT_EXIT(parents.first.getinstance("A", grandchild), testing::ExitedWithCode(EXIT_FAILURE), test::fatal_text);
}

template <class T>
void copy_away(const T& original) {
  const T copy(original);
  std::fputs("survived\n", stderr);
}

std::string copy_output() { return output("", "Copy constructor not allowed", "darray", "hdrfile", 1); }

TEST_F(InternalErrorDeathTest, CopyingAnInstanceEndsTheProcessWhateverTheEnvironment) {
  for (const char* value : {static_cast<const char*>(nullptr), "", "1"}) {
    const test::environment set(test::show_internal_error, value);
    EXPECT_EXIT(copy_away(parents.first), testing::ExitedWithCode(EXIT_FAILURE), copy_output());
  }
}

TEST_F(InternalErrorDeathTest, CopyingADatabaseEndsTheProcessWhateverTheEnvironment) {
  const BX_DB db("D", 0, 0, 1, 1);
  for (const char* value : {static_cast<const char*>(nullptr), "", "1"}) {
    const test::environment set(test::show_internal_error, value);
    EXPECT_EXIT(copy_away(db), testing::ExitedWithCode(EXIT_FAILURE), copy_output());
  }
}

TEST_F(InternalErrorDeathTest, CopyingAnArrayEndsTheProcessWhateverTheEnvironment) {
  const BX_DB db;
  for (const char* value : {static_cast<const char*>(nullptr), "", "1"}) {
    const test::environment set(test::show_internal_error, value);
    EXPECT_EXIT(copy_away(parents.first.wires), testing::ExitedWithCode(EXIT_FAILURE), copy_output());
    EXPECT_EXIT(copy_away(parents.first.instances), testing::ExitedWithCode(EXIT_FAILURE), copy_output());
    EXPECT_EXIT(copy_away(db.names), testing::ExitedWithCode(EXIT_FAILURE), copy_output());
  }
}

TEST_F(InternalErrorDeathTest, TextPrintedBeforeTheEndIsNotLost) {
  const auto print_and_end = [this] {
    test::join_output_to_error();
    ut_msgman->msgprint("unfinished report, ");
    parents.first.getinstance("A", parents.foreign);
  };
  EXPECT_EXIT(print_and_end(), testing::ExitedWithCode(EXIT_FAILURE), "unfinished report, ");
}

using lines = std::vector<std::string>;

class InternalError : public testing::Test {
 protected:
  two_parents parents;
  test::recording_manager recorded;
};

TEST_F(InternalError, ReportReachesASubstituteManagerWithItsOriginAndCode) {
  const test::environment hidden(test::show_internal_error, nullptr);
  const test::substitute in_place(recorded);
  EXPECT_EQ(parents.first.getinstance("A", parents.foreign), nullptr);
  EXPECT_EQ(parents.first.getinstance(0, 0, parents.foreign), nullptr);
  EXPECT_EQ(recorded.lines, lines(2, std::string("fatal ") + test::fatal_text));
  EXPECT_EQ(recorded.origins, (lines{"qelmodb 1.0 1 0", "qelmodb 1.0 2 0"}));
  EXPECT_EQ(recorded.tags[0].size(), 7U);
  for (const char c : recorded.tags[0]) EXPECT_GT(static_cast<unsigned char>(c), 127);
  EXPECT_EQ(recorded.tags[1], recorded.tags[0]);
}

TEST_F(InternalError, EnvironmentIsReadAtEachReport) {
  const test::substitute in_place(recorded);
  {
    const test::environment hidden(test::show_internal_error, nullptr);
    parents.first.getinstance("A", parents.foreign);
    EXPECT_EQ(recorded.lines.size(), 1U);
  }
  {
    const test::environment shown(test::show_internal_error, "");
    parents.first.getinstance("A", parents.foreign);
    EXPECT_EQ(recorded.lines, (lines{std::string("fatal ") + test::fatal_text, std::string("detail ") + no_start + " 0",
                                     std::string("fatal ") + test::fatal_text}));
  }
  const test::environment hidden(test::show_internal_error, nullptr);
  parents.first.getinstance("A", parents.foreign);
  EXPECT_EQ(recorded.lines.size(), 4U);
}

TEST_F(InternalError, CopyReportSkipsTheDetailAndNamesTheArrayModule) {
  const test::environment shown(test::show_internal_error, "1");
  const test::substitute in_place(recorded);
  const DARRAY_BX_WIRE copy(parents.first.wires);
  EXPECT_EQ(copy.getcount(), 0);
  EXPECT_EQ(recorded.lines, lines{"fatal Copy constructor not allowed"});
  EXPECT_EQ(recorded.origins, lines{"darray hdrfile 1 0"});
}

TEST_F(InternalError, CopiesMadeUnderAManagerThatReturnsCanBeUsedAndDestroyed) {
  const test::substitute in_place(recorded);
  test::add_wire(parents.first, "W");
  BX_DB db("D", 0, 0, 1, 1);
  add(db, "A", 5, 0, 6, 1);
  {
    const BX_INSTANCE copy(parents.first);
    EXPECT_EQ(copy.getnuminstances(), 0);
    EXPECT_EQ(copy.getnumwires(), 0);
    BX_DB db_copy(db);
    EXPECT_EQ(db_copy.getnuminstances(), 0);
    EXPECT_EQ(db_copy.names.getcount(), 0);
    add(db_copy, "A", 5, 0, 6, 1);
    EXPECT_STREQ(db_copy.getinstance(0)->getname(), "BXD__A");
  }
  EXPECT_EQ(recorded.lines.size(), 5U);
  EXPECT_STREQ(parents.first.getname(), "P");
  EXPECT_STREQ(parents.first.getwire(0)->getname(), "W");
  EXPECT_STREQ(db.getinstance(0)->getname(), "BXD__A");
}

TEST_F(InternalError, ManagerThatThrowsLeavesEverythingAsItWas) {
  test::throwing_manager throwing;
  const test::substitute in_place(throwing);
  test::add_wire(parents.first, "W");
  const BX_DB db("D", 0, 0, 1, 1);
  EXPECT_THROW(parents.first.getinstance("A", parents.foreign), test::fatal_report);
  EXPECT_THROW(parents.first.getinstance(0, 0, parents.foreign), test::fatal_report);
  EXPECT_THROW(const BX_INSTANCE copy(parents.first), test::fatal_report);
  EXPECT_THROW(const BX_DB copy(db), test::fatal_report);
  EXPECT_THROW(const DARRAY_BX_WIRE copy(parents.first.wires), test::fatal_report);
  EXPECT_EQ(test::child_names(parents.first), lines{"A"});
  EXPECT_EQ(test::wire_names(parents.first), lines{"W"});
}

TEST_F(InternalError, OwnChildAsAStartIsNotReported) {
  const test::substitute in_place(recorded);
  EXPECT_EQ(parents.first.getinstance("A", parents.own), nullptr);
  EXPECT_EQ(parents.first.getinstance(0, 0, parents.own), nullptr);
  EXPECT_EQ(parents.first.getinstance("A", nullptr), parents.own);
  EXPECT_TRUE(recorded.lines.empty());
}

}  // namespace
