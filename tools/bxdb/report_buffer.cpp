// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "report_buffer.h"

#include <cstdio>

#include "ut_msgman.h"

namespace bxdb {
namespace {

constexpr std::size_t block = std::size_t{1} << 20;
constexpr std::size_t slack = 4096;

}  // namespace

report_buffer::report_buffer() {
  text_.reserve(block + slack);
  ut_msgman->setsink([](const char* text, void* user) { static_cast<report_buffer*>(user)->add(text); }, this);
}

report_buffer::~report_buffer() {
  ut_msgman->setsink(nullptr, nullptr);
  write();
}

void report_buffer::add(const char* text) {
  text_.append(text);
  if (text_.size() >= block) write();
}

void report_buffer::write() noexcept {
  std::fwrite(text_.data(), 1, text_.size(), stdout);
  text_.clear();
}

}  // namespace bxdb
