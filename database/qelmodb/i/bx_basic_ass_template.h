// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <vector>

#include "bx_wire_template.h"

class BX_DB;
class BX_INSTANCE;

/// The template set of all switch matrices (instances named "BASIC_ASS") of a database: the grid of columns
/// and rows on which they stand, their distinct lists of wire names, and for each wire name where its node
/// lies at every place of the grid. From column, row, wire list and position in the list the node of any
/// wire is restored.
///
/// A column is a distinct xmin, a row a distinct ymin of a switch matrix, both numbered upwards from 0. The
/// set belongs to a database and borrows its strings. Building changes the set and must not run beside
/// anything else, not even a build for another database; all other operations may run concurrently.
class BX_API BASIC_ASS_TEMPLATE {
 public:
  // ---- fields, in this order; the arrays are owned, from new[]

  char* name = nullptr;                        ///< "BASIC_ASS" once built; borrowed
  std::uint16_t num_wirelist = 0;              ///< distinct wire lists
  std::uint16_t* wirelist_numwires = nullptr;  ///< number of wires of each list
  std::uint16_t** wirelists = nullptr;         ///< for each list one index into wire_templates per wire, in wire order
  std::uint16_t num_wire_template = 0;         ///< wire templates, one for each wire of the largest switch matrix
  WIRE_TEMPLATE_SM* wire_templates = nullptr;  ///< as many
  std::map<bx_long, std::uint16_t> colmap;     ///< column of each xmin
  std::map<bx_long, std::uint16_t> rowmap;     ///< row of each ymin

  /// The corner of each place, by column and row: one array for each column, of one point for each row, all from new[].
  /// The set frees with delete[] what is here when it is destroyed or read anew. Null until the first restore makes it.
  /// Lookups use what it says, so a client may change points, or put another table in its place, of as many columns and
  /// rows as colmap and rowmap have then. Whoever takes a table out owns it; set to null, it is made anew by the next
  /// restore. A later build leaves the table as it is: the columns and rows which it adds have NO_POINT for a corner.
  /// For grids of more than most_ins_points places no table is made, because a small file can ask for as many.
  BX_POINT** ins_points = nullptr;

  /// The largest table of corners that is made.
  static constexpr std::size_t most_ins_points = std::size_t{1} << 22;

  // ---- make

  BASIC_ASS_TEMPLATE() noexcept;

  /// A copy shares all arrays, and only one of the two may be destroyed. Assignment releases nothing.
  BASIC_ASS_TEMPLATE(const BASIC_ASS_TEMPLATE& other);
  BASIC_ASS_TEMPLATE& operator=(const BASIC_ASS_TEMPLATE& other);

  ~BASIC_ASS_TEMPLATE();

  /// Takes in all switch matrices of the database. Columns, rows and wire lists of an earlier build are kept,
  /// the latter with their numbers; wire templates are made anew, one for each wire of the switch matrix that
  /// has most. Without any switch matrix nothing changes. Ends the process through the message manager when a
  /// switch matrix has a wire that the one with most wires lacks. Throws std::bad_alloc; the set is then what it was,
  /// but for wire lists that nobody refers to.
  void buildme_sm(BX_DB* db);

  // ---- records of a compressed file

  /// Writes the set, without corners. Of more than 65535 columns or rows the rest is left out. Always 1.
  unsigned char writeme_sm(UT_PTRFILE* file) const;

  /// Reads a set. Former lists, wire templates and corners are released; columns and rows that the record does
  /// not mention stay, so read into a new set. Always 1: what is cut off reads as zeros or is missing, and the
  /// stream remembers it. Nothing that the record says is checked; see check_file in qelmoext.h.
  unsigned char readme_sm(UT_PTRFILE* file);

  // ---- look up

  char* getname() const noexcept { return name; }

  /// Number of wires of list k; k is not checked.
  std::uint16_t getnumwires(int k) const noexcept { return wirelist_numwires[k]; }

  /// Name of wire j of list k; neither is checked.
  char* getwirename_sm(int k, int j) const noexcept { return wire_templates[wirelists[k][j]].name; }

  /// The first wire list with exactly the names of this switch matrix, in their order. NO_INDEX for an instance
  /// of another name. Ends the process through the message manager when there is none.
  std::uint16_t get_wire_list_idx_sm(BX_INSTANCE* inst) const;

  /// The column of an xmin, the row of a ymin, or NO_INDEX.
  std::uint16_t getcol(bx_long x) const noexcept;
  std::uint16_t getrow(bx_long y) const noexcept;

  /// The node of wire j of list k in the switch matrix whose lower left corner is at pos. k and j are not checked.
  /// Ends the process through the message manager when no column or no row begins there.
  BX_POINT restore_wire(BX_POINT pos, int k, int j);

  /// The same for column c and row r. Ends the process likewise when these are beyond what the template covers.
  /// At a place without this wire the result has no meaning.
  BX_POINT restore_wire_sm(int c, int r, int k, int j);

 private:
  friend class bx_matrix_builder;
  friend class bx_restorer;
  friend class bx_template_reader;

  class line_coordinates;

  // The size of a table, which the maps need not have any more: builds add lines to them, and clients may change them.
  // Another table can be made at the address of one that was freed, but hardly with its first and last column where
  // they were.
  struct measured_table {
    BX_POINT** table = nullptr;
    BX_POINT* first_column = nullptr;
    BX_POINT* last_column = nullptr;
    std::size_t columns = 0;
    std::size_t rows = 0;
    const measured_table* previous = nullptr;  // owned; a lookup on another thread may be reading it

    bool is(BX_POINT** other) const noexcept {
      return other == table && columns != 0 && other[0] == first_column && other[columns - 1] == last_column;
    }
  };

  void release_wire_lists() noexcept;
  void release_corners() noexcept;
  void init_ins_points();
  measured_table measured(BX_POINT** table) const noexcept;
  void measure_table();
  void remember(std::unique_ptr<measured_table> size) noexcept;
  const line_coordinates& known_coordinates();
  BX_POINT corner_at(std::uint16_t column, std::uint16_t row);

  // The last table that the library made, or found in place when a build added lines; owned.
  std::atomic<const measured_table*> measured_ = nullptr;
  // In place of a table that would be too large; owned. Made once, by whichever thread needs it first.
  std::atomic<line_coordinates*> coordinates_ = nullptr;

  std::vector<WIRE_TEMPLATE_SM*> former_templates_;  // owned; of earlier builds, as clients may hold some
};
