// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "program.h"

namespace test {

const char* const no_input = "/dev/null";

bool start_program(const std::vector<std::string>& words, const program_files& files, int& status) {
  std::vector<std::string> copies = words;
  std::vector<char*> line;
  for (std::string& word : copies) line.push_back(word.data());
  line.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  const int flags = O_WRONLY | O_CREAT | O_TRUNC;
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, files.input.c_str(), O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, files.output.c_str(), flags, 0600);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, files.error.c_str(), flags, 0600);
  pid_t child = 0;
  const int fault = posix_spawn(&child, line[0], &actions, nullptr, line.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (fault != 0) return false;
  int ended = 0;
  waitpid(child, &ended, 0);
  if (WIFEXITED(ended)) status = WEXITSTATUS(ended);
  return true;
}

}  // namespace test
