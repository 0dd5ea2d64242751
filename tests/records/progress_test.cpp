// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What long work tells of itself, and how it is cancelled.
#include <gtest/gtest.h>

#include "qelmocompress.h"
#include "record_bytes.h"

namespace {

using qelmodb::content;
using qelmodb::form;

struct told {
  std::string step;
  std::int64_t done;
  std::int64_t whole;
};

/// Remembers what it is told, and cancels when it is told the last of so many times.
class listener {
 public:
  explicit listener(std::size_t most = SIZE_MAX) : most_(most) {}

  qelmodb::progress_report report() {
    return [this](const qelmodb::progress& now) {
      heard.push_back({now.step, now.done, now.whole});
      return heard.size() < most_;
    };
  }
  qelmodb::work_options options() { return {report()}; }

  std::vector<told> heard;

 private:
  std::size_t most_;
};

void expect_ascending(const std::vector<told>& heard, const std::string& step, std::int64_t whole) {
  for (std::size_t i = 0; i < heard.size(); ++i) {
    EXPECT_EQ(heard[i].step, step);
    EXPECT_EQ(heard[i].whole, whole);
    EXPECT_GE(heard[i].done, i == 0 ? 0 : heard[i - 1].done);
    EXPECT_TRUE(whole == 0 || heard[i].done <= whole) << heard[i].done;
  }
}

// Some megabytes in each form; the wires differ, so that templates are many.
std::unique_ptr<BX_DB> large_database() {
  auto db = std::make_unique<BX_DB>("ROOT", 0, 0, 10, 10);
  qelmodb::intern_root_name(*db);
  const qelmodb::name_batch batch(*db);
  std::mt19937 random(1);
  for (bx_long i = 0; i < 3000; ++i) {
    auto* inst = new BX_INSTANCE("TILE", 0, i, 1, i + 1);
    db->addinstance(inst);
    inst->wires.getaddr(99);
    for (BX_WIRE& wire : inst->wires) {
      wire.name = db->name;
      wire.nameborrowed = true;
      wire.nodex = static_cast<bx_long>(random());
      wire.nodey = static_cast<bx_long>(random());
    }
  }
  return db;
}

class Progress : public testing::TestWithParam<form> {
 protected:
  static const std::string& bytes() {
    static std::map<form, std::string> made;
    std::string& file = made[GetParam()];
    if (file.empty()) {
      if (GetParam() == form::compressed) database().compress();
      file = test::dumped(database(), GetParam());
    }
    return file;
  }

  static BX_DB& database() {
    static const std::unique_ptr<BX_DB> db = large_database();
    return *db;
  }

  static bool load(BX_DB& db, const std::string& file, const qelmodb::work_options& options) {
    UT_MEMFILE stream{std::string(file)};
    return qelmodb::load(db, stream, content::database, options);
  }
};

TEST_P(Progress, OfALoadIsToldInBytes) {
  BX_DB db;
  listener heard;
  ASSERT_TRUE(load(db, bytes(), heard.options()));
  const auto whole = static_cast<std::int64_t>(bytes().size());
  ASSERT_GT(whole, 3 << 20);
  EXPECT_GE(heard.heard.size(), 3U);
  expect_ascending(heard.heard, "reading", whole);
  // What is heard at the end of the file is about the restoring of a compressed tree.
  const auto restoring =
      std::count_if(heard.heard.begin(), heard.heard.end(), [whole](const told& now) { return now.done == whole; });
  EXPECT_EQ(restoring > 2, GetParam() == form::compressed) << restoring;
  EXPECT_LE(heard.heard.size(), static_cast<std::size_t>((whole >> 20) + restoring) + 3);
}

TEST_P(Progress, OfACheckIsToldInBytes) {
  listener heard;
  qelmodb::check_options options;
  options.report = heard.report();
  EXPECT_TRUE(qelmodb::check_bytes(bytes(), content::database, options).loadable());
  expect_ascending(heard.heard, "checking", static_cast<std::int64_t>(bytes().size()));
  EXPECT_GE(heard.heard.size(), 3U);
}

TEST_P(Progress, OfADumpIsToldInBytes) {
  listener heard;
  UT_MEMFILE stream;
  ASSERT_FALSE(bytes().empty());
  ASSERT_TRUE(qelmodb::dump(database(), stream, GetParam(), content::database, heard.options()));
  EXPECT_GE(heard.heard.size(), 2U);
  expect_ascending(heard.heard, "writing", 0);
  EXPECT_LE(heard.heard.back().done, static_cast<std::int64_t>(stream.bytes().size()));
}

TEST_P(Progress, CancelledALoadLeavesWhatAFailedOneDoes) {
  listener all;
  {
    BX_DB db;
    ASSERT_TRUE(load(db, bytes(), all.options()));
  }
  for (std::size_t most = 1; most <= all.heard.size(); ++most) {
    BX_DB db;
    listener heard(most);
    EXPECT_FALSE(load(db, bytes(), heard.options())) << most;
    EXPECT_EQ(heard.heard.size(), most) << "not asked again";
    EXPECT_LE(qelmodb::measure(db).instances, 3001);
    // It can be used on.
    EXPECT_TRUE(load(db, bytes(), {}));
    EXPECT_EQ(qelmodb::measure(db).wires, 300000);
  }
}

TEST_P(Progress, CancelledADumpFailsItsStream) {
  ASSERT_FALSE(bytes().empty());
  listener heard(2);
  UT_MEMFILE stream;
  EXPECT_FALSE(qelmodb::dump(database(), stream, GetParam(), content::database, heard.options()));
  EXPECT_FALSE(stream.ok());
  EXPECT_EQ(heard.heard.size(), 2U);
}

TEST_P(Progress, CancelledACheckSaysSo) {
  listener heard(1);
  qelmodb::check_options options;
  options.report = heard.report();
  const qelmodb::check_report report = qelmodb::check_bytes(bytes(), content::database, options);
  EXPECT_FALSE(report.loadable());
  ASSERT_EQ(report.faults.size(), 1U);
  EXPECT_TRUE(report.faults[0].message.ends_with("the check was cancelled")) << report.faults[0].message;
  EXPECT_EQ(heard.heard.size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Forms, Progress, testing::Values(form::text, form::binary, form::compressed),
                         [](const auto& tested) { return std::string(qelmodb::to_string(tested.param)); });

// A list of wires is no single record: in the middle of a long one there is a place to stop, too.
TEST(ProgressOfOneInstance, IsToldBetweenItsWires) {
  BX_DB db("ROOT", 0, 0, 1, 1);
  db.wires.getaddr(299999);
  for (BX_WIRE& wire : db.wires) wire.nameborrowed = true;
  for (const form as : {form::text, form::binary}) {
    listener written;
    UT_MEMFILE stream;
    ASSERT_TRUE(qelmodb::dump(db, stream, as, content::database, written.options()));
    EXPECT_GE(written.heard.size(), 4U);
    listener read;
    UT_MEMFILE again{std::string(stream.bytes())};
    BX_DB back;
    ASSERT_TRUE(qelmodb::load(back, again, content::database, read.options()));
    EXPECT_GE(read.heard.size(), 4U);
    listener checked;
    qelmodb::check_options options;
    options.report = checked.report();
    EXPECT_TRUE(qelmodb::check_bytes(stream.bytes(), content::database, options).loadable());
    EXPECT_GE(checked.heard.size(), 4U);
  }
}

// The stream is free again when the work is over.
TEST(ProgressOfOneInstance, IsNotAskedForOfAStreamThatFailed) {
  UT_MEMFILE stream("abc", 3);
  int asked = 0;
  stream.watch([&asked](std::int64_t) { return ++asked > 1; });
  EXPECT_FALSE(stream.go_on());
  EXPECT_FALSE(stream.ok());
  EXPECT_FALSE(stream.go_on());
  EXPECT_FALSE(stream.go_on_now());
  EXPECT_EQ(asked, 1);
}

TEST(ProgressOfOneInstance, LeavesAWatcherOfTheClientInPlaceWhenNotAskedFor) {
  BX_DB db("ROOT", 0, 0, 1, 1);
  UT_MEMFILE stream;
  int asked = 0;
  stream.watch([&asked](std::int64_t) { return ++asked > 0; });
  ASSERT_TRUE(qelmodb::dump(db, stream, form::text, content::database));
  EXPECT_EQ(asked, 1);
  EXPECT_TRUE(stream.go_on_now());
  EXPECT_EQ(asked, 2);
}

TEST(ProgressOfOneInstance, EndsWithTheWork) {
  BX_DB db("ROOT", 0, 0, 1, 1);
  UT_MEMFILE stream;
  {
    listener heard;
    ASSERT_TRUE(qelmodb::dump(db, stream, form::text, content::database, heard.options()));
  }
  EXPECT_TRUE(stream.go_on());
  EXPECT_TRUE(stream.go_on_now());
}

}  // namespace
