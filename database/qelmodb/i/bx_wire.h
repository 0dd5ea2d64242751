// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Wires: named connection points at nodes of the device's coordinate grid.
//
// A BX_WIRE is a small value. Instances hold theirs by value in an array that is sorted by name.
// Copies are shallow: they share the name, and exactly one holder may free it. A wire that lies in an
// array of the library is never that holder on its own account, nor is a copy taken from it: its
// instance decides (see BX_INSTANCE), so a copy such as BX_WIRE w = *inst->getwire(0) frees nothing.
//
// Wires of a tree that nobody changes may be read concurrently. The coding state is process-wide.
#pragma once

#include <new>

#include "ut_darray.h"
#include "ut_types.h"

class UT_PTRFILE;
class UT_STREAM;

/// A coordinate pair.
struct BX_POINT {
  bx_long x = 0;
  bx_long y = 0;

  constexpr BX_POINT() noexcept = default;
  constexpr BX_POINT(bx_long px, bx_long py) noexcept : x(px), y(py) {}

  friend constexpr bool operator==(const BX_POINT& a, const BX_POINT& b) noexcept { return a.x == b.x && a.y == b.y; }
};

class BX_API BX_WIRE {
 public:
  // ---- fields, in this order
  bx_long nodex;      ///< node column
  bx_long nodey;      ///< node row
  char* name;         ///< NUL-terminated, or null
  bool nameborrowed;  ///< the name lies in storage of somebody else: never freed through this wire

  // ---- make

  /// A wire without position (both coordinates 2147483647) and without name.
  BX_WIRE()
  noexcept : nodex(INT32_MAX), nodey(INT32_MAX), name(nullptr), nameborrowed(false), holder_(holder::client) {}

  /// A wire at (x, y) with a copy of the name of its own, which its destructor frees.
  BX_WIRE(const char* wire_name, bx_long x, bx_long y);

  /// Shallow copies: all fields, the name pointer shared. Assignment does not free the old name.
  /// Of a client's wire and its copies only one may be destroyed with the name in place.
  BX_WIRE(const BX_WIRE& other) noexcept;
  BX_WIRE& operator=(const BX_WIRE& other) noexcept;

  /// Frees the name unless nameborrowed is set or the wire lies in, or was copied from, an array
  /// of the library.
  ~BX_WIRE();

  // ---- read and change

  const char* getname() const noexcept { return name; }
  bx_long getnodex() const noexcept { return nodex; }
  bx_long getnodey() const noexcept { return nodey; }

  /// Stores the pointer as given: no copy, the old name is not freed, nameborrowed stays as it is.
  /// Unless that is set, a client's wire from now on frees the new name (with free).
  void setname(char* new_name) noexcept;

  // ---- records; results are 1 for success, 0 for failure

  /// Writes the binary record: the name's address, x, y. Always 1.
  unsigned char writeme(UT_PTRFILE* file) const;

  /// Reads a binary record. The name becomes the string of the file's fix-up table and is borrowed;
  /// its first "$" is replaced there, for all who share the string, by the separator. 0 when the
  /// coordinates are cut off.
  unsigned char readme(UT_PTRFILE* file, char separator);

  /// Writes the text line BX_WIRE:  "name" (x, y). Always 1.
  unsigned char writeme(UT_STREAM* file) const;

  /// Reads a text line. The name becomes a copy of its own, its first "$" replaced by the
  /// separator. 0 when the line has no end. A name or number of more than 99 characters, or none
  /// left in the stream, ends the process at once: with SIGABRT, on Windows by a fast-fail.
  unsigned char readme(UT_STREAM* file, char separator);

  /// Writes and reads the delta-coded binary record: the name's address, and the position relative to the
  /// wire coded before, in 9 to 17 bytes. Both move the running position, which only writing marks as
  /// set. Always 1: a record that is cut off reads as zeros.
  unsigned char writemeCompressed(UT_PTRFILE* file) const;
  unsigned char readmeCompressed(UT_PTRFILE* file, char separator);

  /// Sends BX_WIRE: "name"; Node location:(x, y) to the message manager, level blanks before it.
  void printme(int level) const;

  /// Forgets the running position of delta-coded wire records. These are coded against the wire
  /// before, in one process-wide state: only one such file may be read or written at a time.
  static void resetCurrentXY() noexcept;

 protected:
  /// Takes the name pointer over as it is.
  BX_WIRE(char* own_name, const BX_POINT* at) noexcept;

  static bx_long currentX;  ///< the last wire coded
  static bx_long currentY;
  static bool isCurrentXYSet;  ///< whether there is one

 private:
  friend struct UT_ELEMENT<BX_WIRE>;

  /// Whose name it is, as far as the fields above do not tell.
  enum class holder : unsigned char { client, array, copy_from_array };

  void drop_own_name() noexcept;

  // Lies in the padding behind nameborrowed.
  holder holder_;
};

static_assert(sizeof(BX_WIRE) == 24, "25 million wires are held by value: no byte may be added");

template <>
struct BX_API UT_ELEMENT<BX_WIRE> {
  static void make(BX_WIRE* first, std::size_t count) noexcept {
    for (BX_WIRE* wire = first; wire != first + count; ++wire) stored(::new (static_cast<void*>(wire)) BX_WIRE);
  }
  static void stored(BX_WIRE* wire) noexcept { wire->holder_ = BX_WIRE::holder::array; }
};

using DARRAY_BX_WIRE = UT_DARRAY<BX_WIRE>;
