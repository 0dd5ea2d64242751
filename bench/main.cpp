// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// qelmodb_bench [--device=S|M|L] [options of Google Benchmark]
//
// Without --device the environment variable QELMODB_BENCH_DEVICE chooses, and without that it is M. Exit status: 0
// done, 1 when an answer was wrong or a benchmark failed, 2 for bad use.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "bench_device.h"
#include "load_memory.h"
#include "registry.h"

namespace {

class watchful_reporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) failed_ = failed_ || run.error_occurred;
    ConsoleReporter::ReportRuns(runs);
  }
  bool failed() const noexcept { return failed_; }

 private:
  bool failed_ = false;
};

constexpr char device_option[] = "--device=";

// Takes the option out of the arguments.
std::string chosen_size(int& argc, char** argv) {
  const char* in_environment = std::getenv("QELMODB_BENCH_DEVICE");
  std::string size = in_environment != nullptr ? in_environment : "M";
  int kept = 1;
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], device_option, sizeof(device_option) - 1) == 0) {
      size = argv[i] + sizeof(device_option) - 1;
    } else {
      argv[kept++] = argv[i];
    }
  }
  argc = kept;
  argv[argc] = nullptr;
  return size;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::strcmp(argv[1], bench::measure_load_option) == 0) return bench::measure_load_here(argv[2]);
  const std::string size = chosen_size(argc, argv);
  if (!bench::choose_device(size)) {
    std::fprintf(stderr, "qelmodb_bench: there is no device \"%s\", only S, M and L\n", size.c_str());
    return 2;
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::AddCustomContext("device", size);
  bench::run_registrars();
  watchful_reporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return reporter.failed() ? 1 : 0;
}
