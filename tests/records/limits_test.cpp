// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Files that ask for more than a client is willing to give, and loading what was checked.
#include <gtest/gtest.h>

#include "qelmocompress.h"
#include "record_bytes.h"

namespace {

using qelmodb::check_options;
using qelmodb::check_report;
using qelmodb::limits;
using test::content;
using test::form;

/// The member of limits and of check_report of this name.
struct limit_name {
  const char* name;
  std::int64_t limits::*limit;
  std::int64_t check_report::*held;
};

constexpr limit_name all_limits[] = {
    {"bytes", &limits::bytes, &check_report::bytes}, {"instances", &limits::instances, &check_report::instances},
    {"wires", &limits::wires, &check_report::wires}, {"names", &limits::names, &check_report::names},
    {"depth", &limits::depth, &check_report::depth}, {"memory", &limits::memory, &check_report::memory}};

check_report check_within(const std::string& bytes, content what, const limits& within) {
  check_options options;
  options.within = within;
  return qelmodb::check_bytes(bytes, what, options);
}

std::string limited_file(form as, content what) {
  BX_DB db("TOP", 0, 0, 100, 50);
  test::fill_rich_database(db);
  qelmodb::intern_root_name(db);
  if (as == form::compressed) db.compress();
  return test::dumped(db, as, what);
}

TEST(Limits, TakeWhatReachesThemAndRefuseWhatGoesBeyond) {
  int refused = 0;
  for (const form as : {form::text, form::binary, form::compressed}) {
    for (const content what : {content::database, content::grid}) {
      if (as == form::compressed && what == content::grid) continue;
      const std::string bytes = limited_file(as, what);
      const check_report sound = qelmodb::check_bytes(bytes, what);
      ASSERT_TRUE(sound.loadable());
      EXPECT_EQ(sound.limit, nullptr);
      for (const limit_name& each : all_limits) {
        const std::int64_t held = sound.*each.held;
        if (held == 0) continue;  // no name table, no wires
        limits within;
        within.*each.limit = held;
        EXPECT_TRUE(check_within(bytes, what, within).loadable()) << each.name;
        within.*each.limit = held - 1;
        const check_report report = check_within(bytes, what, within);
        EXPECT_FALSE(report.loadable()) << each.name;
        ASSERT_EQ(report.errors, 1);
        ASSERT_STREQ(report.limit, each.name);
        const std::string& message = report.faults.back().message;
        EXPECT_TRUE(message.starts_with(std::to_string(held) + " ")) << message;
        EXPECT_TRUE(message.ends_with("go beyond the limit of " + std::to_string(held - 1))) << message;
        ++refused;
      }
    }
  }
  EXPECT_EQ(refused, 5 + 6 + 6 + 4 + 4);
}

TEST(Limits, AreToldAtTheRecordThatGoesBeyond) {
  const std::string text =
      "BX_DB:A\n"
      "BX_INSTANCE: \"TOP\" (0, 0) (9, 9)\n"
      "0\n"
      "2\n"
      "BX_INSTANCE: \"C\" (0, 3) (4, 5)\n"
      "2\n"
      "BX_WIRE:  \"A\" (1, 2)\n"
      "BX_WIRE:  \"B\" (3, -4)\n"
      "0\n"
      "BX_INSTANCE: \"D\" (0, 4) (4, 5)\n"
      "0\n"
      "0\n";
  const auto line_and_path = [&](std::int64_t limits::*limit, std::int64_t value) {
    limits within;
    within.*limit = value;
    const check_report report = check_within(text, content::database, within);
    return report.faults.empty() ? "none" : std::to_string(report.faults[0].line) + " " + report.faults[0].path;
  };
  EXPECT_EQ(line_and_path(&limits::instances, 0), "2 TOP");
  EXPECT_EQ(line_and_path(&limits::instances, 1), "5 TOP/C");
  EXPECT_EQ(line_and_path(&limits::instances, 2), "10 TOP/D");
  EXPECT_EQ(line_and_path(&limits::instances, 3), "none");
  EXPECT_EQ(line_and_path(&limits::depth, 0), "5 TOP/C");
  EXPECT_EQ(line_and_path(&limits::wires, 1), "6 TOP/C");
  const auto instance = static_cast<std::int64_t>(sizeof(BX_INSTANCE) + sizeof(void*));
  const auto wire = static_cast<std::int64_t>(sizeof(BX_WIRE));
  EXPECT_EQ(line_and_path(&limits::memory, 2 * instance + wire), "6 TOP/C");
  EXPECT_EQ(line_and_path(&limits::memory, 2 * instance + 2 * wire), "10 TOP/D");
}

TEST(Limits, RefuseTreesOutOfProportionToTheirFileByThemselves) {
  BX_DB tree("r", 0, 0, 0, 4000);
  test::fill_and_compress_alike(tree, 4000, 60000);
  const std::string bytes = test::dumped(tree, form::compressed);
  ASSERT_LT(bytes.size(), 1U << 20);
  const check_report report = qelmodb::check_bytes(bytes, content::database);
  EXPECT_FALSE(report.loadable());
  EXPECT_STREQ(report.limit, "memory");
  limits within;
  within.memory = limits::none;
  const check_report whole = check_within(bytes, content::database, within);
  EXPECT_TRUE(whole.loadable());
  EXPECT_EQ(whole.wires, 4000LL * 60000);
  EXPECT_GT(whole.memory, (std::int64_t{4} << 30) + 64 * whole.bytes);
}

TEST(Limits, StandBeforeWhatAFileClaims) {
  const std::string bytes = test::binary_line + test::table_bytes({{1, "R"}}) + test::reference(1) +
                            test::box_bytes({0, 0, 9, 9}) + test::number(3) + test::wire_bytes(1, 1, 2);
  limits within;
  within.wires = 2;
  // Cut off, too, which is told first: that is certain.
  EXPECT_EQ(check_within(bytes, content::database, within).limit, nullptr);
  within.bytes = 10;
  const check_report report = check_within(bytes, content::database, within);
  EXPECT_STREQ(report.limit, "bytes");
  EXPECT_EQ(report.faults[0].offset, 0);
}

class LoadChecked : public testing::Test {
 protected:
  std::string made(const std::string& bytes) {
    const std::string path = folder_.file("made.bxd");
    test::write_file(path, bytes);
    return path;
  }

  test::temporary_folder folder_;
  BX_DB db_{"OLD", 1, 2, 3, 4};
  check_report report_;
};

TEST_F(LoadChecked, LoadsWhatIsSound) {
  for (const form as : {form::text, form::binary, form::compressed}) {
    ASSERT_TRUE(
        qelmodb::load_checked(db_, made(limited_file(as, content::database)).c_str(), content::database, report_));
    EXPECT_EQ(report_.file_form, as);
    EXPECT_TRUE(report_.sound());
    EXPECT_EQ(qelmodb::measure(db_).wires, report_.wires);
  }
  ASSERT_TRUE(
      qelmodb::load_checked(db_, made(limited_file(form::binary, content::grid)).c_str(), content::grid, report_));
  EXPECT_EQ(db_.getnumwires(), 0);
}

TEST_F(LoadChecked, LeavesTheDatabaseAloneWhenTheFileIsNotLoadable) {
  std::string bytes = limited_file(form::text, content::database);
  bytes.replace(bytes.find("BX_WIRE"), 7, "BX-WIRE");
  EXPECT_FALSE(qelmodb::load_checked(db_, made(bytes).c_str(), content::database, report_));
  EXPECT_EQ(report_.errors, 1);
  check_options options;
  options.within.wires = 3;
  EXPECT_FALSE(qelmodb::load_checked(db_, made(limited_file(form::binary, content::database)).c_str(),
                                     content::database, report_, options));
  EXPECT_STREQ(report_.limit, "wires");
  EXPECT_FALSE(qelmodb::load_checked(db_, folder_.file("none").c_str(), content::database, report_));
  EXPECT_EQ(report_.errors, 1);
  EXPECT_NE(report_.faults[0].message.find("cannot open for reading"), std::string::npos);
  EXPECT_STREQ(db_.getname(), "OLD");
  EXPECT_EQ(db_.ymax, 4);
}

TEST_F(LoadChecked, ReadsNoMoreThanTheLimitOfBytes) {
  const std::string path = made(limited_file(form::binary, content::database) + std::string(1 << 20, '\0'));
  check_options options;
  options.within.bytes = 1000;
  EXPECT_FALSE(qelmodb::load_checked(db_, path.c_str(), content::database, report_, options));
  EXPECT_STREQ(report_.limit, "bytes");
  EXPECT_LT(report_.bytes, 1 << 20);
}

TEST_F(LoadChecked, MayBeCancelled) {
  int calls = 0;
  check_options options;
  options.report = [&](const qelmodb::progress& how_far) {
    ++calls;
    return std::string(how_far.step) == "checking";
  };
  EXPECT_FALSE(qelmodb::load_checked(db_, made(limited_file(form::binary, content::database)).c_str(),
                                     content::database, report_, options));
  EXPECT_TRUE(report_.loadable());
  EXPECT_EQ(calls, 2);
}

}  // namespace
