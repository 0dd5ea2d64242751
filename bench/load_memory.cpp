// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "load_memory.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

#include "bench_device.h"
#include "registry.h"

extern char** environ;

namespace bench {

namespace {

// A line of the process's status, in bytes.
double status_of(const char* key) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> status(std::fopen("/proc/self/status", "r"), std::fclose);
  char line[256];
  while (status != nullptr && std::fgets(line, sizeof(line), status.get()) != nullptr) {
    if (std::strncmp(line, key, std::strlen(key)) == 0) return std::strtod(line + std::strlen(key), nullptr) * 1024;
  }
  return 0;
}

struct load_memory {
  double resident = 0;
  double peak = 0;
};

// Runs this program on the file and gives the first line that it prints.
std::string line_of_child(const std::string& file) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  std::string program = "/proc/self/exe";
  std::string option = measure_load_option;
  std::string name = file;
  char* arguments[] = {program.data(), option.data(), name.data(), nullptr};
  pid_t child = 0;
  const int fault = posix_spawn(&child, program.c_str(), &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  char line[128] = "";
  const ssize_t length = fault == 0 ? read(ends[0], line, sizeof(line) - 1) : 0;
  close(ends[0]);
  int status = 1;
  if (fault == 0) waitpid(child, &status, 0);
  if (length <= 0 || status != 0) throw std::runtime_error("the process that loads failed");
  return line;
}

load_memory measure_load(const std::string& file) {
  const std::string line = line_of_child(file);
  load_memory memory;
  if (std::sscanf(line.c_str(), "%lf %lf", &memory.resident, &memory.peak) != 2) {
    throw std::runtime_error("the process that loads said something else");
  }
  return memory;
}

void memory_of_load(benchmark::State& state, const std::string& file) {
  load_memory memory;
  for (auto _ : state) memory = measure_load(file);
  const auto wires = static_cast<double>(expected_sums().wires);
  state.counters["resident_per_wire"] = memory.resident / wires;
  state.counters["peak_per_wire"] = memory.peak / wires;
}

void add_all() {
  add("text_load", "memory", [](benchmark::State& state) { memory_of_load(state, text_file()); });
  add("binary_load", "memory", [](benchmark::State& state) { memory_of_load(state, binary_file()); });
  add("compressed_load", "memory", [](benchmark::State& state) { memory_of_load(state, compressed_file()); });
}

const registrar registered(add_all);

}  // namespace

int measure_load_here(const char* file) {
  const double before = status_of("VmRSS:");
  BX_DB db;
  if (db.load(file) == 0) return 1;
  const double after = status_of("VmRSS:");
  const double peak = status_of("VmHWM:");
  std::printf("%.0f %.0f\n", after - before, peak - before);
  std::fflush(stdout);
  return 0;
}

}  // namespace bench
