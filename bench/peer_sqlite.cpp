// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The device in an SQLite database: instances and wires as tables, names as numbers with an index on their texts, and
// the rectangles in an R*Tree.
#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>

#include "fresh_memory.h"
#include "questions.h"
#include "registry.h"

namespace {

constexpr char peer[] = "SQLite";

class statement {
 public:
  statement(sqlite3* db, const char* text) {
    if (sqlite3_prepare_v2(db, text, -1, &made_, nullptr) != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(db));
  }
  statement(const statement&) = delete;
  statement& operator=(const statement&) = delete;
  ~statement() { sqlite3_finalize(made_); }

  template <class... Values>
  void bind(Values... values) {
    sqlite3_reset(made_);
    int place = 0;
    (bind_one(++place, values), ...);
  }
  bool next_row() { return sqlite3_step(made_) == SQLITE_ROW; }
  void run() {
    if (sqlite3_step(made_) != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(sqlite3_db_handle(made_)));
  }
  std::int32_t number(int column) { return sqlite3_column_int(made_, column); }
  const char* text(int column) { return reinterpret_cast<const char*>(sqlite3_column_text(made_, column)); }

 private:
  void bind_one(int place, std::int64_t value) { sqlite3_bind_int64(made_, place, value); }
  void bind_one(int place, const std::string* value) {
    sqlite3_bind_text(made_, place, value->c_str(), static_cast<int>(value->size()), nullptr);
  }

  sqlite3_stmt* made_ = nullptr;
};

class database {
 public:
  explicit database(const std::string& file) {
    if (sqlite3_open(file.c_str(), &made_) != SQLITE_OK) throw std::runtime_error("cannot open " + file);
  }
  database(const database&) = delete;
  database& operator=(const database&) = delete;
  ~database() { sqlite3_close(made_); }

  void run(const char* text) {
    if (sqlite3_exec(made_, text, nullptr, nullptr, nullptr) != SQLITE_OK) {
      throw std::runtime_error(sqlite3_errmsg(made_));
    }
  }
  statement prepare(const char* text) { return {made_, text}; }

 private:
  sqlite3* made_ = nullptr;
};

// ---- making the file

constexpr char make_tables[] =
    "CREATE TABLE names(id INTEGER PRIMARY KEY, text TEXT UNIQUE);"
    "CREATE TABLE instances(id INTEGER PRIMARY KEY, parent INT, name INT, xmin INT, ymin INT, xmax INT, ymax INT);"
    "CREATE TABLE wires(instance INT, name INT, x INT, y INT, PRIMARY KEY(instance, name, x, y)) WITHOUT ROWID;"
    "CREATE VIRTUAL TABLE rectangles USING rtree_i32(id, xmin, xmax, ymin, ymax);";

void insert_names(database& db, const bench::flat_tree& flat) {
  statement insert = db.prepare("INSERT INTO names VALUES(?, ?)");
  for (std::size_t i = 0; i < flat.names.size(); ++i) {
    insert.bind(static_cast<std::int64_t>(i), &flat.names[i]);
    insert.run();
  }
}

void insert_instances(database& db, const bench::flat_tree& flat) {
  statement insert = db.prepare("INSERT INTO instances VALUES(?, ?, ?, ?, ?, ?, ?)");
  statement place = db.prepare("INSERT INTO rectangles VALUES(?, ?, ?, ?, ?)");
  for (std::size_t i = 0; i < flat.instances.size(); ++i) {
    const bench::flat_instance& inst = flat.instances[i];
    const auto id = static_cast<std::int64_t>(i);
    insert.bind(id, inst.parent, inst.name, inst.xmin, inst.ymin, inst.xmax, inst.ymax);
    insert.run();
    if (i == 0) continue;
    place.bind(id, inst.xmin, inst.xmax, inst.ymin, inst.ymax);
    place.run();
  }
}

void insert_wires(database& db, const bench::flat_tree& flat) {
  statement insert = db.prepare("INSERT INTO wires VALUES(?, ?, ?, ?)");
  for (std::size_t i = 0; i < flat.instances.size(); ++i) {
    const bench::flat_instance& inst = flat.instances[i];
    for (std::uint32_t w = inst.first_wire; w < inst.first_wire + inst.wires; ++w) {
      insert.bind(static_cast<std::int64_t>(i), flat.wires[w].name, flat.wires[w].x, flat.wires[w].y);
      insert.run();
    }
  }
}

void make_file(const std::string& file) {
  const bench::flat_tree& flat = bench::flat_device();
  database db(file);
  db.run("PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; PRAGMA cache_size=-262144");
  db.run(make_tables);
  db.run("BEGIN");
  insert_names(db, flat);
  insert_instances(db, flat);
  insert_wires(db, flat);
  db.run("COMMIT");
  db.run("ANALYZE");
}

const std::string& database_file() {
  static const std::string made = [] {
    const std::string file = bench::scratch_file("device.sqlite");
    make_file(file);
    return file;
  }();
  return made;
}

constexpr char reading[] = "PRAGMA mmap_size=2147418112; PRAGMA cache_size=-1048576; BEGIN";

database& kept_database() {
  static const std::unique_ptr<database> opened = [] {
    auto db = std::make_unique<database>(database_file());
    db->run(reading);
    return db;
  }();
  return *opened;
}

// ---- asking

void read_names(database& db, bench::flat_tree& read) {
  statement rows = db.prepare("SELECT text FROM names ORDER BY id");
  while (rows.next_row()) read.names.emplace_back(rows.text(0));
}

void read_instances(database& db, bench::flat_tree& read) {
  statement rows = db.prepare("SELECT name, xmin, ymin, xmax, ymax, parent FROM instances ORDER BY id");
  while (rows.next_row()) {
    read.instances.push_back({static_cast<std::uint32_t>(rows.number(0)), rows.number(1), rows.number(2),
                              rows.number(3), rows.number(4), static_cast<std::uint32_t>(rows.number(5)), 0, 0, 0});
  }
}

void read_wires(database& db, bench::flat_tree& read) {
  statement rows = db.prepare("SELECT instance, name, x, y FROM wires ORDER BY instance, name");
  while (rows.next_row()) {
    bench::flat_instance& inst = read.instances[static_cast<std::size_t>(rows.number(0))];
    if (inst.wires++ == 0) inst.first_wire = static_cast<std::uint32_t>(read.wires.size());
    read.wires.push_back({static_cast<std::uint32_t>(rows.number(1)), rows.number(2), rows.number(3)});
  }
}

bench::flat_tree read_all(const std::string& file) {
  bench::flat_tree read;
  database db(file);
  db.run(reading);
  read_names(db, read);
  read_instances(db, read);
  read_wires(db, read);
  return read;
}

bool is_device(const bench::flat_tree& read) {
  bench::tree_sums sums;
  for (const bench::flat_wire& wire : read.wires) sums.count(wire.x, wire.y);
  return sums == bench::expected_sums() && read.names == bench::flat_device().names;
}

void load(benchmark::State& state) {
  const std::string& file = database_file();
  bench::make_memory_fresh();
  for (auto _ : state) {
    std::optional<bench::flat_tree> read = read_all(file);
    state.PauseTiming();
    bench::require(is_device(*read), "not the library's device");
    read.reset();
    bench::make_memory_fresh();
    state.ResumeTiming();
  }
  bench::set_bytes(state, std::filesystem::file_size(file));
}

void wire_by_name(benchmark::State& state) {
  const bench::flat_tree& flat = bench::flat_device();
  const auto asked = bench::wire_questions(bench::few_questions);
  statement search = kept_database().prepare(
      "SELECT x, y FROM wires WHERE instance = ? AND name = (SELECT id FROM names WHERE text = ?)");
  std::int64_t sum = 0;
  for (auto _ : state) {
    sum = 0;
    for (const bench::wire_question& q : asked) {
      search.bind(std::int64_t{q.instance}, &flat.names[q.name]);
      if (search.next_row()) sum += std::int64_t{search.number(0)} + search.number(1);
    }
  }
  bench::require(sum == bench::expected_wire_answers(asked.size()), "not the library's answers");
  bench::set_items(state, static_cast<std::int64_t>(asked.size()));
}

void instances_at_point(benchmark::State& state) {
  const auto asked = bench::points(bench::few_points);
  statement search = kept_database().prepare(
      "SELECT id FROM rectangles WHERE xmin <= ?1 AND xmax >= ?1 AND ymin <= ?2 AND ymax >= ?2");
  const std::vector<BX_INSTANCE*>& instances = bench::flat_device().origins;
  bench::cover_sums sums;
  for (auto _ : state) {
    sums = {};
    for (const BX_POINT& point : asked) {
      search.bind(std::int64_t{point.x}, std::int64_t{point.y});
      while (search.next_row()) sums.count(instances[static_cast<std::size_t>(search.number(0))]);
    }
  }
  bench::require(sums == bench::expected_covers(asked.size()), "not the library's answers");
  bench::set_items(state, static_cast<std::int64_t>(asked.size()));
}

void add_all() {
  bench::add("binary_load", peer, load);
  bench::add("wire_by_name", peer, wire_by_name);
  bench::add("instances_at_point", peer, instances_at_point);
}

const bench::registrar registered(add_all);

}  // namespace
