// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Checks any bytes as either content: it never ends the process, its places lie within the file, its sections cover the
// file without gaps, what it says of severity agrees with its counts, and its memory is in proportion to the file.
#include "fuzzing.h"
#include "memory_meter.h"

namespace {

/// Bytes for each byte of the file, and for what is there in any case: descriptions of a hundred faults, tables.
constexpr std::ptrdiff_t memory_factor = 16;
constexpr std::ptrdiff_t memory_start = 256 << 10;

void require_sensible(const qelmodb::check_report& report, std::int64_t size) {
  FUZZ_REQUIRE(report.bytes == size);
  FUZZ_REQUIRE(report.loadable() == (report.errors == 0));
  std::int64_t errors = 0;
  for (const qelmodb::fault& fault : report.faults) {
    FUZZ_REQUIRE(fault.offset >= 0 && fault.offset <= size);
    FUZZ_REQUIRE(!fault.message.empty() && !fault.text().empty());
    FUZZ_REQUIRE(fault.line == 0 || report.file_form == qelmodb::form::text);
    errors += fault.level == qelmodb::severity::error ? 1 : 0;
  }
  FUZZ_REQUIRE((errors == 0) == (report.errors == 0));
  FUZZ_REQUIRE(errors <= report.errors);
  std::int64_t end = 0;
  for (const qelmodb::file_section& section : report.sections) {
    FUZZ_REQUIRE(section.offset == end && section.bytes >= 0);
    end += section.bytes;
  }
  FUZZ_REQUIRE(end <= size);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::install_manager();
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  FUZZ_REQUIRE(!fuzz::ends_process([&] {
    for (const auto what : {qelmodb::content::database, qelmodb::content::grid}) {
      const fuzz::memory_meter memory;
      require_sensible(qelmodb::check_bytes(bytes, what), static_cast<std::int64_t>(size));
      FUZZ_REQUIRE(memory.peak() <= memory_start + memory_factor * static_cast<std::ptrdiff_t>(size));
    }
    qelmodb::detect_content(bytes);
  }));
  return 0;
}
