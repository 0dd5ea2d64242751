// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What tests ask of the system, which each does in its own way: processes seen from outside, and the environment.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>

namespace test {

/// How a child process that runs body ended: with its exit status, or minus the signal that killed it. On Windows the
/// child runs the test again up to this call: what the test did so far must not depend on anything outside of it.
int in_child(const std::function<int()>& body);

/// Where a child takes long to start, a loop that needs many takes only every so many.
#ifdef _WIN32
inline constexpr int child_stride = 25;
#else
inline constexpr int child_stride = 1;
#endif

/// Exit statuses that no sanitizer uses.
inline constexpr int child_said_false = 40;
inline constexpr int child_said_true = 41;

/// What in_child gives for a process that ended by fast-fail.
extern const int fast_fail_end;

/// The same for EXPECT_EXIT.
bool ended_by_fast_fail(int status);

/// Whether a message is start followed by what the system says: why, or anything where that depends on its language.
testing::AssertionResult is_fault(const std::string& message, const std::string& start, const std::string& why);

/// A number in the regular expressions that EXPECT_EXIT has here.
#ifdef _WIN32
inline const std::string digits = "\\d+";
#else
inline const std::string digits = "[0-9]+";
#endif

/// Leaves at once, without handlers or flushing.
[[noreturn]] void leave_process(int status);

/// Sets a variable of this process' environment; null removes it. A blank stands for nothing where the system knows no
/// empty variables.
void set_variable(const char* name, const char* value);

/// Has what this process prints go to standard error.
void join_output_to_error();

/// A further stream to where standard error goes.
std::FILE* open_error_output();

}  // namespace test
