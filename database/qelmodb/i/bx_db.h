// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The database root: the whole tree of one device, and what its instances share.
//
// A BX_DB is itself the top-level instance. It owns its tree, its name table, its grid and its
// templates, and borrows its device. Every instance of the tree has top pointing to it, and it points to
// itself.
//
// Not thread-safe, except that lookups in a database that nobody changes may run concurrently. Loading,
// dumping and everything that changes a database must not run on two threads at once, not even for two
// databases.
#pragma once

#include <vector>

#include "bx_instance.h"
#include "pm_device.h"

class ASS_TEMPLATE;
class BASIC_ASS_TEMPLATE;
class BX_GRID;
class NP_DEVICE;
class bx_name_store;

using DARRAY_NAME = UT_DARRAY<char*>;

class BX_API BX_DB : public BX_INSTANCE {
 public:
  // ---- fields, in this order, behind those of BX_INSTANCE

  /// The interned names, owned. Sorted byte by byte, each text once; but after a binary file was loaded
  /// exactly as the file lists them.
  DARRAY_NAME names;
  BX_GRID* grid;                            ///< the tile grid, owned; null until getgrid builds it
  NP_DEVICE* device;                        ///< borrowed, or null
  std::vector<ASS_TEMPLATE*> asstemplates;  ///< the instance templates, owned
  BASIC_ASS_TEMPLATE* basicasstemplate;     ///< the switch-matrix templates, owned; null until there are some
  bx_long numinst;                          ///< counted by count_inst
  bx_long numbasicass;                      ///< counted by count_basic_ass

  /// Process-wide, set by clients that manage names by their flags: when it is not 0, destroying an
  /// instance frees every name whose own nameborrowed flag (the instance's, the wire's) is clear,
  /// whether or not the instance belongs to a database. A string of a name table, or one that a
  /// database keeps, is never freed so, and no string twice. Names that there is no memory to remember meanwhile are
  /// not freed.
  static bx_long MPAR_FLOW;

  // ---- make

  /// An empty database without name, at an all-zero rectangle.
  BX_DB();

  /// An empty database with a name and a rectangle. Leaves numinst and numbasicass unset.
  BX_DB(const char* db_name, bx_long x1, bx_long y1, bx_long x2, bx_long y2);

  /// Forbidden: ends the process with "Copy constructor not allowed".
  BX_DB(const BX_DB& other);

  /// Shallow, as for BX_INSTANCE: the two share everything, and only one may be changed or destroyed.
  BX_DB& operator=(const BX_DB& other);

  /// Destroys the tree and everything the database owns; every pointer into it becomes invalid.
  ~BX_DB() override;

  // ---- compression

  /// Gives every instance of the tree a template reference: builds the switch-matrix templates, then finds or
  /// makes the instance templates. Names and wires stay as they are, templates are never taken away, and the two
  /// counters go on counting (the root is not counted). Ends the process as BX_INSTANCE::compress and
  /// BASIC_ASS_TEMPLATE::buildme_sm do. Throws std::bad_alloc; the counters are what they were then, and the database
  /// is not a compressed one until compress succeeds. O(n log n) in wires. Like any instance without database, a root
  /// whose top is null, which a text loadgrid leaves so, is left alone.
  void compress() override;

  /// Writes what stands behind the names of a compressed file: the templates, then the tree, of each instance its
  /// rectangle, its template reference and its children, through the virtual operation of children of derived
  /// classes. 0 when the database is not a compressed one, or such an operation gave 0.
  unsigned char writecompress(UT_PTRFILE* file) override;

  /// Reads that into this empty database; former templates are released. Names and wires are restore's to fill in,
  /// which load does. 0 when the file is cut off in a template or a rectangle; what was read stays.
  unsigned char readcompress(UT_PTRFILE* file) override;

  // ---- look up and change

  /// The grid of the tiles whose names begin with one of the prefixes, see BX_GRID; a null pointer ends the
  /// list. Built at the first call and the same from then on, whatever is asked for later and whatever has
  /// changed in the tree; a load drops it. Owned by the database. Null when memory runs out. Ends the process
  /// when there can be no grid: after loadgrid always, because no instance has wires. make_grid in qelmoext.h
  /// does not.
  BX_GRID* getgrid(const char** prefixes);

  /// The device. The database does not own it, and setdevice does not release the old one.
  NP_DEVICE* getdevice() const noexcept { return device; }
  void setdevice(NP_DEVICE* new_device) noexcept { device = new_device; }

  /// Adds 1 to numinst, to numbasicass. They wrap around.
  void count_inst() noexcept;
  void count_basic_ass() noexcept;

  /// Template i, the table, the switch-matrix templates. Nothing is checked: the template must exist.
  ASS_TEMPLATE* get_non_basic_ass_tmp(int i) const noexcept { return asstemplates[static_cast<std::size_t>(i)]; }
  std::vector<ASS_TEMPLATE*>& get_non_basic_ass_tmpvec() noexcept { return asstemplates; }
  BASIC_ASS_TEMPLATE& get_basic_ass_tmp() const noexcept { return *basicasstemplate; }

  // ---- files; results are 1 for success, 0 for failure

  /// Loads a database file of any form, told by its first line. 0 when the file cannot be opened, is no
  /// database file (the message manager says so, and the file stays open with ut_file), is damaged, or memory
  /// runs out. On failure after the first line what was read stays in the database, whose former content is
  /// gone, instances that were taken out of the tree by hand included; before that nothing changes, nor where memory
  /// runs out right behind it. A damaged text file may end the process, see BX_INSTANCE::readme, and so may a damaged
  /// compressed one, see BX_INSTANCE::restore; check_file in qelmoext.h tells beforehand.
  ///
  /// When the environment variable KRT_LARGE_DESIGN is present, convert_hierarchy follows.
  unsigned char load(const char* filename);

  /// Writes the database as text or binary. The file appears as a whole, replacing an old one, or not
  /// at all; 0 when it does not, be it that memory ran out. Whether the file can be loaded again is for
  /// dump_objections in qelmoext.h to say: names that are too long for the form are written all the same.
  unsigned char dump(const char* filename, bool ascii);

  /// Writes a database that was compressed in the compressed form, like dump: names, templates, and the tree
  /// without names and wires. 0 without touching the file when compress was never called, or failed the last time;
  /// changes to the tree since then are not in the templates. There is no text of this form: with ascii an empty file
  /// is written, standard output says that this is not implemented, and the result is 0. What does not come back, such
  /// as names behind a "$", and the name that a constructor gave the root, is for qelmoext.h to say.
  unsigned char dumpcompress(const char* filename, bool ascii);

  /// Fetches the device from np_devcache, keeps it, and loads the device's data file (".bxd").
  unsigned char load(PM_PIC_HDL picture);

  /// Dumps to the device's name with ".bxd", in the current directory.
  unsigned char dump(PM_PIC_HDL picture, bool ascii);

  /// The same four for grid files (".bxg"): the tree without wires. After a text grid file was loaded
  /// the tree stands alone: top is null everywhere, the root's included. KRT_LARGE_DESIGN has no effect.
  unsigned char loadgrid(const char* filename);
  unsigned char dumpgrid(const char* filename, bool ascii);
  unsigned char loadgrid(PM_PIC_HDL picture);
  unsigned char dumpgrid(PM_PIC_HDL picture, bool ascii);

 protected:
  /// Interns the text and returns the database's copy: one pointer per text. The caller keeps s. Null
  /// gives null.
  char* getcachedname(const char* s);

 private:
  friend class BX_INSTANCE;
  friend struct bx_access;

  void release_content();
  void release_templates();

  bx_name_store* store_;  // owned: the index of the name table, and strings kept until the end
};
