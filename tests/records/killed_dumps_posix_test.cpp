// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Processes that are killed while they dump over an old file: that is the old one or the new one as a whole, and at
// most a temporary file is left, which is in nobody's way.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <map>
#include <random>
#include <stdexcept>
#include <thread>

#include "replaced_file.h"

namespace {

using test::file_call;

[[noreturn]] void die() {
  kill(getpid(), SIGKILL);
  for (;;) pause();
}

/// Kills its process at a call.
class killer : public test::file_call_watcher {
 public:
  enum moment { before_it, in_the_middle, behind_it };

  killer(const test::temporary_folder& folder, int number, moment when)
      : file_call_watcher(folder.name()), number_(number), when_(when) {}

  fate before(file_call /*what*/, std::size_t bytes) override {
    if (calls_++ != number_) return {};
    if (when_ == before_it) die();
    return when_ == in_the_middle ? fate{0, bytes / 2} : fate{};
  }
  void behind(file_call /*what*/) override {
    if (calls_ == number_ + 1 && when_ != before_it) die();
  }

 private:
  int calls_ = 0;
  int number_;
  moment when_;
};

class call_list : public test::file_call_watcher {
 public:
  explicit call_list(const test::temporary_folder& folder) : file_call_watcher(folder.name()) {}
  fate before(file_call what, std::size_t /*bytes*/) override {
    calls.push_back(what);
    return {};
  }
  std::vector<file_call> calls;
};

class KilledDumps : public testing::Test {
 protected:
  /// The names that a killed process left beside the target; expects that they are recognised. Removes the files.
  std::size_t temporary_files() {
    std::size_t count = 0;
    for (const std::string& name : test::names_in(folder_)) {
      if (name == "out") continue;
      EXPECT_TRUE(test::is_temporary_name(name)) << name;
      std::filesystem::remove(folder_.file(name));
      ++count;
    }
    return count;
  }

  test::temporary_folder folder_;
  const std::string target_ = folder_.file("out");
};

TEST_F(KilledDumps, AtAnyCallLeaveTheOldFileUntilItIsReplaced) {
  int kills = 0;
  for (const test::dump_way& way : test::all_dumps(26000, test::large_device())) {
    ASSERT_TRUE(way.write(target_));
    const std::string whole = test::read_file(target_);
    call_list list(folder_);
    ASSERT_TRUE(way.write(target_));
    const std::vector<file_call>& calls = list.calls;
    const auto renamed = std::find(calls.begin(), calls.end(), file_call::rename) - calls.begin();
    ASSERT_GE(renamed, 7);
    for (int n = 0; n < static_cast<int>(calls.size()); ++n) {
      for (const auto when : {killer::before_it, killer::in_the_middle, killer::behind_it}) {
        if (when == killer::in_the_middle && calls[static_cast<std::size_t>(n)] != file_call::write) continue;
        SCOPED_TRACE(std::string(way.name) + ", call " + std::to_string(n) + ", " + std::to_string(when));
        test::write_file(target_, "old");
        ASSERT_EQ(test::in_child([&] {
                    killer dies(folder_, n, when);
                    way.write(target_);
                    return 0;
                  }),
                  -SIGKILL);
        ++kills;
        const bool is_new = n > renamed || (n == renamed && when == killer::behind_it);
        const bool was_open = n > 0 || when == killer::behind_it;
        EXPECT_EQ(test::read_file(target_), is_new ? whole : "old");
        EXPECT_EQ(temporary_files(), is_new || !was_open ? 0U : 1U);
      }
    }
  }
  EXPECT_GE(kills, 6 * 27);
  RecordProperty("kills", kills);
}

// ---- at any time

constexpr int between_calls = test::file_call_count;
constexpr int between_dumps = between_calls + 1;

/// What a process is doing, seen from another one.
struct shared_state {
  std::atomic<int> doing{between_dumps};
};

class state_teller : public test::file_call_watcher {
 public:
  state_teller(const test::temporary_folder& folder, shared_state& state)
      : file_call_watcher(folder.name()), state_(state) {}
  fate before(file_call what, std::size_t /*bytes*/) override {
    state_.doing = static_cast<int>(what);
    return {};
  }
  void behind(file_call /*what*/) override { state_.doing = between_calls; }

 private:
  shared_state& state_;
};

class KilledDumpsAtAnyTime : public KilledDumps {
 protected:
  void SetUp() override {
    void* memory = mmap(nullptr, sizeof(shared_state), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    state_ = new (memory) shared_state;
    fill(one_, "A", 3000);
    fill(other_, "B", 4000);
    for (BX_DB* db : {&one_, &other_}) {
      ASSERT_EQ(db->dump(target_.c_str(), false), 1);
      wholes_.push_back(test::read_file(target_));
    }
  }
  void TearDown() override { munmap(state_, sizeof(shared_state)); }

  static void fill(BX_DB& db, const char* name, int instances) {
    for (int i = 0; i < instances; ++i) db.addinstance(new BX_INSTANCE(name, 0, i, 4, i + 1));
  }

  /// Dumps one and the other in turn until it is killed.
  [[noreturn]] void dump_for_ever() {
    const state_teller teller(folder_, *state_);
    for (;;) {
      for (BX_DB* db : {&one_, &other_}) {
        state_->doing = between_calls;
        if (db->dump(target_.c_str(), false) != 1) _exit(1);
        state_->doing = between_dumps;
      }
    }
  }

  template <class Happened>
  static void wait_until(Happened happened) {
    const auto latest = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!happened()) ASSERT_LT(std::chrono::steady_clock::now(), latest);
  }

  /// Kills such a process when wait returns; gives what it was doing.
  template <class Wait>
  int kill_one(Wait wait) {
    state_->doing = between_dumps;
    const pid_t child = fork();
    if (child == 0) dump_for_ever();
    if (child < 0) throw std::runtime_error("cannot fork");
    wait_until([this] { return state_->doing != between_dumps; });
    wait();
    kill(child, SIGKILL);
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    const std::string bytes = test::read_file(target_);
    EXPECT_TRUE(bytes == wholes_[0] || bytes == wholes_[1]);
    const std::size_t left = temporary_files();
    EXPECT_LE(left, 1U);
    during_a_dump_ += static_cast<int>(left);
    return state_->doing;
  }

  BX_DB one_{"ONE", 0, 0, 9, 9};
  BX_DB other_{"OTHER", 0, 0, 9, 9};
  std::vector<std::string> wholes_;
  shared_state* state_ = nullptr;
  int during_a_dump_ = 0;  // kills that left a temporary file
};

TEST_F(KilledDumpsAtAnyTime, LeaveOneOfTheTwoFilesWhole) {
  std::mt19937 random(4711);
  std::map<int, int> kills;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  constexpr int times = 40;  // a process takes long to start
#else
  constexpr int times = 220;
#endif
  for (int i = 0; i < times; ++i) {
    const std::chrono::microseconds delay(random() % 12000);
    ++kills[kill_one([&] { std::this_thread::sleep_for(delay); })];
  }
  // Some calls are too short to be met by chance: these wait for one and kill at once.
  const auto wait_for = [&](file_call what) {
    return [this, what] { wait_until([&] { return state_->doing == static_cast<int>(what); }); };
  };
  for (int i = 0; i < 12; ++i) {
    for (const file_call what : {file_call::write, file_call::sync, file_call::rename})
      ++kills[kill_one(wait_for(what))];
  }
  for (const auto& [doing, count] : kills) {
    RecordProperty(doing == between_dumps   ? "between_dumps"
                   : doing == between_calls ? "between_calls"
                                            : to_string(static_cast<file_call>(doing)),
                   count);
  }
  RecordProperty("during_a_dump", during_a_dump_);
  EXPECT_GT(during_a_dump_, times / 10);
  EXPECT_GT(kills[static_cast<int>(file_call::write)], 0);
  EXPECT_GT(kills[static_cast<int>(file_call::sync)], 0);
}

// Numbers of processes come again, and files of killed ones may lie about.
TEST_F(KilledDumps, LeaveNothingThatIsInTheWay) {
  test::write_file(target_, "old");
  EXPECT_EQ(test::in_child([&] {
              const auto left = [&](int number) {
                return folder_.file(".qelmodb-" + std::to_string(getpid()) + "-" + std::to_string(number) + ".tmp");
              };
              for (int i = 0; i < 100; ++i) test::write_file(left(i), "left");
              BX_DB db("TOP", 0, 0, 9, 9);
              if (db.dump(target_.c_str(), true) != 1) return test::child_said_false;
              for (int i = 0; i < 100; ++i) {
                if (test::read_file(left(i)) != "left") return test::child_said_false;
              }
              return test::child_said_true;
            }),
            test::child_said_true);
  EXPECT_TRUE(test::read_file(target_).starts_with(test::text_line));
  EXPECT_EQ(temporary_files(), 100U);
}

}  // namespace
