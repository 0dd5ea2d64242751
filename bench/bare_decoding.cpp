// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bare_decoding.h"

#include <algorithm>
#include <cstring>

#include "file_window.h"

namespace bench {

namespace {

template <class T>
T read_as(const char* from) noexcept {
  T value;
  std::memcpy(&value, from, sizeof(T));
  return value;
}

// ---- text

constexpr std::size_t longest_line = 512;

constexpr std::size_t before_wire_name = sizeof("BX_WIRE:  \"") - 1;
constexpr std::size_t before_instance_name = sizeof("BX_INSTANCE: \"") - 1;
constexpr std::size_t before_point = sizeof("\" (") - 1;
constexpr std::size_t between_numbers = sizeof(", ") - 1;
constexpr std::size_t between_points = sizeof(") (") - 1;
constexpr std::size_t behind_point = sizeof(")\n") - 1;

inline const char* decode_number(const char* at, std::int32_t& number) noexcept {
  const bool negative = *at == '-';
  at += negative;
  std::uint32_t value = 0;
  for (std::uint32_t digit = 0; (digit = static_cast<std::uint32_t>(*at - '0')) <= 9; ++at) value = value * 10 + digit;
  number = static_cast<std::int32_t>(negative ? 0 - value : value);
  return at;
}

inline const char* decode_point(const char* at, std::int32_t& x, std::int32_t& y) noexcept {
  at = decode_number(at, x);
  return decode_number(at + between_numbers, y);
}

inline const char* end_of_name(const char* at) noexcept {
  while (*at != '"') ++at;
  return at;
}

class text_decoder {
 public:
  explicit text_decoder(bare_tree& tree) noexcept : instance_(tree.instances()), wire_(tree.wires()) {}

  // A line begins with "BX_WIRE", "BX_INSTANCE" or a digit; the counts in the latter are known from what follows.
  inline const char* decode_line(const char* at, std::uint64_t file_offset) noexcept {
    if (*at != 'B') return decode_count(at);
    return at[3] == 'W' ? decode_wire(at, file_offset) : decode_instance(at, file_offset);
  }

  const bare_wire* end_of_wires() const noexcept { return wire_; }

 private:
  inline const char* decode_wire(const char* at, std::uint64_t file_offset) noexcept {
    const char* name = at + before_wire_name;
    const char* name_end = end_of_name(name);
    wire_->name = file_offset + before_wire_name;
    wire_->name_length = static_cast<std::uint64_t>(name_end - name);
    at = decode_point(name_end + before_point, wire_->x, wire_->y);
    ++wire_;
    return at + behind_point;
  }

  inline const char* decode_instance(const char* at, std::uint64_t file_offset) noexcept {
    const char* name = at + before_instance_name;
    instance_->name = file_offset + before_instance_name;
    at = decode_point(end_of_name(name) + before_point, instance_->corners[0], instance_->corners[1]);
    at = decode_point(at + between_points, instance_->corners[2], instance_->corners[3]);
    ++instance_;
    return at + behind_point;
  }

  static inline const char* decode_count(const char* at) noexcept {
    std::int32_t count = 0;
    at = decode_number(at, count);
    return at + 1;
  }

  bare_instance* instance_;
  bare_wire* wire_;
};

// ---- binary

constexpr std::size_t instance_header = 28;
constexpr std::size_t wire_record = 16;
constexpr std::size_t count_record = 4;
constexpr std::size_t longest_name_record = 512;

void pass_name_table(file_window& window) {
  window.show(longest_name_record);
  window.pass(static_cast<const char*>(std::memchr(window.at(), '\n', window.shown())) + 1);
  window.show(count_record);
  auto names = read_as<std::uint32_t>(window.at());
  window.pass(window.at() + count_record);
  for (; names != 0; --names) {
    window.show(longest_name_record);
    window.pass(window.at() + sizeof(std::uint64_t) + std::strlen(window.at() + sizeof(std::uint64_t)) + 1);
  }
}

bare_wire* decode_wires(file_window& window, std::size_t count, bare_wire* wire) {
  while (count != 0) {
    const std::size_t here = std::min(count, window.show(wire_record) / wire_record);
    if (here == 0) break;
    const char* at = window.at();
    for (std::size_t i = 0; i < here; ++i, ++wire, at += wire_record) {
      wire->name = read_as<std::uint64_t>(at);
      wire->x = read_as<std::int32_t>(at + 8);
      wire->y = read_as<std::int32_t>(at + 12);
      wire->name_length = 1;
    }
    window.pass(at);
    count -= here;
  }
  return wire;
}

}  // namespace

bare_tree::bare_tree(std::size_t instances, std::size_t wires)
    : instances_(instances * sizeof(bare_instance)), wires_(wires * sizeof(bare_wire)) {}

std::size_t decode_text(const std::string& file, bare_tree& tree) {
  file_window window(file);
  window.show(longest_line);
  window.pass(static_cast<const char*>(std::memchr(window.at(), '\n', window.shown())) + 1);
  text_decoder decoder(tree);
  while (window.show(longest_line) != 0) {
    const char* begin = window.at();
    const char* at = begin;
    const char* safe_end = begin + (window.shown() < longest_line ? window.shown() : window.shown() - longest_line + 1);
    const std::uint64_t offset = window.offset();
    while (at < safe_end) at = decoder.decode_line(at, offset + static_cast<std::uint64_t>(at - begin));
    window.pass(at);
  }
  return static_cast<std::size_t>(decoder.end_of_wires() - tree.wires());
}

std::size_t decode_binary(const std::string& file, bare_tree& tree) {
  file_window window(file);
  pass_name_table(window);
  bare_instance* instance = tree.instances();
  bare_wire* wire = tree.wires();
  while (window.show(instance_header) >= instance_header) {
    const char* at = window.at();
    instance->name = read_as<std::uint64_t>(at);
    std::memcpy(instance->corners, at + 8, sizeof(instance->corners));
    instance->first_wire = static_cast<std::uint32_t>(wire - tree.wires());
    instance->wires = read_as<std::uint32_t>(at + 24);
    window.pass(at + instance_header);
    wire = decode_wires(window, instance->wires, wire);
    window.show(count_record);
    window.pass(window.at() + count_record);
    ++instance;
  }
  return static_cast<std::size_t>(wire - tree.wires());
}

void fill_from_table(const std::vector<bare_wire>& table, std::size_t wires, bare_tree& tree) {
  bare_wire* to = tree.wires();
  while (wires != 0) {
    const std::size_t here = std::min(wires, table.size());
    for (std::size_t i = 0; i < here; ++i) to[i] = table[i];
    to += here;
    wires -= here;
  }
}

}  // namespace bench
