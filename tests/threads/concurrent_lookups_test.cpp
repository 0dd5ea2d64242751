// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Lookups of every kind by eight threads at once, on a database that nothing was asked of before. The answers are those
// that one thread gets from a database like it.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <thread>

#include "builders.h"
#include "qelmocompress.h"
#include "qelmoindex.h"
#include "qelmotmplt.h"

namespace {

constexpr bx_long columns = 12;
constexpr bx_long rows = 9;
constexpr bx_long pitch = 10;
constexpr int matrix_wires = 20;

void add_wire_to(BX_INSTANCE& inst, const std::string& name, bx_long x, bx_long y) {
  const BX_WIRE wire(name.c_str(), x, y);
  inst.addwire(&wire);
}

/// A lattice of tiles, and beside it one of blocks with a switch matrix in each.
void fill_device(BX_DB& db) {
  const qelmodb::name_batch batch(db);
  for (bx_long c = 0; c < columns; ++c) {
    for (bx_long r = 0; r < rows; ++r) {
      const bx_long x = pitch * c;
      const bx_long y = pitch * r;
      auto* tile = new BX_INSTANCE(("TILE_" + std::to_string((c + r) % 5)).c_str(), x, y, x + 9, y + 9);
      for (int w = 0; w < 12; ++w) add_wire_to(*tile, "W" + std::to_string(w % 10) + "$" + std::to_string(w), x + w, y);
      db.addinstance(tile);
      auto* block = new BX_INSTANCE("BLOCK", x, y + 1000, x + 9, y + 1009);
      auto* matrix = new BX_INSTANCE("BASIC_ASS", x, y + 1000, x + 5, y + 1005);
      for (int w = 0; w < matrix_wires; ++w) {
        add_wire_to(*matrix, "M" + std::to_string(w), x + (w % 3 == 0 ? pitch : w % 4), y + 1000 + w % 7);
      }
      block->addinstance(matrix);
      db.addinstance(block);
    }
  }
}

/// A finished database, with what is made from it to be asked.
struct device {
  device() {
    fill_device(db);
    qelmodb::intern_root_name(db);
    db.compress();
    std::string why;
    static const char* const prefixes[] = {"TILE", nullptr};
    grid = qelmodb::make_grid(db, prefixes, qelmodb::tiles::with_wires, why);
    index = std::make_unique<qelmodb::tree_index>(db);
  }

  BX_DB db{"CHIP", 0, 0, pitch* columns, 2000};
  std::unique_ptr<BX_GRID> grid;
  std::unique_ptr<qelmodb::tree_index> index;
};

std::string text_of(const BX_WIRE* wire) {
  if (wire == nullptr) return "no wire";
  return std::string(wire->name) + " " + std::to_string(wire->nodex) + " " + std::to_string(wire->nodey);
}

std::string text_of(const BX_INSTANCE* inst) {
  if (inst == nullptr) return "no instance";
  return std::string(inst->name) + " " + std::to_string(inst->xmin) + " " + std::to_string(inst->ymin);
}

std::string text_of(BX_POINT point) { return std::to_string(point.x) + " " + std::to_string(point.y); }

template <class Found>
std::string paths_of(const std::vector<Found>& found) {
  std::string text;
  for (const Found& each : found) text += each.path + ";";
  return text;
}

/// What a question asks for; each takes from it what it needs.
struct asked {
  bx_long x, y;
  std::string wire;
  bx_long column, row;
  bx_long number;  // of a wire of a matrix
};

asked any_question(std::mt19937& random) {
  const auto below = [&](bx_long limit) { return static_cast<bx_long>(random() % static_cast<unsigned>(limit)); };
  const auto text_below = [&](bx_long limit) { return std::to_string(below(limit)); };
  asked a;
  a.x = below(pitch * columns + 5);
  a.y = below(2) * 1000 + below(pitch * rows + 5);
  a.wire = below(2) == 0 ? "W" + text_below(12) + "$" + text_below(12) : "M" + text_below(matrix_wires);
  a.column = below(columns);
  a.row = below(rows);
  a.number = below(matrix_wires);
  return a;
}

BX_INSTANCE& matrix_at(device& d, const asked& a) {
  BX_INSTANCE* inst = nullptr;
  for (const qelmodb::found_instance& found : qelmodb::instances_at(d.db, pitch * a.column, 1000 + pitch * a.row)) {
    if (found.inst->is_basic_ass() != 0) inst = found.inst;
  }
  return *inst;
}

std::string every_nth_tile(const BX_DB& db, bx_long n) {
  BX_TILEITERATOR tiles(&db);
  std::string text;
  bx_long i = 0;
  while (const BX_INSTANCE* tile = tiles.getnext()) text += i++ % n == 0 ? text_of(tile) : "";
  return text;
}

std::string answers_of_index(const device& d, const asked& a) {
  std::vector<BX_INSTANCE*> instances;
  std::vector<qelmodb::placed_wire> wires;
  d.index->instances_at(a.x, a.y, instances);
  d.index->wires_at(a.x, a.y, wires);
  std::string text = std::to_string(wires.size());
  for (const BX_INSTANCE* inst : instances) {
    text += text_of(inst) + d.index->path(*inst) + text_of(d.index->wire(*inst, a.wire.c_str()));
    text += std::to_string(d.index->depth_of(*inst)) + text_of(d.index->next(*inst)) + text_of(d.index->parent(*inst));
  }
  d.index->instances_meeting(a.x, a.y, a.x + 15, a.y - 15, instances);
  return text + std::to_string(instances.size()) + std::to_string(d.index->instances_named("TILE_1").size());
}

std::string answers_of_template(device& d, const asked& a) {
  const BX_INSTANCE& inst = *d.db.getinstance(a.x, a.y, nullptr);
  const ASS_TEMPLATE& layout = *d.db.asstemplates[static_cast<std::size_t>(inst.tmpltidx())];
  std::string text = std::to_string(layout.getnumwires());
  for (int i = 0; i < layout.getnumwires(); ++i) text += text_of(&layout.getwire(i));
  return text;
}

using answer = std::string (*)(device&, const asked&);

// Every way to ask a finished database.
constexpr answer answers[] = {
    // of a tree
    [](device& d, const asked& a) { return text_of(d.db.getwire(a.x, a.y, a.wire.c_str())); },
    [](device& d, const asked& a) { return text_of(d.db.getwire_tr(a.x, a.y, a.wire.substr(0, 2).c_str())); },
    [](device& d, const asked& a) { return std::to_string(d.db.getinstanceid(a.x, a.y, -1)); },
    [](device& d, const asked& a) { return text_of(d.db.getinstance(a.x, a.y, nullptr)); },
    [](device& d, const asked& a) {
      BX_INSTANCE* first = d.db.getinstance(("TILE_" + std::to_string(a.number)).c_str(), nullptr);
      return text_of(first) + (first != nullptr ? text_of(d.db.getinstance(first->name, first)) : "");
    },
    [](device& d, const asked& a) {
      const BX_INSTANCE& inst = *d.db.getinstance(a.column);
      return std::to_string(inst.getwireid(a.wire.c_str(), -1)) + std::to_string(inst.getwireid_tr("W3", -1)) +
             text_of(inst.getwire("W3$3", nullptr)) + text_of(inst.getwire(a.row));
    },
    // of its tiles
    [](device& d, const asked& a) {
      const auto row = static_cast<short>(a.row);
      const auto column = static_cast<short>(a.column);
      return text_of(d.grid->getinstance(row, column)) + std::to_string(d.grid->getinstances(row, column)->getcount()) +
             std::to_string(d.grid->isvalid(column, row)) + std::to_string(d.grid->getnumrows());
    },
    [](device& d, const asked& a) { return every_nth_tile(d.db, 1 + a.number); },
    // of the whole
    [](device& d, const asked& a) { return paths_of(qelmodb::find_wires(d.db, a.wire.c_str())); },
    [](device& d, const asked& a) { return paths_of(qelmodb::instances_at(d.db, a.x, a.y)); },
    [](device& d, const asked& a) {
      return paths_of(qelmodb::find_instances(d.db, ("TILE_" + std::to_string(a.number)).c_str()));
    },
    [](device& d, const asked& a) { return qelmodb::path_of(d.db, matrix_at(d, a)); },
    [](device& d, const asked& /*a*/) {
      const qelmodb::tree_size size = qelmodb::measure(d.db);
      return std::to_string(size.wires) + " " + std::to_string(size.names);
    },
    [](device& d, const asked& /*a*/) {
      const auto as = qelmodb::form::text;
      return std::to_string(qelmodb::dump_objections(d.db, as, qelmodb::content::database).size()) +
             std::to_string(qelmodb::find_compression_losses(d.db).total());
    },
    // of the index
    [](device& d, const asked& a) { return answers_of_index(d, a); },
    // of the templates, the corners of whose matrices are tabulated when the first wire is restored
    [](device& d, const asked& a) {
      BASIC_ASS_TEMPLATE& set = *d.db.basicasstemplate;
      return text_of(set.restore_wire_sm(a.column, a.row, 0, a.number)) + set.getwirename_sm(0, a.number);
    },
    [](device& d, const asked& a) {
      const BX_POINT corner(pitch * a.column, 1000 + pitch * a.row);
      return text_of(d.db.basicasstemplate->restore_wire(corner, 0, a.number));
    },
    [](device& d, const asked& a) {
      BASIC_ASS_TEMPLATE& set = *d.db.basicasstemplate;
      return std::to_string(set.getcol(a.x)) + " " + std::to_string(set.getrow(a.y)) + " " +
             std::to_string(set.get_wire_list_idx_sm(&matrix_at(d, a)));
    },
    [](device& d, const asked& a) {
      return answers_of_template(d, {pitch * a.column, pitch * a.row, "", 0, 0, 0});
    },
};

struct question {
  asked what;
  answer by;
};

std::vector<question> all_questions() {
  constexpr int of_each_kind = 40;
  std::mt19937 random(4711);
  std::vector<question> questions;
  for (int i = 0; i < of_each_kind; ++i) {
    for (const answer by : answers) questions.push_back({any_question(random), by});
  }
  return questions;
}

/// Asks all questions, in an order of the thread's own, and counts the answers that are not as expected.
int wrong_answers(device& d, const std::vector<question>& questions, const std::vector<std::string>& expected,
                  unsigned thread) {
  std::vector<std::size_t> order(questions.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::shuffle(order.begin(), order.end(), std::mt19937(thread));
  int wrong = 0;
  for (const std::size_t i : order) wrong += questions[i].by(d, questions[i].what) != expected[i] ? 1 : 0;
  return wrong;
}

/// Starts eight threads as nearly at once as can be.
template <class Work>
void run_on_eight_threads(Work work) {
  constexpr unsigned count = 8;
  std::atomic<unsigned> ready{0};
  std::vector<std::thread> threads;
  for (unsigned number = 0; number < count; ++number) {
    threads.emplace_back([&, number] {
      ++ready;
      while (ready != count) std::this_thread::yield();
      work(number);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(ConcurrentLookups, OfEveryKindGiveWhatOneThreadGets) {
  const std::vector<question> questions = all_questions();
  device asked_by_one;
  ASSERT_NE(asked_by_one.grid, nullptr);
  std::vector<std::string> expected;
  for (const question& q : questions) expected.push_back(q.by(asked_by_one, q.what));
  EXPECT_GT(std::count_if(expected.begin(), expected.end(), [](const auto& text) { return text.size() > 8; }), 300);
  for (int round = 0; round < 3; ++round) {
    device fresh;
    std::atomic<int> wrong{0};
    run_on_eight_threads([&](unsigned number) { wrong += wrong_answers(fresh, questions, expected, number); });
    EXPECT_EQ(wrong, 0);
  }
}

// The table of corners is made by whoever comes first: so often that some come at the same time.
TEST(ConcurrentLookups, RestoreFirstWiresFromOneTable) {
  device d;
  for (int round = 0; round < 200; ++round) {
    d.db.basicasstemplate->buildme_sm(&d.db);
    std::atomic<int> wrong{0};
    run_on_eight_threads([&](unsigned number) {
      const auto column = static_cast<int>(number);
      const BX_POINT node = d.db.basicasstemplate->restore_wire_sm(column, 0, 0, 1);
      wrong += node.x < pitch * column || node.x > pitch * (column + 1) ? 1 : 0;
    });
    ASSERT_EQ(wrong, 0);
  }
}

TEST(ConcurrentChecks, OfOneFileAndOfOthersGiveTheSameReports) {
  device d;
  std::vector<std::string> files;
  for (const auto as : {qelmodb::form::text, qelmodb::form::binary, qelmodb::form::compressed}) {
    UT_MEMFILE file;
    ASSERT_TRUE(qelmodb::dump(d.db, file, as, qelmodb::content::database));
    files.push_back(file.bytes());
    files.push_back(file.bytes().substr(0, file.bytes().size() / 2));
  }
  const auto report = [](const std::string& bytes) {
    const qelmodb::check_report found = qelmodb::check_bytes(bytes, qelmodb::content::database);
    std::string text = std::to_string(found.instances) + " " + std::to_string(found.wires);
    for (const qelmodb::fault& fault : found.faults) text += "\n" + fault.text();
    return text;
  };
  std::vector<std::string> expected;
  for (const std::string& file : files) expected.push_back(report(file));
  EXPECT_NE(expected[1].find('\n'), std::string::npos) << "half a file has a fault";
  std::atomic<int> wrong{0};
  run_on_eight_threads([&](unsigned number) {
    for (std::size_t i = 0; i < 2 * files.size(); ++i) {
      const std::size_t which = (i + number) % files.size();
      wrong += report(files[which]) != expected[which] ? 1 : 0;
    }
  });
  EXPECT_EQ(wrong, 0);
}

}  // namespace
