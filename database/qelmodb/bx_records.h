// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What a record consists of, once for all forms. A coder walks the description: the writers and readers of
// the text and binary forms, the checker, the sizes below, and the tables of docs/file-formats.md, which a
// test holds equal to it. A field added here is added everywhere.
//
// A coder has begin(kind), name(object), pair(label, first, label, second), end() and count(label, number),
// each false when the record cannot go on.
#pragma once

#include <cstdint>

#include "bx_instance.h"
#include "ut_types.h"

/// The kinds of records that have a name.
struct bx_record_kind {
  const char* text_label;  // what a text line begins with, before the quoted name
  bool cut_names;          // readers replace the first "$" of the name by the separator
};

inline constexpr bx_record_kind bx_wire_record{"BX_WIRE:  ", true};
inline constexpr bx_record_kind bx_instance_record{"BX_INSTANCE: ", false};

inline constexpr char bx_wire_count_label[] = "wire count";
inline constexpr char bx_child_count_label[] = "child count";

template <class Coder, class Wire>
constexpr bool bx_describe_wire(Coder& coder, Wire& wire) {
  return coder.begin(bx_wire_record) && coder.name(wire) && coder.pair("x", wire.nodex, "y", wire.nodey) && coder.end();
}

/// The part of an instance record before its wires and children.
template <class Coder, class Instance>
constexpr bool bx_describe_instance(Coder& coder, Instance& inst) {
  return coder.begin(bx_instance_record) && coder.name(inst) && coder.pair("xmin", inst.xmin, "ymin", inst.ymin) &&
         coder.pair("xmax", inst.xmax, "ymax", inst.ymax) && coder.end();
}

/// The first line of every file: this text and a letter for the form.
inline constexpr char bx_magic[] = "BX_DB:";
inline constexpr char bx_text_letter = 'A';
inline constexpr char bx_binary_letter = 'B';
inline constexpr char bx_compressed_letter = 'C';

/// The size of the buffer for text keys and lines, and of names in a name table, NUL included.
inline constexpr bx_long bx_key_size = BX_FILE_NAME_LIMIT + 1;

/// The size of the buffer for names in binary grid records, NUL included.
inline constexpr bx_long bx_grid_name_size = BX_GRID_NAME_LIMIT + 1;

/// The bytes that a record takes at least, in one of the forms.
struct bx_form_sizes {
  int begin;
  int name;
  int pair;
  int end;
  int count;
};

inline constexpr bx_form_sizes bx_text_sizes{1, 1, 4, 1, 1};         // the quotes, " (,)", the line end
inline constexpr bx_form_sizes bx_binary_sizes{0, 8, 8, 0, 4};       // names by reference
inline constexpr bx_form_sizes bx_binary_grid_sizes{0, 1, 8, 0, 4};  // names in place

/// Adds up the least size of a record.
struct bx_size_coder {
  const bx_form_sizes& sizes;
  int total = 0;

  constexpr bool begin(const bx_record_kind& /*kind*/) { return add(sizes.begin); }
  template <class Object>
  constexpr bool name(Object& /*object*/) {
    return add(sizes.name);
  }
  constexpr bool pair(const char* /*a*/, bx_long /*first*/, const char* /*b*/, bx_long /*second*/) {
    return add(sizes.pair);
  }
  constexpr bool end() { return add(sizes.end); }
  constexpr bool count(const char* /*label*/, bx_long /*number*/) { return add(sizes.count); }

 private:
  constexpr bool add(int bytes) {
    total += bytes;
    return true;
  }
};

/// Stands for an object where only its description counts.
struct bx_any_record {
  bx_long nodex = 0, nodey = 0, xmin = 0, xmax = 0, ymin = 0, ymax = 0;
};

constexpr int bx_least_wire_size(const bx_form_sizes& sizes) {
  bx_size_coder coder{sizes};
  bx_any_record record;
  bx_describe_wire(coder, record);
  return coder.total;
}

constexpr int bx_least_instance_size(const bx_form_sizes& sizes, bool with_wires) {
  bx_size_coder coder{sizes};
  bx_any_record record;
  bx_describe_instance(coder, record);
  if (with_wires) coder.count(bx_wire_count_label, 0);
  coder.count(bx_child_count_label, 0);
  return coder.total;
}
