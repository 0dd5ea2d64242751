// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The coders that write records, and the order in which a tree is written.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>

#include "bx_records.h"
#include "bx_walk.h"
#include "ut_stream.h"
#include "ut_string.h"

/// Writes a text of any length.
inline void bx_write_text(UT_STREAM& file, std::string_view text) {
  while (!text.empty()) {
    const std::size_t part = std::min(text.size(), UT_STREAM::max_block);
    std::memcpy(file.room(part), text.data(), part);
    file.commit(part);
    text.remove_prefix(part);
  }
}

class bx_text_writer {
 public:
  explicit bx_text_writer(UT_STREAM& file) : file_(file) {}

  bool go_on() { return file_.go_on(); }

  bool begin(const bx_record_kind& kind) {
    bx_write_text(file_, kind.text_label);
    return true;
  }
  template <class Object>
  bool name(const Object& object) {
    bx_write_text(file_, "\"");
    bx_write_text(file_, ut_text(object.name));
    bx_write_text(file_, "\"");
    return true;
  }
  bool pair(const char* /*a*/, bx_long first, const char* /*b*/, bx_long second) {
    char* const start = file_.room(longest_pair);
    char* at = put(start, " (");
    at = put(at, first);
    at = put(at, ", ");
    at = put(at, second);
    *at++ = ')';
    file_.commit(static_cast<std::size_t>(at - start));
    return true;
  }
  bool end() {
    bx_write_text(file_, "\n");
    return true;
  }
  bool count(const char* /*label*/, bx_long number) {
    char* const start = file_.room(longest_pair);
    char* at = put(start, number);
    *at++ = '\n';
    file_.commit(static_cast<std::size_t>(at - start));
    return true;
  }

 private:
  static constexpr std::size_t longest_number = 11;  // -2147483648
  static constexpr std::size_t longest_pair = 2 * longest_number + 5;

  static char* put(char* at, const char* two) {
    std::memcpy(at, two, 2);
    return at + 2;
  }
  static char* put(char* at, bx_long number) { return std::to_chars(at, at + longest_number, number).ptr; }

  UT_STREAM& file_;
};

/// Binary records, little-endian.
class bx_binary_writer {
 public:
  explicit bx_binary_writer(UT_STREAM& file) : file_(file) {}

  bool go_on() { return file_.go_on(); }

  bool begin(const bx_record_kind& /*kind*/) { return true; }
  template <class Object>
  bool name(const Object& object) {
    return reference(object.name);
  }
  bool pair(const char* /*a*/, bx_long first, const char* /*b*/, bx_long second) {
    return number(first) && number(second);
  }
  bool end() { return true; }
  bool count(const char* /*label*/, bx_long value) { return number(value); }

  /// The address of a string, which stands for its text in the file; 0 for a missing name.
  bool reference(const char* string) { return bytes<8>(reinterpret_cast<std::uintptr_t>(string)); }
  bool number(bx_long value) { return bytes<4>(static_cast<bx_ulong>(value)); }

  /// The lowest N bytes of the value.
  template <std::size_t N>
  bool bytes(std::uint64_t value) {
    char* at = file_.room(N);
    for (std::size_t i = 0; i < N; ++i) at[i] = static_cast<char>(static_cast<unsigned char>(value >> (8 * i)));
    file_.commit(N);
    return true;
  }

 private:
  UT_STREAM& file_;
};

/// Binary grid records: names in place.
class bx_binary_grid_writer : public bx_binary_writer {
 public:
  explicit bx_binary_grid_writer(UT_STREAM& file) : bx_binary_writer(file), file_(file) {}

  template <class Object>
  bool name(const Object& object) {
    bx_write_text(file_, ut_text(object.name));
    bx_write_text(file_, std::string_view("\0", 1));
    return true;
  }

 private:
  UT_STREAM& file_;
};

/// The children of an instance as files count them.
inline bx_long bx_count_children(const BX_INSTANCE& inst) {
  return static_cast<bx_long>(std::count_if(inst.instances.begin(), inst.instances.end(),
                                            [](const BX_INSTANCE* child) { return child != nullptr; }));
}

/// Writes the subtree. Null children are left out and not counted.
template <class Writer>
bool bx_write_tree(Writer& writer, const BX_INSTANCE& root, bool with_wires) {
  constexpr bx_long between = 1024;
  return bx_walk(root, [&](const BX_INSTANCE& inst, bx_long /*depth*/) {
    if (!writer.go_on() || !bx_describe_instance(writer, inst)) return false;
    if (with_wires) {
      if (!writer.count(bx_wire_count_label, inst.wires.getcount())) return false;
      bx_long until_asked = between;
      for (const BX_WIRE& wire : inst.wires) {
        if (!bx_describe_wire(writer, wire)) return false;
        if (--until_asked > 0) continue;
        until_asked = between;
        if (!writer.go_on()) return false;
      }
    }
    return writer.count(bx_child_count_label, bx_count_children(inst));
  });
}
