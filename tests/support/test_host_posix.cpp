// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "test_host.h"

namespace test {

const int fast_fail_end = -SIGABRT;

int in_child(const std::function<int()>& body) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    const rlimit no_core{0, 0};
    setrlimit(RLIMIT_CORE, &no_core);
    _exit(body());
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child) return 255;
  return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

bool ended_by_fast_fail(int status) { return testing::KilledBySignal(SIGABRT)(status); }

testing::AssertionResult is_fault(const std::string& message, const std::string& start, const std::string& why) {
  if (message == start + why) return testing::AssertionSuccess();
  return testing::AssertionFailure() << message << " is not " << start << why;
}

void leave_process(int status) { _exit(status); }

void set_variable(const char* name, const char* value) {
  if (value != nullptr) {
    setenv(name, value, 1);
  } else {
    unsetenv(name);
  }
}

void join_output_to_error() {
  if (dup2(2, 1) < 0) abort();
}

std::FILE* open_error_output() { return fdopen(dup(2), "w"); }

}  // namespace test
