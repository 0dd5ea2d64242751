// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Makes a tree as the input says, so that every input is one, and takes it through every form; then damages the files
// at places that the input names, too. This reaches behind what damage to bytes alone comes to: tables of templates
// that nearly fit each other.
#include <memory>

#include "promises.h"

namespace {

using qelmodb::content;
using qelmodb::form;

/// The input as one number after the other; zeros behind its end.
class numbers {
 public:
  numbers(const std::uint8_t* data, std::size_t size) : at_(data), left_(size) {}

  bool empty() const { return left_ == 0; }
  int next() {
    if (left_ == 0) return 0;
    --left_;
    return *at_++;
  }
  int below(int limit) { return next() % limit; }

 private:
  const std::uint8_t* at_;
  std::size_t left_;
};

const char* name_of(int number) {
  static const std::string longest(99, 'N');
  static const char* const names[] = {"BASIC_ASS", "T_A", "T_B", "L", "A", "B", "C$1", "D$x$y", "", longest.c_str()};
  return names[static_cast<std::size_t>(number) % std::size(names)];
}

void add_wires(BX_INSTANCE& inst, numbers& input) {
  for (int count = input.below(6); count > 0; --count) {
    const BX_WIRE wire(name_of(3 + input.below(7)), inst.xmin + input.below(4), inst.ymin + input.below(4));
    inst.addwire(&wire);
  }
}

/// Parents stand in the list of all made so far; matrices stand on a lattice, as they do in devices.
void add_instance(std::vector<BX_INSTANCE*>& all, numbers& input) {
  BX_INSTANCE& parent = *all[static_cast<std::size_t>(input.below(static_cast<int>(all.size())))];
  const int kind = input.next();
  const bx_long x = 10 * input.below(4);
  const bx_long y = 10 * input.below(4);
  auto fresh = std::make_unique<BX_INSTANCE>(name_of(kind < 128 ? 0 : kind), x, y, x + 1 + kind % 3, y + 2);
  add_wires(*fresh, input);
  all.push_back(fresh.get());
  parent.addinstance(fresh.release());
}

void build(BX_DB& db, numbers& input) {
  constexpr std::size_t most = 64;
  add_wires(db, input);
  std::vector<BX_INSTANCE*> all{&db};
  for (int count = input.below(most); count > 0 && !input.empty(); --count) add_instance(all, input);
}

struct damage {
  std::size_t at;
  int how;
  int value;
};

/// What a field turns into: a byte set or flipped, or a number of four bytes made a neighbour of itself or a limit.
void apply(const damage& what, std::string& bytes) {
  static constexpr std::uint32_t values[] = {0, 1, 0x7fff, 0x8000, 0xffff, 0x7fffffff, 0x80000000, 0xffffffff};
  if (what.how % 3 == 0) {
    bytes[what.at] = static_cast<char>(what.value);
  } else if (what.how % 3 == 1) {
    bytes[what.at] = static_cast<char>(bytes[what.at] + (what.value % 7 - 3));
  } else {
    const std::uint32_t number = values[what.value % 8];
    for (std::size_t i = 0; i < 4 && what.at + i < bytes.size(); ++i) {
      bytes[what.at + i] = static_cast<char>(number >> (8 * i));
    }
  }
}

/// A range map whose size is not the count of rows or columns is told where it stands, and they stand behind it: which
/// of the two is wrong cannot be known.
bool contradicts_what_follows(const qelmodb::fault& fault) {
  return fault.message.starts_with("a range map has a size of ") &&
         fault.message.find(", but there are ") != std::string::npos;
}

/// No error is told of what stands before the damage, the field apart that it is in, and what contradicts it.
void require_no_earlier_fault(const std::string& bytes, content what, std::size_t at) {
  constexpr std::int64_t longest_field = 256;
  const qelmodb::check_report report = fuzz::checked(bytes, what);
  for (const qelmodb::fault& fault : report.faults) {
    if (fault.level != qelmodb::severity::error || report.limit != nullptr) continue;
    if (contradicts_what_follows(fault)) continue;
    FUZZ_REQUIRE(fault.offset + longest_field >= static_cast<std::int64_t>(at));
  }
}

void require_damaged_files_as_promised(std::string bytes, content what, numbers input) {
  const bool sound = fuzz::checked(bytes, what).loadable();
  std::size_t first = bytes.size();
  for (int count = 1 + input.below(3); count > 0; --count) {
    const std::size_t at = static_cast<std::size_t>(input.next() * 256 + input.next()) % bytes.size();
    const int how = input.next();
    apply({at, how, input.next()}, bytes);
    first = std::min(first, at);
  }
  if (sound) require_no_earlier_fault(bytes, what, first);
  fuzz::require_load_as_checked(bytes, what);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::install_manager();
  numbers input(data, size);
  const int kind = input.below(5);
  BX_DB db("T_ROOT", 0, 0, 50, 50);
  db.setseparator('$');
  build(db, input);
  if (kind == 4) {
    const std::string bytes = fuzz::require_compressed_as_told(db);
    if (!bytes.empty()) require_damaged_files_as_promised(bytes, content::database, input);
    return 0;
  }
  const content what = kind < 2 ? content::database : content::grid;
  const form as = kind % 2 == 0 ? form::text : form::binary;
  fuzz::require_round_trip(db, as, what);
  require_damaged_files_as_promised(fuzz::dumped(db, as, what), what, input);
  return 0;
}
