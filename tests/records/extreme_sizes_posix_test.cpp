// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Trees at the limits of what files hold, from being built to being destroyed, in a process with little memory and on
// a thread with little stack.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>

#include <filesystem>

#include "qelmocompress.h"
#include "qelmoindex.h"
#include "record_bytes.h"

namespace {

constexpr std::size_t little_stack = 256 << 10;

// Sanitizers keep memory of their own, and more of the stack.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool memory_is_bounded = false;
#else
constexpr bool memory_is_bounded = true;
#endif

/// Whether the work came to its end with true: in a process that may use so much memory, on a thread with that stack.
bool does_with_little(std::size_t memory, const std::function<bool()>& work) {
  struct job {
    const std::function<bool()>& work;
    bool good;
  };
  const int end = test::in_child([&] {
    if (memory_is_bounded) {
      const rlimit most{memory, memory};
      setrlimit(RLIMIT_AS, &most);
    }
    job todo{work, false};
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_t thread;
    const auto run = [](void* user) -> void* {
      auto* mine = static_cast<job*>(user);
      mine->good = mine->work();
      return nullptr;
    };
    if (pthread_attr_setstacksize(&attributes, little_stack) != 0) return 1;
    if (pthread_create(&thread, &attributes, run, &todo) != 0) return 2;
    pthread_join(thread, nullptr);
    return todo.good ? test::child_said_true : test::child_said_false;
  });
  EXPECT_EQ(end, test::child_said_true);
  return end == test::child_said_true;
}

/// Goes on when the condition holds; else says which does not, for the parent to see, and gives false.
#define HOLDS(condition)                                                   \
  do {                                                                     \
    if (!(condition)) {                                                    \
      std::fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition); \
      return false;                                                        \
    }                                                                      \
  } while (false)

/// Written, checked, loaded, compared and destroyed.
bool survives_form(const BX_DB& db, form as, content what) {
  HOLDS(qelmodb::dump_objections(db, as, what).empty());
  UT_MEMFILE written;
  HOLDS(qelmodb::dump(db, written, as, what));
  const qelmodb::check_report report = qelmodb::check_bytes(written.bytes(), what);
  HOLDS(report.sound());
  BX_DB back;
  UT_MEMFILE file{std::string(written.bytes())};
  HOLDS(qelmodb::load(back, file, what));
  HOLDS(qelmodb::same_tree(db, back, what));
  return true;
}

/// All that a tree goes through.
bool lives(BX_DB& db) {
  qelmodb::intern_root_name(db);
  const qelmodb::tree_size size = qelmodb::measure(db);
  HOLDS(qelmodb::tree_index(db).instances().size() == static_cast<std::size_t>(size.instances));
  for (const content what : {content::database, content::grid}) {
    for (const form as : {form::text, form::binary}) HOLDS(survives_form(db, as, what));
  }
  HOLDS(qelmodb::compression_objections(db).empty());
  db.compress();
  HOLDS(survives_form(db, form::compressed, content::database));
  db.convert_hierarchy();
  HOLDS(qelmodb::measure(db).wires == size.wires);
  return true;
}

BX_INSTANCE* put(BX_INSTANCE& parent, const std::string& name, bx_long x, bx_long y) {
  auto* inst = new BX_INSTANCE(name.c_str(), x, y, x + 1, y + 1);
  parent.addinstance(inst);
  return inst;
}

void wire_up(BX_INSTANCE& inst, const std::string& name) {
  const BX_WIRE wire(name.c_str(), inst.xmin, inst.ymin);
  inst.addwire(&wire);
}

constexpr std::size_t megabyte = std::size_t{1} << 20;

TEST(ExtremeSizes, AHundredThousandLevels) {
  EXPECT_TRUE(does_with_little(400 * megabyte, [] {
    BX_DB db("TOP", 0, 0, 1, 1);
    BX_INSTANCE* last = &db;
    for (int i = 0; i < 100000; ++i) last = put(*last, "LEVEL", 0, 0);
    wire_up(*last, "W");
    HOLDS(qelmodb::measure(db).depth == 100000);
    return lives(db);
  }));
}

TEST(ExtremeSizes, AMillionChildrenOfOneParent) {
  EXPECT_TRUE(does_with_little(1000 * megabyte, [] {
    BX_DB db("TOP", 0, 0, 1, 1000000);
    for (int i = 0; i < 1000000; ++i) put(db, "CHILD", 0, i);
    HOLDS(db.getnuminstances() == 1000000);
    HOLDS(db.getinstance(0, 999999, nullptr) == db.getinstance(999998));
    return lives(db);
  }));
}

TEST(ExtremeSizes, TwoHundredThousandNames) {
  EXPECT_TRUE(does_with_little(400 * megabyte, [] {
    BX_DB db("TOP", 0, 0, 1, 100000);
    {
      const qelmodb::name_batch batch(db);
      for (int i = 0; i < 100000; ++i) wire_up(*put(db, "I" + std::to_string(i), 0, i), "W" + std::to_string(i));
    }
    HOLDS(qelmodb::measure(db).names == 200001);
    HOLDS(!qelmodb::compression_objections(db, 1).empty());  // more templates than there can be
    for (const content what : {content::database, content::grid}) {
      for (const form as : {form::text, form::binary}) HOLDS(survives_form(db, as, what));
    }
    return true;
  }));
}

TEST(ExtremeSizes, AsManyWiresInOneInstanceAsATemplateHolds) {
  EXPECT_TRUE(does_with_little(400 * megabyte, [] {
    BX_DB db("TOP", 0, 0, 1, 100);
    const qelmodb::name_batch batch(db);
    for (int like = 0; like < 3; ++like) {
      BX_INSTANCE* inst = put(db, "RICH", 0, like);
      for (int i = 100000; i < 165535; ++i) wire_up(*inst, "W" + std::to_string(i));
      HOLDS(inst->getnumwires() == 65535);
    }
    return lives(db);
  }));
}

TEST(ExtremeSizes, AsManyTemplatesAsThereCanBe) {
  EXPECT_TRUE(does_with_little(400 * megabyte, [] {
    BX_DB db("TOP", 0, 0, 1, 32767);
    // With that of the root they are 32768.
    for (int i = 0; i < 32767; ++i) {
      BX_INSTANCE* inst = put(db, "T", 0, i);
      const BX_WIRE wire("W", i, 0);
      inst->addwire(&wire);
    }
    HOLDS(lives(db));
    HOLDS(db.asstemplates.size() == 32768);
    return true;
  }));
}

// Offsets and lengths beyond 32 bits: the database stands before a hole of five gigabytes.
TEST(ExtremeSizes, AFileOfFiveGigabytes) {
  constexpr std::uintmax_t five_gigabytes = std::uintmax_t{5} << 30;
  test::temporary_folder folder;
  const std::string name = folder.file("sparse.bxd");
  BX_DB db("TOP", 0, 0, 9, 9);
  for (int i = 0; i < 1000; ++i) wire_up(*put(db, "C", 0, i), "W");
  for (const bool ascii : {true, false}) {
    ASSERT_EQ(db.dump(name.c_str(), ascii), 1);
    std::error_code error;
    std::filesystem::resize_file(name, five_gigabytes, error);
    if (error) GTEST_SKIP() << "no file of five gigabytes here: " << error.message();
    const bool good = does_with_little(200 * megabyte, [&] {
      BX_DB back;
      HOLDS(back.load(name.c_str()) == 1);
      HOLDS(qelmodb::same_tree(db, back, content::database));
      qelmodb::check_options options;
      options.within.bytes = 1 << 20;
      const qelmodb::check_report report = qelmodb::check_file(name.c_str(), content::database, options);
      HOLDS(report.limit == std::string("bytes"));
      return true;
    });
    EXPECT_TRUE(good) << ascii;
  }
}

}  // namespace
