// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Loading, dumping and checking while any of their allocations fails.
#include <gtest/gtest.h>

#include "failing_memory.h"
#include "qelmocompress.h"
#include "replaced_file.h"

namespace {

using qelmodb::content;
using qelmodb::form;
using test::memory_end;
using test::memory_trials;

/// What is written and read back.
struct file_form {
  const char* name;
  form as;
  content what;
};

constexpr file_form file_forms[] = {{"text", form::text, content::database},
                                    {"binary", form::binary, content::database},
                                    {"compressed", form::compressed, content::database},
                                    {"grid_text", form::text, content::grid},
                                    {"grid_binary", form::binary, content::grid}};

/// Two matrices beside the rich database, and a child list that is broken up where that is asked for.
void fill_for_all_forms(BX_DB& db) {
  test::fill_rich_database(db);
  for (int i = 0; i < 45; ++i) db.addinstance(new BX_INSTANCE(i % 2 == 0 ? "ROW" : "OTHER", 20, i, 24, i + 1));
  qelmodb::intern_root_name(db);
  db.compress();
}

/// Takes the place of the file manager while it lives: one that has no room for any stream yet.
class new_file_manager {
 public:
  new_file_manager() { ut_file = &manager_; }
  new_file_manager(const new_file_manager&) = delete;
  new_file_manager& operator=(const new_file_manager&) = delete;
  ~new_file_manager() { ut_file = old_; }

 private:
  UT_FILEMANAGER* old_ = ut_file;
  UT_FILEMANAGER manager_;
};

class LittleMemory : public testing::TestWithParam<int> {
 protected:
  LittleMemory() {
    fill_for_all_forms(source_);
    EXPECT_TRUE(dump(source_, file_));
    bytes_ = test::read_file(file_);
    descriptors_ = test::open_descriptors();
  }

  bool dump(BX_DB& db, const std::string& file) const {
    if (form_.what == content::grid) return db.dumpgrid(file.c_str(), form_.as == form::text) != 0;
    if (form_.as == form::compressed) return db.dumpcompress(file.c_str(), false) != 0;
    return db.dump(file.c_str(), form_.as == form::text) != 0;
  }
  bool load(BX_DB& db, const std::string& file) const {
    return (form_.what == content::grid ? db.loadgrid(file.c_str()) : db.load(file.c_str())) != 0;
  }

  /// What a load gives that nothing disturbs.
  std::string as_loaded() const {
    BX_DB db;
    EXPECT_TRUE(load(db, file_));
    return test::text_of(db);
  }

  void expect_no_open_files() const {
    EXPECT_EQ(ut_file->getcount(), 0);
    EXPECT_EQ(test::open_descriptors(), descriptors_);
  }

  test::separator keeps_{'$'};
  test::temporary_folder folder_;
  const file_form form_ = file_forms[GetParam()];
  const std::string file_ = folder_.file("in");
  BX_DB source_{"TOP", 0, 0, 99, 99};
  std::string bytes_;
  int descriptors_ = 0;
};

TEST_P(LittleMemory, LoadThatRunsOutOfItIsFalse) {
  const std::string whole = as_loaded();
  memory_trials trials(30);
  while (trials.next()) {
    const new_file_manager files;
    BX_DB db("OLD", 0, 0, 1, 1);
    db.addinstance(new BX_INSTANCE("OLD", 0, 0, 1, 1));
    const memory_end end = trials.run([&] { return load(db, file_); });
    ASSERT_NE(end, memory_end::threw);
    if (end == memory_end::gave_true) {
      EXPECT_EQ(test::text_of(db), whole);
    }
    expect_no_open_files();
    // What there is now can be looked at, written, and replaced.
    qelmodb::measure(db);
    db.getwire(0, 0, "CLK");
    test::dumped(db, form::binary);
    db.addinstance(new BX_INSTANCE("LATER", 7, 0, 9, 9));
    ASSERT_TRUE(load(db, file_));
    ASSERT_EQ(test::text_of(db), whole);
  }
  RecordProperty("failures", static_cast<int>(trials.failures()));
  RecordProperty("page_failures", static_cast<int>(trials.page_failures()));
  // Trees of databases lie in pages of their own, of which a failure need not end the load.
  EXPECT_GE(trials.page_failures(), form_.what == content::database ? 6 : 0);
}

TEST_P(LittleMemory, LoadFromAStreamThatRunsOutOfItIsFalse) {
  const std::string whole = as_loaded();
  memory_trials trials(30);
  while (trials.next()) {
    const new_file_manager files;
    BX_DB db;
    UT_MEMFILE file(bytes_.data(), bytes_.size());
    const memory_end end = trials.run([&] { return qelmodb::load(db, file, form_.what); });
    ASSERT_NE(end, memory_end::threw);
    if (end == memory_end::gave_true) {
      EXPECT_EQ(test::text_of(db), whole);
    }
  }
  RecordProperty("failures", static_cast<int>(trials.failures()));
}

TEST_P(LittleMemory, LoadOfALargeDesignThatRunsOutOfItIsFalse) {
  const test::environment large("KRT_LARGE_DESIGN", "1");
  const std::string whole = as_loaded();
  memory_trials trials(30);
  while (trials.next()) {
    const new_file_manager files;
    BX_DB db;
    const memory_end end = trials.run([&] { return load(db, file_); });
    ASSERT_NE(end, memory_end::threw);
    if (end == memory_end::gave_true) {
      EXPECT_EQ(test::text_of(db), whole);
    }
    expect_no_open_files();
    db.addinstance(new BX_INSTANCE("LATER", 7, 0, 9, 9));
  }
  RecordProperty("failures", static_cast<int>(trials.failures()));
}

TEST_P(LittleMemory, DumpThatRunsOutOfItIsFalseAndTheOldFileIsIntact) {
  const std::string target = folder_.file("out");
  const std::string tree = test::text_of(source_);
  memory_trials trials(8);
  while (trials.next()) {
    const new_file_manager files;
    test::write_file(target, "old");
    const memory_end end = trials.run([&] { return dump(source_, target); });
    ASSERT_NE(end, memory_end::threw);
    EXPECT_EQ(test::read_file(target), end == memory_end::gave_true ? bytes_ : "old");
    EXPECT_EQ(test::names_in(folder_).size(), 2U);
    expect_no_open_files();
  }
  EXPECT_EQ(test::text_of(source_), tree);
  RecordProperty("failures", static_cast<int>(trials.failures()));
}

TEST_P(LittleMemory, DumpToAStreamThatRunsOutOfItThrows) {
  memory_trials trials(4);
  while (trials.next()) {
    const new_file_manager files;
    UT_MEMFILE file;
    const memory_end end = trials.run([&] { return qelmodb::dump(source_, file, form_.as, form_.what); });
    ASSERT_NE(end, memory_end::gave_false);
    if (end == memory_end::gave_true) {
      EXPECT_EQ(file.bytes(), bytes_);
    }
  }
  RecordProperty("failures", static_cast<int>(trials.failures()));
}

TEST_P(LittleMemory, CheckThatRunsOutOfItThrows) {
  memory_trials trials(8);
  while (trials.next()) {
    const new_file_manager files;
    qelmodb::check_report report;
    const memory_end end = trials.run([&] {
      report = qelmodb::check_bytes(bytes_, form_.what);
      return report.loadable();
    });
    ASSERT_NE(end, memory_end::gave_false);
    if (end == memory_end::gave_true) {
      EXPECT_EQ(report.instances, qelmodb::measure(source_).instances);
    }
  }
  memory_trials file_trials(8);
  while (file_trials.next()) {
    const new_file_manager files;
    ASSERT_NE(file_trials.run([&] { return qelmodb::check_file(file_.c_str(), form_.what).loadable(); }),
              memory_end::gave_false);
    expect_no_open_files();
  }
  RecordProperty("failures", static_cast<int>(trials.failures() + file_trials.failures()));
}

std::string form_name(const testing::TestParamInfo<int>& info) { return file_forms[info.param].name; }

INSTANTIATE_TEST_SUITE_P(Files, LittleMemory, testing::Range(0, 5), form_name);

// A foreign file stays open with the manager, when there is memory for that.
TEST(LittleMemoryFor, ForeignFileChangesNothing) {
  const test::temporary_folder folder;
  const std::string name = folder.file("foreign");
  test::write_file(name, "something else\n");
  const int descriptors = test::open_descriptors();
  ut_msgman->setsink([](const char*, void*) {}, nullptr);
  memory_trials trials(4);
  while (trials.next()) {
    const new_file_manager files;
    BX_DB db("OLD", 0, 0, 1, 1);
    const std::string before = test::text_of(db);
    EXPECT_EQ(trials.run([&] { return db.load(name.c_str()) == 0; }), memory_end::gave_true);
    EXPECT_EQ(test::text_of(db), before);
    EXPECT_LE(ut_file->getcount(), 1);
    ut_file->close_left();
    EXPECT_EQ(ut_file->getcount(), 0);
    EXPECT_EQ(test::open_descriptors(), descriptors);
  }
  ut_msgman->setsink(nullptr, nullptr);
}

TEST(LittleMemoryFor, DeviceDescriptionLeavesTheOldFile) {
  const test::temporary_folder folder;
  const std::string name = folder.file("device");
  const NP_TABLEDEVICE device({0, 10, 20}, {-5, 5, 15, 25});
  const int descriptors = test::open_descriptors();
  memory_trials trials(8);
  while (trials.next()) {
    const new_file_manager files;
    test::write_file(name, "old");
    std::string why;
    const memory_end end = trials.run([&] { return device.write(name.c_str(), why); });
    EXPECT_EQ(test::read_file(name) == "old", end != memory_end::gave_true);
    EXPECT_EQ(test::names_in(folder).size(), 1U);
    EXPECT_EQ(ut_file->getcount(), 0);
    EXPECT_EQ(test::open_descriptors(), descriptors);
    if (end == memory_end::gave_true) {
      EXPECT_NE(NP_TABLEDEVICE::read(name.c_str(), why), nullptr) << why;
    }
  }
  memory_trials read_trials(8);
  while (read_trials.next()) {
    const new_file_manager files;
    std::string why;
    read_trials.run([&] { return NP_TABLEDEVICE::read(name.c_str(), why) != nullptr; });
    EXPECT_EQ(ut_file->getcount(), 0);
    EXPECT_EQ(test::open_descriptors(), descriptors);
  }
}

}  // namespace
