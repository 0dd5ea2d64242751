// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The library's reports on standard output.
#pragma once

#include <string>

namespace bxdb {

/// Collects the many small pieces of a report while the object lives, and writes them in large blocks.
class report_buffer {
 public:
  report_buffer();
  report_buffer(const report_buffer&) = delete;
  report_buffer& operator=(const report_buffer&) = delete;
  ~report_buffer();

 private:
  void add(const char* text);
  void write() noexcept;

  std::string text_;
};

}  // namespace bxdb
