// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The coders that read records, and the order in which a tree is read.
//
// Counts in a file are not believed: storage is made for what the bytes left can hold, and grows as
// records arrive.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

#include "bx_line_parser.h"
#include "bx_load_storage.h"
#include "bx_records.h"
#include "bx_text_names.h"
#include "ut_fast_fail.h"
#include "ut_ptrfile.h"
#include "ut_string.h"

/// Replaces the first "$" of a name by the separator. False when it has none.
inline bool bx_cut_name(char* name, char separator) noexcept {
  char* dollar = name != nullptr ? std::strchr(name, '$') : nullptr;
  if (dollar != nullptr) *dollar = separator;
  return dollar != nullptr;
}

/// How many of count records of at least this size can still come; a stream that does not know its length
/// is trusted with a first block.
inline bx_long bx_justified(bx_long count, const UT_STREAM& file, int least_size) {
  constexpr bx_long first_block = 4096;
  const std::int64_t left = file.bytesleft();
  if (left == INT64_MAX) return std::min(count, first_block);
  return static_cast<bx_long>(std::min<std::int64_t>(count, left / least_size));
}

/// Text records. A key that is missing or longer than the buffer ends the process, without a message: that
/// is what clients of damaged text files were always told to expect.
class bx_text_reader {
 public:
  /// Names become interned strings of intern_in, or private copies when that is null; private copies of
  /// an instance that belongs to a database are kept by it.
  bx_text_reader(UT_STREAM& file, BX_DB* intern_in, BX_DB* keep_in)
      : file_(file), intern_in_(intern_in), keep_in_(keep_in), separator_(bx_access::separator()) {
    if (intern_in_ == nullptr) return;
    wire_names_ = std::make_unique<bx_text_names>([this](std::string_view text) {
      set_key(text);
      bx_cut_name(key_, separator_);
      return stored_name();
    });
  }
  bx_text_reader(const bx_text_reader&) = delete;
  bx_text_reader& operator=(const bx_text_reader&) = delete;

  void set_separator(char separator) {
    separator_ = separator;
    wire_names_.reset();
  }

  bool begin(const bx_record_kind& kind) {
    cut_ = kind.cut_names;
    file_.readkey(key_, bx_key_size, '"');
    return true;
  }
  template <class Object>
  bool name(Object& object) {
    read_key('"');
    if (cut_) bx_cut_name(key_, separator_);
    object.name = stored_name();
    object.nameborrowed = false;
    return true;
  }
  bool pair(const char* /*a*/, bx_long& first, const char* /*b*/, bx_long& second) {
    file_.skip(1);  // the blank before the point
    file_.skip(1);  // its parenthesis
    read_key(',');
    first = ut_atoi(key_);
    read_key(')');
    second = ut_atoi(key_[0] == ' ' ? key_ + 1 : key_);
    return true;
  }
  bool end() { return file_.readline(key_, bx_key_size) == 1; }
  bool count(const char* /*label*/, bx_long& number) {
    file_.readline(key_, bx_key_size);
    number = ut_atoi(key_);
    return true;
  }

  bool wires(BX_INSTANCE& inst, bx_long count) {
    bx_reserve_wires(inst, bx_justified(count, file_, bx_least_wire_size(bx_text_sizes)), count);
    const BX_WIRE fresh;
    for (bx_long i = 0; i < count; ++i) {
      constexpr bx_long between = 1024;
      if (i % between == between - 1 && !file_.go_on()) return false;
      BX_WIRE& wire = inst.wires[inst.wires.a_add(&fresh)];
      if (!usual_wire(wire) && !bx_describe_wire(*this, wire)) return false;
    }
    return true;
  }

  /// From here on instances are read that own their names until they are bound.
  void enter_children() noexcept { keep_in_ = nullptr; }

  static const bx_form_sizes& sizes() noexcept { return bx_text_sizes; }
  UT_STREAM& file() noexcept { return file_; }

  /// The database of a new child.
  BX_DB* child_top(const BX_INSTANCE& /*parent*/) const noexcept { return intern_in_; }

 private:
  /// Reads a wire whose line is just as one is written: at once, with as good as no search. Any other line is left for
  /// bx_describe_wire, which gives the same for these.
  bool usual_wire(BX_WIRE& wire) {
    if (wire_names_ == nullptr) return false;
    std::size_t available = 0;
    const char* const line = file_.peek(bx_longest_wire_line, available);
    if (available < bx_longest_wire_line) return false;
    bx_line_parser parser(line);
    if (!parser.take(bx_wire_record.text_label) || !parser.take("\"")) return false;
    const bx_text_names::entry* name = wire_names_->find(parser.at());
    if (name == nullptr) return false;
    parser.pass(name->text.size() + 1);
    bx_long x = 0;
    bx_long y = 0;
    if (!parser.take(" (") || !parser.take(x) || !parser.take(", ") || !parser.take(y) || !parser.take(")")) {
      return false;
    }
    if (!parser.take("\n") && !parser.take("\r\n")) return false;
    file_.consume(static_cast<std::size_t>(parser.at() - line));
    wire.name = name->stored;
    wire.nameborrowed = false;
    wire.nodex = x;
    wire.nodey = y;
    return true;
  }

  void read_key(char delimiter) {
    const bx_long consumed = file_.readkey(key_, bx_key_size, delimiter);
    if (consumed <= 0 || consumed > bx_key_size) ut_fast_fail();
    key_[consumed - 1] = '\0';
  }

  /// The text has at most bx_key_size - 1 characters.
  void set_key(std::string_view text) { key_[text.copy(key_, bx_key_size - 1)] = '\0'; }

  char* stored_name() {
    if (intern_in_ != nullptr) return bx_access::names(*intern_in_).intern(key_);
    std::unique_ptr<char, decltype(&std::free)> copy(ut_strdup(key_), &std::free);
    if (keep_in_ != nullptr) bx_access::names(*keep_in_).keep(copy.get());
    return copy.release();
  }

  UT_STREAM& file_;
  BX_DB* intern_in_;
  BX_DB* keep_in_;
  char separator_;
  bool cut_ = false;
  char key_[bx_key_size] = {};
  std::unique_ptr<bx_text_names> wire_names_;  // null unless names are interned
};

/// Assembles little-endian numbers.
inline std::uint64_t bx_decode(const char* bytes, std::size_t count) noexcept {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < count; ++i) value |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
  return value;
}

/// Binary records whose names are references. Source::take(count) gives the next count bytes, or null.
template <class Source>
class bx_reference_reader {
 public:
  bx_reference_reader(Source& source, UT_PTRFIXTABLE& fixtable, char separator)
      : source_(source), fixtable_(fixtable), separator_(separator) {}

  void set_separator(char separator) { separator_ = separator; }

  bool begin(const bx_record_kind& kind) {
    cut_ = kind.cut_names && separator_ != '$';
    return true;
  }
  template <class Object>
  bool name(Object& object) {
    UT_PTRFIXTABLE::entry* known = reference(object.name);
    object.nameborrowed = true;
    // Most names have no "$" and are read again and again: they are searched for one once.
    if (!cut_ || known == nullptr || known->settled) return true;
    if (bx_cut_name(known->now, separator_)) {
      bx_shared_names_cut.fetch_add(1, std::memory_order_relaxed);
    } else {
      known->settled = true;
    }
    return true;
  }
  bool pair(const char* /*a*/, bx_long& first, const char* /*b*/, bx_long& second) {
    return number(first) && number(second);
  }
  bool end() { return true; }

  bool number(bx_long& value) {
    const char* bytes = source_.take(4);
    if (bytes == nullptr) return false;
    value = static_cast<bx_long>(static_cast<bx_ulong>(bx_decode(bytes, 4)));
    return true;
  }

  /// Reads a reference and gives its entry, and the string that it stands for; null when it is cut off or not
  /// explained.
  UT_PTRFIXTABLE::entry* reference(char*& string) {
    const char* bytes = source_.take(8);
    UT_PTRFIXTABLE::entry* known = bytes != nullptr ? fixtable_.resolve(bx_decode(bytes, 8), &string) : nullptr;
    string = known != nullptr ? known->now : nullptr;
    return known;
  }

 private:
  Source& source_;
  UT_PTRFIXTABLE& fixtable_;
  char separator_;
  bool cut_ = false;
};

/// Bytes taken from a stream; less than asked for is a short read.
class bx_stream_source {
 public:
  explicit bx_stream_source(UT_STREAM& file) : file_(file) {}

  const char* take(bx_long count) {
    std::size_t available = 0;
    const char* block = file_.peek(static_cast<std::size_t>(count), available);
    if (available < static_cast<std::size_t>(count)) return file_.sread(bytes_, count) == count ? bytes_ : nullptr;
    file_.consume(static_cast<std::size_t>(count));
    return block;
  }

 private:
  UT_STREAM& file_;
  char bytes_[8] = {};
};

/// Bytes of a block that is known to be long enough.
class bx_block_source {
 public:
  explicit bx_block_source(const char* block) noexcept : at_(block) {}

  const char* take(bx_long count) noexcept {
    const char* bytes = at_;
    at_ += count;
    return bytes;
  }

 private:
  const char* at_;
};

/// The binary form of instance records.
class bx_binary_reader : protected bx_stream_source, public bx_reference_reader<bx_stream_source> {
 public:
  explicit bx_binary_reader(UT_PTRFILE& file)
      : bx_stream_source(file),
        bx_reference_reader<bx_stream_source>(static_cast<bx_stream_source&>(*this), file.fixtable(),
                                              bx_access::separator()),
        file_(file) {}

  /// A count that is cut off reads as 0; the stream remembers that it was.
  bool count(const char* /*label*/, bx_long& value) {
    value = 0;
    number(value);
    return true;
  }

  /// Reads blocks of whole records, then what is left one by one.
  bool wires(BX_INSTANCE& inst, bx_long count) {
    DARRAY_BX_WIRE& wires = inst.wires;
    constexpr std::size_t record = bx_least_wire_size(bx_binary_sizes);
    constexpr bx_long block_records = UT_STREAM::max_block / record;
    for (bx_long done = 0; done < count;) {
      const bx_long wanted = std::min(count - done, block_records);
      std::size_t available = 0;
      const char* block = file_.peek(static_cast<std::size_t>(wanted) * record, available);
      const bx_long whole = std::min(wanted, static_cast<bx_long>(available / record));
      if (whole == 0) {
        const BX_WIRE fresh;
        return bx_describe_wire(*this, wires[wires.a_add(&fresh)]);
      }
      make_room(inst, count, done + whole);
      bx_block_source source(block);
      bx_reference_reader<bx_block_source> reader(source, file_.fixtable(), bx_access::separator());
      for (bx_long i = done; i < done + whole; ++i) bx_describe_wire(reader, *wires.getaddr(i));
      file_.consume(static_cast<std::size_t>(whole) * record);
      done += whole;
      if (done < count && !file_.go_on()) return false;
    }
    return true;
  }

  void enter_children() noexcept {}

  static const bx_form_sizes& sizes() noexcept { return bx_binary_sizes; }
  UT_STREAM& file() noexcept { return file_; }
  BX_DB* child_top(const BX_INSTANCE& parent) const noexcept { return parent.top; }

 private:
  void make_room(BX_INSTANCE& inst, bx_long count, bx_long needed) {
    const bx_long held = inst.wires.getcount();
    const bx_long justified = held + bx_justified(count - held, file_, bx_least_wire_size(bx_binary_sizes));
    bx_reserve_wires(inst, std::max(needed, justified), count);
  }

  UT_PTRFILE& file_;
};

/// The binary form of grid records: names in place, as private copies, kept by the database of the
/// instance when it has one.
class bx_binary_grid_reader {
 public:
  bx_binary_grid_reader(UT_STREAM& file, BX_DB* keep_in) : file_(file), keep_in_(keep_in) {}

  bool begin(const bx_record_kind& /*kind*/) { return true; }
  template <class Object>
  bool name(Object& object) {
    char text[bx_grid_name_size];
    if (file_.readstring(text, bx_grid_name_size) < 0) return false;
    std::unique_ptr<char, decltype(&std::free)> copy(ut_strdup(text), &std::free);
    if (keep_in_ != nullptr) bx_access::names(*keep_in_).keep(copy.get());
    object.name = copy.release();
    object.nameborrowed = false;
    return true;
  }
  bool pair(const char* /*a*/, bx_long& first, const char* /*b*/, bx_long& second) {
    return number(first) && number(second);
  }
  bool end() { return true; }
  bool count(const char* /*label*/, bx_long& value) {
    value = 0;
    number(value);
    return true;
  }
  bool wires(BX_INSTANCE& /*inst*/, bx_long /*count*/) { return true; }

  void enter_children() noexcept {}

  static const bx_form_sizes& sizes() noexcept { return bx_binary_grid_sizes; }
  UT_STREAM& file() noexcept { return file_; }
  BX_DB* child_top(const BX_INSTANCE& parent) const noexcept { return parent.top; }

 private:
  bool number(bx_long& value) {
    char bytes[4];
    if (file_.sread(bytes, 4) != 4) return false;
    value = static_cast<bx_long>(static_cast<bx_ulong>(bx_decode(bytes, 4)));
    return true;
  }

  UT_STREAM& file_;
  BX_DB* keep_in_;
};

/// Reads the subtree into root, parents before children. read_head(inst) reads what stands before the count of
/// children; with that, an instance takes at least least_size bytes. On failure what was read stays attached. A text
/// tree that is read with private names is bound to the root's database child by child.
template <class Reader, class ReadHead>
bool bx_read_tree(Reader& reader, BX_INSTANCE& root, int least_size, ReadHead read_head) {
  struct place {
    BX_INSTANCE* inst;
    bx_long left;
  };
  // Whatever ends the reading, what was read is known to be in order or not.
  struct open_places : std::vector<place> {
    ~open_places() {
      for (const place& open : *this) bx_access::note_child_order(*open.inst);
    }
  } path;
  auto enter = [&](BX_INSTANCE& inst) {
    if (!read_head(inst)) return false;
    bx_long count = 0;
    reader.count(bx_child_count_label, count);
    path.push_back({&inst, count});
    if (count > 0) bx_reserve_children(inst, bx_justified(count, reader.file(), least_size), count);
    return true;
  };
  const bx_left_edge_watch among_siblings(root);
  bool good = enter(root);
  reader.enter_children();
  while (good && !path.empty()) {
    place& here = path.back();
    if (here.left > 0) {
      good = reader.file().go_on();
      if (!good) break;
      --here.left;
      std::unique_ptr<BX_INSTANCE> fresh = bx_new_instance(reader.child_top(*here.inst));
      BX_INSTANCE* child = fresh.get();
      here.inst->instances.a_add(&child);
      static_cast<void>(fresh.release());
      good = enter(*child);
      continue;
    }
    BX_INSTANCE* done = here.inst;
    bx_access::note_child_order(*done);
    path.pop_back();
    if (path.size() == 1 && done->top != root.top) bx_access::settoplevel(*done, root.top);
  }
  return good;
}

/// The same for instance records, in grid files without wires.
template <class Reader>
bool bx_read_tree(Reader& reader, BX_INSTANCE& root, bool with_wires) {
  return bx_read_tree(reader, root, bx_least_instance_size(Reader::sizes(), with_wires), [&](BX_INSTANCE& inst) {
    if (!bx_describe_instance(reader, inst)) return false;
    if (!with_wires) return true;
    bx_long count = 0;
    reader.count(bx_wire_count_label, count);
    return reader.wires(inst, count);
  });
}
