// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The coders that write and read the records of a compressed file.
#pragma once

#include "bx_record_readers.h"
#include "bx_record_writers.h"
#include "bx_template_records.h"
#include "qelmotmplt.h"

class bx_template_writer : public bx_binary_writer {
 public:
  explicit bx_template_writer(UT_PTRFILE& file) : bx_binary_writer(file), file_(file) {}

  bool field(const char* /*label*/, std::uint16_t value) { return bytes<2>(value); }
  bool field(const char* /*label*/, bx_long value) { return number(value); }
  bool field(const char* /*label*/, const BX_POINT& point) { return number(point.x) && number(point.y); }
  bool flag(const char* /*label*/, std::uint8_t value) { return bytes<2>(value); }

  template <class Item, class Describe>
  bool array(const char* label, std::uint16_t count, const Item* items, int /*least_size*/, Describe describe) {
    field(label, count);
    for (int i = 0; i < count; ++i) {
      if (!file_.go_on()) return false;
      if (!describe(items[i])) return false;
    }
    return true;
  }

  /// The count has 16 bits; entries beyond it are left out.
  template <class Key, class Value>
  bool entries(const char* label, const char* key_label, const char* value_label, const std::map<Key, Value>& map) {
    auto left = static_cast<std::uint16_t>(map.size());
    field(label, left);
    for (auto at = map.begin(); left > 0; ++at, --left) {
      field(key_label, at->first);
      field(value_label, at->second);
    }
    return true;
  }

  bool wire_lists(const BASIC_ASS_TEMPLATE& set) {
    bytes<2>(set.num_wirelist);
    for (int k = 0; k < set.num_wirelist; ++k) bytes<2>(set.wirelist_numwires[k]);
    for (int k = 0; k < set.num_wirelist; ++k) {
      for (int j = 0; j < set.wirelist_numwires[k]; ++j) bytes<2>(set.wirelists[k][j]);
    }
    return true;
  }

  bool delta_wire(const BX_WIRE& wire) { return wire.writemeCompressed(&file_) != 0; }

 private:
  UT_PTRFILE& file_;
};

/// Numbers that are cut off read as zero, and lists end where the file does: the stream remembers that it ended too
/// early. So no count makes more than one array larger than the file justifies. What the objects held before is
/// released or replaced; whatever happens they can be destroyed.
class bx_template_reader : public bx_binary_reader {
 public:
  explicit bx_template_reader(UT_PTRFILE& file) : bx_binary_reader(file), file_(file) {}

  template <class Object>
  bool name(Object& object) {
    reference(object.name);
    return true;
  }
  bool field(const char* /*label*/, std::uint16_t& value) {
    value = word();
    return true;
  }
  bool field(const char* /*label*/, bx_long& value) {
    value = 0;
    number(value);
    return true;
  }
  bool field(const char* /*label*/, BX_POINT& point) {
    point = NO_POINT;
    static_cast<void>(number(point.x) && number(point.y));
    return true;
  }
  bool flag(const char* /*label*/, std::uint8_t& value) {
    value = word() != 0 ? 1 : 0;
    return true;
  }

  template <class Item, class Describe>
  bool array(const char* /*label*/, std::uint16_t& count, Item*& items, int /*least_size*/, Describe describe) {
    const std::uint16_t stored = word();
    count = 0;
    delete[] items;
    items = nullptr;
    if (stored == 0) return true;
    items = new Item[stored];
    count = stored;
    for (int i = 0; i < count && file_.go_on() && file_.ok(); ++i) {
      if (!describe(items[i])) return false;
    }
    return true;
  }

  template <class Key, class Value>
  bool entries(const char* /*label*/, const char* key_label, const char* value_label, std::map<Key, Value>& map) {
    const std::uint16_t stored = word();
    for (int i = 0; i < stored; ++i) {
      Key key{};
      Value value{};
      field(key_label, key);
      if (!file_.ok()) break;
      field(value_label, value);
      map.insert_or_assign(map.end(), key, value);
    }
    return true;
  }

  bool wire_lists(BASIC_ASS_TEMPLATE& set);
  bool delta_wire(BX_WIRE& wire) { return wire.readmeCompressed(&file_, '\0') != 0; }

 private:
  std::uint16_t word() {
    const char* bytes = bx_stream_source::take(2);
    return bytes != nullptr ? static_cast<std::uint16_t>(bx_decode(bytes, 2)) : std::uint16_t{0};
  }

  UT_PTRFILE& file_;
};
