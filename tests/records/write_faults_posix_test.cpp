// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Every system call of every dump fails once in every way: the old file stays whole, and nothing stays behind.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>

#include "replaced_file.h"

namespace {

using std::filesystem::path;
using test::file_call;
using fate = test::file_call_watcher::fate;

/// Notes the calls, and has some disturbed.
class call_disturber : public test::file_call_watcher {
 public:
  /// what is asked about each call, by its number.
  call_disturber(const test::temporary_folder& folder, std::function<fate(std::size_t)> what)
      : file_call_watcher(folder.name()), what_(std::move(what)) {}

  fate before(file_call what, std::size_t /*bytes*/) override {
    calls.push_back(what);
    const fate chosen = what_(calls.size() - 1);
    if (chosen.error != 0 || chosen.most != fate{}.most) ++disturbed;
    return chosen;
  }

  std::vector<file_call> calls;
  int disturbed = 0;

 private:
  std::function<fate(std::size_t)> what_;
};

bool is_behind_the_rename(file_call what) {
  return what == file_call::open_folder || what == file_call::sync_folder || what == file_call::close_folder;
}

std::vector<int> faults_of(file_call what) {
  switch (what) {
    case file_call::open:
      return {ENOSPC, EACCES, EMFILE, EROFS};
    case file_call::write:
      return {ENOSPC, EIO, EDQUOT};
    case file_call::rename:
      return {EIO, EXDEV, EACCES};
    default:
      return {EIO, ENOSPC};
  }
}

class WriteFaults : public testing::TestWithParam<int> {
 protected:
  static void SetUpTestSuite() { ways_ = test::all_dumps(26000, test::large_device()); }
  static void TearDownTestSuite() { ways_.clear(); }

  void SetUp() override {
    way_ = ways_.at(static_cast<std::size_t>(GetParam()));
    ASSERT_TRUE(way_.write(target_));
    whole_ = test::read_file(target_);
    descriptors_ = test::open_descriptors();
    calls_ = dump([](std::size_t) { return fate{}; });
  }

  /// Dumps over an old file; expects that the result tells what is there afterwards, and that nothing else is.
  std::vector<file_call> dump(const std::function<fate(std::size_t)>& what) {
    test::write_file(target_, old_);
    call_disturber calls(folder_, what);
    result_ = way_.write(target_);
    disturbed_ = calls.disturbed;
    EXPECT_EQ(test::read_file(target_) == whole_, result_);
    EXPECT_EQ(test::read_file(target_) == old_, !result_);
    EXPECT_EQ(test::names_in(folder_), std::vector<std::string>{"out"});
    EXPECT_EQ(test::open_descriptors(), descriptors_);
    EXPECT_EQ(ut_file->getcount(), 0);
    return calls.calls;
  }

  /// The same with one call disturbed, and after it a dump that is not.
  void dump_with(std::size_t number, fate what) {
    dump([&](std::size_t call) { return call == number ? what : fate{}; });
    EXPECT_EQ(disturbed_, 1);
    test::file_call_watcher::fate none;
    const bool result = result_;
    const std::string error = ut_file->geterror();
    dump([&](std::size_t) { return none; });
    EXPECT_TRUE(result_) << "nothing is in the way of the next dump";
    result_ = result;
    error_ = error;
  }

  std::size_t count(file_call what) const {
    return static_cast<std::size_t>(std::count(calls_.begin(), calls_.end(), what));
  }

  test::temporary_folder folder_;
  const std::string target_ = folder_.file("out");
  const std::string old_ = "what was there before";
  test::dump_way way_;
  std::string whole_;             // what the dump writes
  std::vector<file_call> calls_;  // of an undisturbed dump
  int descriptors_ = 0;
  bool result_ = false;
  int disturbed_ = 0;
  std::string error_;

 private:
  static std::vector<test::dump_way> ways_;
};

std::vector<test::dump_way> WriteFaults::ways_;

TEST_P(WriteFaults, DumpMakesTheseCalls) {
  EXPECT_TRUE(result_);
  ASSERT_GE(count(file_call::write), 3U) << "it is to fail in the middle, too";
  std::vector<file_call> expected{file_call::open, file_call::set_mode};
  expected.resize(2 + count(file_call::write), file_call::write);
  for (const file_call last : {file_call::sync, file_call::close, file_call::rename, file_call::open_folder,
                               file_call::sync_folder, file_call::close_folder}) {
    expected.push_back(last);
  }
  EXPECT_EQ(calls_, expected);
}

TEST_P(WriteFaults, AnyCallThatFailsLeavesTheOldFile) {
  std::map<file_call, int> faults;
  for (std::size_t n = 0; n < calls_.size(); ++n) {
    for (const int error : faults_of(calls_[n])) {
      SCOPED_TRACE(std::string(to_string(calls_[n])) + ", call " + std::to_string(n) + ": " + std::strerror(error));
      dump_with(n, {error});
      EXPECT_EQ(result_, is_behind_the_rename(calls_[n]));
      if (!result_) {
        EXPECT_TRUE(error_.starts_with(target_ + ": cannot ") && error_.ends_with(std::strerror(error))) << error_;
      }
      ++faults[calls_[n]];
    }
  }
  EXPECT_EQ(faults.size(), static_cast<std::size_t>(test::file_call_count));
  int all = 0;
  for (const auto& [what, times] : faults) {
    EXPECT_EQ(times, static_cast<int>(count(what) * faults_of(what).size())) << to_string(what);
    RecordProperty(to_string(what), times);
    all += times;
  }
  RecordProperty("all", all);
}

TEST_P(WriteFaults, CallsThatASignalInterruptsAreMadeAgain) {
  int faults = 0;
  for (std::size_t n = 0; n < calls_.size(); ++n) {
    // The other two are never interrupted.
    if (calls_[n] == file_call::rename || calls_[n] == file_call::set_mode) continue;
    SCOPED_TRACE(std::string(to_string(calls_[n])) + ", call " + std::to_string(n));
    dump_with(n, {EINTR});
    EXPECT_TRUE(result_);
    ++faults;
  }
  EXPECT_GE(faults, 9);
  RecordProperty("all", faults);
}

TEST_P(WriteFaults, WritesThatTakeAPartLoseNothing) {
  dump_with(2, {0, 1});
  EXPECT_TRUE(result_);
  for (const std::size_t most : {4093U, 100000U}) {
    const std::size_t calls = dump([most](std::size_t) { return fate{0, most}; }).size();
    EXPECT_TRUE(result_);
    EXPECT_GE(calls, whole_.size() / most);
    EXPECT_GE(disturbed_, 6);
  }
}

// The disk fills up in the middle of a write, which takes what fits; or a write takes nothing, without saying why.
TEST_P(WriteFaults, WriteThatTakesAPartBeforeTheDiskIsFullLeavesTheOldFile) {
  int faults = 0;
  for (std::size_t n = 0; n < calls_.size(); ++n) {
    if (calls_[n] != file_call::write) continue;
    for (const bool says_why : {true, false}) {
      SCOPED_TRACE("call " + std::to_string(n));
      dump([&](std::size_t call) {
        if (call == n) return fate{0, 777};
        return call != n + 1 ? fate{} : says_why ? fate{ENOSPC} : fate{0, 0};
      });
      EXPECT_EQ(disturbed_, 2);
      EXPECT_FALSE(result_);
      EXPECT_EQ(ut_file->geterror(), target_ + ": cannot write: " + std::strerror(ENOSPC));
      ++faults;
    }
  }
  EXPECT_EQ(faults, static_cast<int>(2 * count(file_call::write)));
  RecordProperty("all", faults);
}

TEST_P(WriteFaults, NameOfATemporaryFileThatIsTakenIsPassedOver) {
  dump([](std::size_t call) { return call < 3 ? fate{EEXIST} : fate{}; });
  EXPECT_EQ(disturbed_, 3);
  EXPECT_TRUE(result_);
}

std::string way_name(const testing::TestParamInfo<int>& info) {
  constexpr const char* names[] = {"text", "binary", "grid_text", "grid_binary", "compressed", "device"};
  return names[info.param];
}

INSTANTIATE_TEST_SUITE_P(Dumps, WriteFaults, testing::Range(0, 6), way_name);

}  // namespace
