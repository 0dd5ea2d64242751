// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <windows.h>
// Behind it.
#include <io.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "test_host.h"
#include "windows_process.h"

namespace test {

const int fast_fail_end = static_cast<int>(0xC0000409);

namespace {

// A child is told how the calls of in_child before its own ended, one number each.
constexpr const char* told = "QELMODB_TEST_CHILDREN";

std::string running_test() {
  const testing::TestInfo* info = testing::UnitTest::GetInstance()->current_test_info();
  return std::string(info->test_suite_name()) + "." + info->name();
}

std::optional<std::vector<int>> ends_told_to_this_process() {
  const char* text = std::getenv(told);
  if (text == nullptr) return std::nullopt;
  std::vector<int> ends;
  std::istringstream numbers(text);
  for (int end = 0; numbers >> end;) ends.push_back(end);
  return ends;
}

int run_again(const std::string& test, const std::vector<int>& ends) {
  std::string text = " ";
  for (const int end : ends) text += std::to_string(end) + " ";
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  // Test names are ASCII.
  const std::wstring line =
      L"\"" + std::wstring(program) + L"\" --gtest_filter=" + std::wstring(test.begin(), test.end());
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  const HANDLE nowhere = CreateFileA("NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                     &inherited, OPEN_EXISTING, 0, nullptr);
  SetEnvironmentVariableA(told, text.c_str());
  // The child runs one test, whatever part of them this process was given.
  for (const char* name : {"GTEST_TOTAL_SHARDS", "GTEST_SHARD_INDEX"}) SetEnvironmentVariableA(name, nullptr);
  const std::optional<int> ended = run_process(line, {nowhere, nowhere, nowhere});
  SetEnvironmentVariableA(told, nullptr);
  CloseHandle(nowhere);
  if (!ended) throw std::runtime_error("cannot start the program for " + test);
  return *ended;
}

}  // namespace

int in_child(const std::function<int()>& body) {
  static const std::optional<std::vector<int>> told_ends = ends_told_to_this_process();
  static std::size_t call = 0;
  if (told_ends) {
    if (call < told_ends->size()) return (*told_ends)[call++];
    leave_process(body());
  }
  static std::string test;
  static std::vector<int> ends;
  if (test != running_test()) ends.clear();
  test = running_test();
  ends.push_back(run_again(test, ends));
  return ends.back();
}

bool ended_by_fast_fail(int status) { return status == fast_fail_end; }

testing::AssertionResult is_fault(const std::string& message, const std::string& start, const std::string& /*why*/) {
  if (message.starts_with(start) && message.size() > start.size()) return testing::AssertionSuccess();
  return testing::AssertionFailure() << message << " does not begin with " << start;
}

void leave_process(int status) {
  TerminateProcess(GetCurrentProcess(), static_cast<UINT>(status));
  std::abort();
}

void set_variable(const char* name, const char* value) {
  const std::string text = value == nullptr ? "" : *value == '\0' ? " " : value;
  _putenv_s(name, text.c_str());
}

void join_output_to_error() {
  if (_dup2(2, 1) < 0) std::abort();
}

std::FILE* open_error_output() { return _fdopen(_dup(2), "wb"); }

}  // namespace test
