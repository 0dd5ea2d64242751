// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What tools need around the classes: checking a file before it is loaded, files on any stream, and searches
// and comparisons over whole trees. Nothing here ends the process, whatever a file or a tree holds; memory
// running out throws std::bad_alloc where nothing else is said.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bx_walk.h"
#include "qelmodb.h"

namespace qelmodb {

/// The version of the library, such as "0.1.0".
BX_API const char* version() noexcept;

/// The two kinds of files: trees with wires (".bxd"), trees without (".bxg").
enum class content { database, grid };

/// The forms of a file, told by the letter behind "BX_DB:" in its first line.
enum class form { text, binary, compressed };

BX_API const char* to_string(content what) noexcept;
BX_API const char* to_string(form what) noexcept;

// ---- long work

/// How far long work has come.
struct progress {
  const char* step;    ///< "reading", "writing" or "checking"
  std::int64_t done;   ///< bytes of the file. While the tree of a compressed file is restored these stay all.
  std::int64_t whole;  ///< when all is done; 0 when that is not known, as of a file that is written
};

/// Called by the thread that works, at the first record and then between records, about once for each megabyte. False
/// cancels the work, which then ends as if the file were damaged at that place. Must not touch what is worked on, and
/// takes the place of a watcher that the stream has.
using progress_report = std::function<bool(const progress&)>;

struct work_options {
  progress_report report;  ///< may be empty
};

// ---- checking

/// How bad a fault is. error: loading would fail, end the process, give something else than the file says or go beyond
/// a limit. warning: it loads, but lookups can miss what it holds. note: worth knowing, nothing is wrong.
enum class severity { error, warning, note };

BX_API const char* to_string(severity level) noexcept;

/// What a file may hold at most. Counts in a file are never believed: storage is made for what its bytes justify. But a
/// compressed file of a megabyte can stand for a tree of terabytes, and any can be larger than a tool has room for.
struct limits {
  static constexpr std::int64_t none = INT64_MAX;

  /// 4 GiB, and 64 bytes for each byte of the file: more than any text or binary file needs.
  static constexpr std::int64_t in_proportion = -1;

  std::int64_t bytes = none;            ///< of the file itself; no more than one byte beyond is read
  std::int64_t instances = none;        ///< root included
  std::int64_t wires = none;            ///< of a compressed file those of the restored tree
  std::int64_t names = none;            ///< entries of the name table; text and grid files have none
  std::int64_t depth = none;            ///< of the deepest instance; the root has 0
  std::int64_t memory = in_proportion;  ///< bytes that the loaded tree takes; see check_report::memory
};

/// One fault of a file.
struct fault {
  severity level;
  std::int64_t offset;  ///< of the first byte concerned
  std::int64_t line;    ///< of that byte in a text file, from 1; 0 in a binary file

  /// Names from the root down to the place, joined by "/"; empty outside the tree. Of a path of more than 400
  /// characters the middle is left out as "...". Control characters show as \xNN.
  std::string path;

  std::string message;

  /// "line 12: ..." or "byte 345: ...", with the path in brackets.
  BX_API std::string text() const;
};

/// A part of a file.
struct file_section {
  const char* name;     ///< such as "name table"
  std::int64_t offset;  ///< of its first byte
  std::int64_t bytes;
};

struct check_options {
  /// Faults of one severity beyond this number are counted, but not described.
  std::size_t most_faults = 100;

  /// What goes beyond one of these is an error, at the record where that happens, and ends the check.
  limits within = {};

  /// May be empty. A check that was cancelled has an error that says so.
  progress_report report = {};

  /// Fills in check_report::different_names, which takes about a tenth longer.
  bool count_names = false;
};

/// What a check found.
struct check_report {
  form file_form = form::text;               ///< told by the first line; without a whole one there is no section either
  content file_content = content::database;  ///< what it was checked as
  bool is_other_content = false;             ///< not loadable as that, but as the other

  /// What a file that is no BX_DB file is known to be: "empty", "a PNG picture", "packed by gzip"; null when nothing is
  /// known about it, and for BX_DB files.
  const char* foreign_kind = nullptr;

  std::int64_t bytes = 0;
  std::int64_t instances = 0;        ///< root included
  std::int64_t wires = 0;            ///< of a compressed file those that its templates give to its instances
  std::int64_t names = 0;            ///< entries of the name table; 0 where the form has none
  std::int64_t different_names = 0;  ///< see check_options; texts that name instances or wires, as in tree_size; of a
                                     ///< compressed file as loading cuts those of its templates
  std::int64_t depth = 0;            ///< of the deepest instance; the root has 0
  std::int64_t dollar_wires = 0;     ///< wires whose name holds a "$", which loading replaces by the separator
  std::int64_t memory = 0;           ///< bytes of the loaded tree, about; names of text files and templates left out
  const char* limit = nullptr;       ///< the name of that in limits at which the check ended
  std::int64_t errors = 0;
  std::int64_t warnings = 0;
  std::int64_t notes = 0;
  std::vector<fault> faults;           ///< in the order of the file
  std::vector<file_section> sections;  ///< as far as the file could be made sense of, in its order, without gaps

  /// Loading gives true and exactly what the file says.
  bool loadable() const noexcept { return errors == 0; }

  /// Loadable, and all orders that lookups rely on hold.
  bool sound() const noexcept { return errors == 0 && warnings == 0; }
};

/// Checks the bytes of a whole file. Time and memory are proportional to their number, the memory at most
/// about 16 bytes for each of them. A damaged record ends the check, as nothing behind it can be told
/// from it; until then every fault is reported.
BX_API check_report check_bytes(std::string_view bytes, content what, const check_options& options = {});

/// Reads a file through ut_file and checks it. A file that cannot be read is an error at offset 0.
BX_API check_report check_file(const char* filename, content what, const check_options& options = {});

/// Reads a file through ut_file, checks it, and loads it when nothing is against that: the way to take in what comes
/// from elsewhere. The file is in memory as a whole meanwhile. False when it is not loadable, which leaves db as it
/// was; also when memory runs out while loading, or when that was cancelled: db then holds what was read so far.
/// KRT_LARGE_DESIGN is not looked at.
BX_API bool load_checked(BX_DB& db, const char* filename, content what, check_report& report,
                         const check_options& options = {});

/// What the bytes of a file hold; none when they do not tell, as those of a file that is no BX_DB file or is cut off
/// too early. A file that could be both is a database.
BX_API std::optional<content> find_content(std::string_view bytes);

/// The same, and database when the bytes do not tell.
BX_API content detect_content(std::string_view bytes);

// ---- files on streams

/// Loads what the stream holds, first line included, as BX_DB::load and loadgrid do; KRT_LARGE_DESIGN is
/// not looked at. A damaged text file may end the process: check the bytes first. False also when memory
/// runs out, or when it was cancelled: db then holds what was read so far, as after any load that fails.
BX_API bool load(BX_DB& db, UT_PTRFILE& file, content what, const work_options& options = {});

/// Writes the database to the stream, as BX_DB::dump, dumpgrid and dumpcompress do; the caller commits the stream.
/// False when the stream failed, or when it was cancelled, which fails the stream. The compressed form is one of
/// databases that were compressed: false for any other, for one whose last compress failed, and for grids. Throws
/// std::bad_alloc; the stream is then cut off.
BX_API bool dump(const BX_DB& db, UT_PTRFILE& file, form as, content what, const work_options& options = {});

/// Something that a file of a form could not hold.
struct objection {
  std::string path;    ///< names from the root down; a long one is cut as in found_instance
  std::string reason;  ///< such as "name of 120 characters; text files hold 99"
};

/// What would not come back from a file of this form: names that are too long, hold a double quote (in
/// text), are missing, or are no strings of the name table (in binary and compressed database files), and what
/// qelmocompress.h calls losses (in compressed ones). Empty when everything would. Names count as they stand: see
/// BX_INSTANCE::setseparator for what reading does to a "$". At most most objections are described; the rest is left
/// out.
BX_API std::vector<objection> dump_objections(const BX_DB& db, form as, content what, std::size_t most = 100);

// ---- building large trees

/// Makes adding many new names cheap. While an object of this class lives, names that are new to the database are
/// appended to db.names out of order, and when the last one goes the table is sorted once. Without it each new name
/// moves those behind it: some 20 microseconds in a table of 200 thousand. Look at db.names, and dump, only when none
/// lives. Objects may nest; the database must outlive them.
class BX_API name_batch {
 public:
  explicit name_batch(BX_DB& db) noexcept;
  name_batch(const name_batch&) = delete;
  name_batch& operator=(const name_batch&) = delete;
  ~name_batch();

 private:
  BX_DB& db_;
};

/// To be called by a client that has written the left edge (xmin) of an instance which has a parent, or has put
/// children into a list of instances by hand, before it adds further instances to the parent. BX_INSTANCE::addinstance
/// remembers that a long list of children is in position order, so that it need not look at each child; what the
/// library's own operations change, it knows of. Children that were taken out, which leaves null, are no reason to call
/// this. O(1); the next addinstance to each long list looks through that list once.
BX_API void child_order_changed() noexcept;

// ---- searching and measuring whole trees

/// An instance and the names that lead to it.
struct found_instance {
  BX_INSTANCE* inst;

  /// Names from the root down to the instance, joined by "/". Of a long path the root and the last 400 characters are
  /// kept, and "..." stands for the rest, because a tree can be as deep as it has instances; path_of gives the whole.
  std::string path;
};

/// A wire, its instance and the names that lead to that.
struct found_wire {
  BX_WIRE* wire;
  BX_INSTANCE* inst;
  std::string path;  ///< the same, down to the instance
};

/// All instances of this name in the subtree, root included, in the order of bx_walk. O(n).
BX_API std::vector<found_instance> find_instances(const BX_INSTANCE& root, const char* name);

/// All wires of this name in the subtree, in the order of bx_walk, duplicates included. O(n). Also
/// right where an instance's wires are out of order.
BX_API std::vector<found_wire> find_wires(const BX_INSTANCE& root, const char* name);

/// All instances of the subtree whose rectangle covers (x, y), edges included, in the order of bx_walk,
/// whether or not their parents cover it. O(n).
BX_API std::vector<found_instance> instances_at(const BX_INSTANCE& root, bx_long x, bx_long y);

/// The names from root down to the instance, joined by "/"; empty when it is not in the subtree. O(n).
BX_API std::string path_of(const BX_INSTANCE& root, const BX_INSTANCE& inst);

struct tree_size {
  std::int64_t instances = 0;  ///< root included
  std::int64_t wires = 0;
  std::int64_t names = 0;      ///< distinct texts of instance and wire names
  std::int64_t depth = 0;      ///< of the deepest instance; the root has 0
  std::int64_t basic_ass = 0;  ///< instances named "BASIC_ASS"
  std::int64_t basic_ass_wires = 0;
  UT_EXTREMA box;  ///< covers all rectangles
};

BX_API tree_size measure(const BX_INSTANCE& root);

/// Whether both trees have the same names, rectangles, wires and children in the same order; wires are left
/// out of a grid. Missing names equal "".
BX_API bool same_tree(const BX_INSTANCE& a, const BX_INSTANCE& b, content what);

// ---- grids

/// What makes an instance without children a tile of a grid, beside its name.
enum class tiles { with_wires, with_or_without_wires };

/// A grid as BX_GRID's constructor builds it, with the database's device where one is needed. Where that would end
/// the process the result is null and why says what is the matter. The caller owns the grid; the lists of its cells
/// are kept by the database until it is destroyed. Databases from grid files need tiles::with_or_without_wires.
BX_API std::unique_ptr<BX_GRID> make_grid(BX_DB& db, const char* const* prefixes, tiles which, std::string& why);

/// A device made up from where the tiles stand: its rows begin at their lower edges, its columns at their left edges.
/// With it a grid can be made of tiles that leave places free, when no description of the real device is at hand.
/// Null, and why, when there is no tile, or more rows or columns than a device can have.
BX_API std::unique_ptr<NP_TABLEDEVICE> device_of_tiles(BX_DB& db, const char* const* prefixes, tiles which,
                                                       std::string& why);

}  // namespace qelmodb
