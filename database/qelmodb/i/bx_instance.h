// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Instances: the nodes of the block hierarchy. An instance is a named rectangle of the coordinate grid
// with its own wires, sorted by name, and its child instances, sorted by position.
//
// Ownership. An instance owns its children and destroys them through their virtual destructors. Names:
// while it stands alone (top null) it owns its name and its wires' names; in a database they are the
// database's interned strings, and only ~BX_DB frees them.
//
// Concurrency. Looking things up in a tree that nobody changes may run on many threads; nothing else
// may. separator is process-wide.
#pragma once

#include <cstddef>
#include <new>

#include "bx_wire.h"
#include "ut_extrema.h"

class BX_DB;

/// The rectangle of an instance: xmin, xmax, ymin, ymax.
class BX_API BX_EXTREMA : public UT_EXTREMA {};

class BX_INSTANCE;
using DARRAY_BX_INSTPTR = UT_DARRAY<BX_INSTANCE*>;

/// The longest name, in characters, that the lookups marked _tr promise an answer for. For longer
/// names their answers are unspecified, but safe.
inline constexpr bx_long BX_TR_NAME_LIMIT = 111;

/// The longest name, in characters, that text files and binary database files can hold.
inline constexpr bx_long BX_FILE_NAME_LIMIT = 99;

/// The longest name, in characters, that binary grid files can hold.
inline constexpr bx_long BX_GRID_NAME_LIMIT = 254;

class BX_API BX_INSTANCE : public BX_EXTREMA {
 public:
  // ---- fields, in this order, behind the rectangle
  bool nameborrowed;            ///< the name lies in storage of somebody else; see BX_DB::MPAR_FLOW
  char* name;                   ///< NUL-terminated, or null
  DARRAY_BX_WIRE wires;         ///< ascending by name, compared byte by byte
  DARRAY_BX_INSTPTR instances;  ///< owned; ascending by xmin, then ymin; an entry may be null
  BX_DB* top;                   ///< the database it belongs to, or null
  std::uint16_t tmplt;          ///< template reference, see is_basic_ass and tmpltidx

  // ---- make

  /// A standalone instance with the rectangle spanned by two opposite corners in any order, and a
  /// copy of the name (null stays null).
  BX_INSTANCE(const char* instance_name, bx_long x1, bx_long y1, bx_long x2, bx_long y2);

  /// Forbidden: ends the process with "Copy constructor not allowed".
  BX_INSTANCE(const BX_INSTANCE& other);

  /// Shallow: afterwards both instances share names, wires and children, and only one of them may
  /// be changed or destroyed. What this instance held before is not released.
  BX_INSTANCE& operator=(const BX_INSTANCE& other) noexcept;

  /// Destroys the children, and frees the names while the instance stands alone. With BX_DB::MPAR_FLOW set, see there.
  /// The destructor of a derived class runs before, and still finds name, wires and children, also where the instance
  /// is destroyed with its parent. A parent of a derived class is there as long as its children, up to 256 derived
  /// instances inside each other; the children of deeper ones may be destroyed after it. Needs no stack for deep trees.
  virtual ~BX_INSTANCE();

  // ---- storage, as for any other class: the library's operator new and delete, so that it can free what clients made
  // in their own modules, and tell those instances that a load brought, which share storage

  static void* operator new(std::size_t size);
  static void* operator new(std::size_t size, std::align_val_t alignment);
  static void* operator new(std::size_t size, const std::nothrow_t& tag) noexcept;
  static void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t& tag) noexcept;
  static void* operator new(std::size_t /*size*/, void* place) noexcept { return place; }
  static void operator delete(void* inst) noexcept;
  static void operator delete(void* inst, std::align_val_t alignment) noexcept;
  static void operator delete(void* inst, const std::nothrow_t& tag) noexcept;
  static void operator delete(void* inst, std::align_val_t alignment, const std::nothrow_t& tag) noexcept;
  static void operator delete(void* /*inst*/, void* /*place*/) noexcept {}

  // ---- compression (the order of these virtual operations is fixed)

  /// Counts this instance and its subtree in its database and lets each refer to its template: switch matrices
  /// to their wire list, others to an instance template, which is made when there is none yet. Names and wires
  /// stay as they are. Called by BX_DB::compress, which prepares the switch-matrix templates; these must exist.
  /// An instance without database is left alone. Ends the process through the message manager when a switch
  /// matrix has wires that no wire list has, and with more than 32768 templates. Needs no stack for deep trees.
  virtual void compress();

  /// Writes this instance and its subtree for a compressed file: rectangle, template reference, number of
  /// children, the children; 22 bytes for each. Children of derived classes are written by their own operation; 0
  /// when one of these gave 0. Needs no stack for deep trees.
  virtual unsigned char writecompress(UT_PTRFILE* file);

  /// Fills this empty instance from such a record, with children of class BX_INSTANCE in this instance's database;
  /// restore gives them names and wires. 0 when a rectangle is cut off; what was read stays attached.
  virtual unsigned char readcompress(UT_PTRFILE* file);

  /// The number of the first template of its database with this instance's name, number of wires and relative
  /// nodes; wire names are not compared. Makes one, which borrows the names of this instance and its wires, when
  /// there is none. Walks the templates one by one; BX_DB::compress finds them faster. -1 without a database.
  int create_template();

  /// Gives this instance and its subtree the names and wires of the templates they refer to, all borrowed; of a
  /// longer list of wires the rest stays. Nothing is released. An instance whose reference leads nowhere stays as
  /// it is. Called by a load of a compressed file. Ends the process through the message manager when a template
  /// does not cover an instance's column or row. Needs no stack for deep trees. Throws std::bad_alloc; some instances
  /// then lack names, wires, or the names of wires, which restoring again brings.
  void restore();

  // ---- change

  /// Adds a copy of the wire behind all wires whose names do not sort after its own; duplicates
  /// are kept. The caller keeps w. Addresses of this instance's wires become invalid.
  /// O(log n) comparisons and a move of the wires behind it. Throws std::bad_alloc, and then nothing has changed.
  void addwire(const BX_WIRE* w);

  /// Takes ownership of inst, which has no parent yet, and binds its subtree to this instance's
  /// database (or out of one, when this one stands alone).
  ///
  /// An inst with this instance's xmin becomes a child, before any child at exactly its position,
  /// and widens xmax, ymin and ymax. Any other is filed under the column instance with its xmin: the
  /// first child with that left edge, or else a new child named "BXD__" and the name of inst. This
  /// instance is widened only by its own children, not by theirs; see convert_hierarchy.
  ///
  /// Throws std::bad_alloc; inst is then the caller's still, and nothing has changed but that names may have been
  /// added to the database's table.
  ///
  /// In a list of more than 256 children the column is found by halving, as long as the list is known to be in position
  /// order. Hazard: after writing the xmin of a child, or a list of children, by hand call qelmodb::child_order_changed
  /// (qelmoext.h) before adding to the parent.
  ///
  /// Cost: O(log n), plus a look for null children, plus a move of the children after it, plus the binding. Once after
  /// a left edge was moved anywhere, plus a look at each child.
  void addinstance(BX_INSTANCE* inst);

  /// Breaks up child lists of more than 40 entries, in the whole subtree: consecutive children, about
  /// the square root of their number at a time, move under new instances named "BXD", a number of
  /// four digits, "_" and the parent's name. Then widens every rectangle of the subtree over those of
  /// its children. Null children are skipped. Needs no stack for deep trees. Throws std::bad_alloc; some lists are
  /// broken up then and others are not, each as a whole, and rectangles may be as they were.
  void convert_hierarchy();

  // ---- look up in this instance; nothing is allocated

  const char* getname() const noexcept { return name; }
  bx_long getnumwires() const noexcept { return wires.getcount(); }
  bx_long getnuminstances() const noexcept { return instances.getcount(); }

  /// Wire or child i; null when i is out of range.
  BX_WIRE* getwire(bx_long i) const noexcept { return i >= 0 && i < wires.getcount() ? &wires[i] : nullptr; }
  BX_INSTANCE* getinstance(bx_long i) const noexcept {
    return i >= 0 && i < instances.getcount() ? instances[i] : nullptr;
  }

  /// The index of a wire of this name, negative when there is none. start -1 gives the first; the
  /// last answer as start gives the next of the same name. O(log n) for start -1; afterwards the scan
  /// from start passes over the wires that sort before the name.
  bx_long getwireid(const char* wire_name, bx_long start) const noexcept;

  /// The same, comparing names up to their first "$" only, up to BX_TR_NAME_LIMIT characters.
  bx_long getwireid_tr(const char* wire_name, bx_long start) const noexcept;

  /// The same by address. start null gives the first, an address that is none of this instance's
  /// wires gives null.
  BX_WIRE* getwire(const char* wire_name, BX_WIRE* start) const noexcept;
  BX_WIRE* getwire_tr(const char* wire_name, BX_WIRE* start) const noexcept;

  /// The index of a child of this name, negative when none was found. Hazard: children are sorted by
  /// position, but this is a binary search by name all the same. It finds every child only where
  /// both orders agree; find_instances in qelmoext.h always does.
  bx_long getinstanceid(const char* instance_name, bx_long start) const noexcept;

  /// The same by address. A start that is no child of this instance ends the process.
  BX_INSTANCE* getinstance(const char* instance_name, BX_INSTANCE* start) const;

  /// The first child behind index start (-1: from the first) whose rectangle covers (x, y), edges
  /// included; -1 when there is none. O(n).
  bx_long getinstanceid(bx_long x, bx_long y, bx_long start) const noexcept;

  /// The same by address. A start that is no child of this instance ends the process.
  BX_INSTANCE* getinstance(bx_long x, bx_long y, BX_INSTANCE* start) const;

  // ---- look up in the subtree

  /// A wire of this name: this instance's own, or else that of the first descendant, depth first in
  /// child order, all of whose ancestors below this instance cover (x, y), as it does itself. Null when
  /// there is none. Allocates nothing while no more than 256 covering instances are nested in each other.
  BX_WIRE* getwire(bx_long x, bx_long y, const char* wire_name) const;
  BX_WIRE* getwire_tr(bx_long x, bx_long y, const char* wire_name) const;

  // ---- templates

  /// 1 when bit 15 of tmplt is set: the index is one of a switch-matrix wire list.
  unsigned char is_basic_ass() const noexcept { return (tmplt & 0x8000U) != 0 ? 1 : 0; }

  /// Bits 0 to 14 of tmplt.
  int tmpltidx() const noexcept { return tmplt & 0x7fff; }

  // ---- the separator

  /// The character, process-wide, that replaces the first "$" of every wire name read from a file. NUL
  /// at first: names are then cut at their first "$". Set it to '$' to keep names as they are.
  void setseparator(char c) noexcept { separator = c; }
  char getseparator() const noexcept { return separator; }

  // ---- records of this instance and its subtree; results are 1 for success, 0 for failure

  /// Writes the binary record: names as addresses, which the name table of a file explains.
  unsigned char writeme(UT_PTRFILE* file) const;

  /// Fills this empty instance from a binary record. Names are borrowed from the file's fix-up table.
  /// On failure what was read stays attached. This and the readers below leave the name that the instance had valid
  /// until the instance is destroyed.
  unsigned char readme(UT_PTRFILE* file);

  /// Writes the text record.
  unsigned char writeme(UT_STREAM* file) const;

  /// Fills this empty instance from a text record. Names are private copies; children are bound to this
  /// instance's database once they are complete. A name or number of more than 99 characters, or a
  /// missing one, ends the process at once: with SIGABRT, on Windows by a fast-fail.
  unsigned char readme(UT_STREAM* file);

  /// Sends the tree with its wires to the message manager, indented by level blanks and three more
  /// for each depth.
  void printme(int level) const;

  /// The same four without wires. The binary record spells names out (at most BX_GRID_NAME_LIMIT
  /// characters); names read are private copies.
  unsigned char writegrid(UT_PTRFILE* file) const;
  unsigned char readgrid(UT_PTRFILE* file);
  unsigned char writegrid(UT_STREAM* file) const;
  unsigned char readgrid(UT_STREAM* file);
  void printgrid(int level) const;

 protected:
  /// Binds the subtree to a database, or with null out of one: every name becomes the database's
  /// interned string or a private copy. Nothing happens to an instance that is bound there already. Throws
  /// std::bad_alloc, and then the subtree is what it was.
  void settoplevel(BX_DB* db);

  /// Store a template reference. An index that is negative or above 32767 ends the process through the message
  /// manager.
  void set_basic_ass_tmpltidx(int idx);
  void set_non_basic_ass_tmpltidx(int idx);

  static char separator;

 private:
  friend class BX_DB;
  friend struct bx_access;

  class name_releaser;
  class destroyer;
  class binding;
  class regrouping;

  BX_INSTANCE* find_column(bx_long x, bool& met_null) noexcept;
  void attach(BX_INSTANCE* inst);
  void release_names(name_releaser& releaser);
  void destroy_subtree();
  void regroup_children(bx_long present);
  int wire_list_number();
  void refer_to_template();
  void compress_children();
  void note_child_order() noexcept;
  void give_up_name();

  bool children_in_order() noexcept;

  // All lie in the padding behind tmplt. Whether the children are in position order, which a file or the widening of
  // convert_hierarchy can upset; and the state of the process-wide count of moved left edges at which that was found
  // out.
  bool in_order_;
  bool has_former_names_ = false;  // they are kept apart, see bx_former_names.h
  bx_ulong in_order_at_;
};

static_assert(sizeof(BX_INSTANCE) == 104, "millions of instances: a field more is a cost to be weighed");
