// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Every cut and every changed byte of a file of each form: what the checker says of it, and how a load ends that does
// not ask the checker. Loads run in child processes; one works through the cases until one ends it, and the next goes
// on behind that.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

#include <csignal>
#include <cstdlib>
#include <functional>
#include <random>
#include <stdexcept>

#include "../templates/compressed_fields.h"
#include "binary_tree_fields.h"
#include "text_fields.h"
#include "ut_msgman.h"

namespace {

using test::content;
using test::form;

/// How a load ended.
enum class ending : unsigned char {
  none,
  said_false,
  said_true,
  counted_otherwise,  // true, but the tree is not what the checker counted
  fast_fail,
  fatal_message,
  undocumented
};

/// What is known of a case.
struct outcome {
  bool loadable;  // says the checker
  ending load;
};

/// What children and their parent share; as many outcomes as there are cases follow.
struct shared_notes {
  std::size_t at;        // the case in hand
  bool sanitizer_spoke;  // in the child
};

// Of this process and its children, while there are any.
shared_notes* notes_of_children = nullptr;

// Where a child's standard error went before it was silenced; negative when nobody wants to know.
int error_output = -1;

void note_sanitizer_report() {
  if (notes_of_children == nullptr) return;
  notes_of_children->sanitizer_spoke = true;
  if (error_output >= 0) dup2(error_output, 2);
}

}  // namespace

// The sanitizers call these before they write a report. How they end the process then can look like a documented end.
extern "C" void __asan_on_error() __attribute__((visibility("default")));
extern "C" void __asan_on_error() { note_sanitizer_report(); }
extern "C" void __ubsan_on_report() __attribute__((visibility("default")));
extern "C" void __ubsan_on_report() { note_sanitizer_report(); }

// Of the sanitizer of undefined behaviour, if it is there; tests are compiled without.
extern "C" void __ubsan_handle_builtin_unreachable(void* place) __attribute__((weak));

namespace {

/// Runs cases in children.
class case_runner {
 public:
  explicit case_runner(std::size_t cases) : cases_(cases), bytes_(sizeof(shared_notes) + cases * sizeof(outcome)) {
    void* memory = mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    notes_of_children = static_cast<shared_notes*>(memory);
  }
  case_runner(const case_runner&) = delete;
  case_runner& operator=(const case_runner&) = delete;
  ~case_runner() {
    munmap(notes_of_children, bytes_);
    notes_of_children = nullptr;
  }

  /// How long a case may take, and whether what sanitizers report is shown.
  void limit(unsigned seconds) { most_seconds_ = seconds; }
  void hide_reports() { reports_ = false; }

  /// Has a child run all of them; goes on behind those that end one. Gives how many do.
  template <class Run>
  int run(Run run_case) {
    int ended = 0;
    for (std::size_t next = 0; next < cases_; ++next) {
      const int status = run_child(next, run_case);
      if (is_done(status)) break;
      ++ended;
      next = notes_of_children->at;
      of(next).load = meaning(status);
    }
    return ended;
  }

  /// Has a child run all of them, whose failures are told as those of this process are. Expects that none ends it, and
  /// that it loses no memory.
  template <class Run>
  void expect(Run run_case) {
    std::fflush(nullptr);
    const int status = run_child(0, run_case, talk::aloud);
    EXPECT_TRUE(is_done(status)) << "case " << notes_of_children->at << ", status " << status;
  }

  static outcome& of(std::size_t number) { return reinterpret_cast<outcome*>(notes_of_children + 1)[number]; }

 private:
  static constexpr int all_done = 44;
  static constexpr int had_failures = 45;

  enum class talk { silently, aloud };

  template <class Run>
  int run_child(std::size_t first, Run run_case, talk how = talk::silently) {
    notes_of_children->at = first;
    notes_of_children->sanitizer_spoke = false;
    const pid_t child = fork();
    if (child == 0) {
      if (how == talk::silently) silence();
      for (std::size_t i = first; i < cases_; ++i) {
        notes_of_children->at = i;
        alarm(most_seconds_);
        run_case(i);
      }
      std::fflush(nullptr);
      const bool good = !testing::Test::HasFailure() && (how == talk::silently || !has_lost_memory());
      _exit(good ? all_done : had_failures);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) throw std::runtime_error("no child");
    return status;
  }

  static bool has_lost_memory() {
#ifdef __SANITIZE_ADDRESS__
    return __lsan_do_recoverable_leak_check() != 0;
#else
    return false;
#endif
  }

  static bool is_done(int status) {
    return WIFEXITED(status) && WEXITSTATUS(status) == all_done && !notes_of_children->sanitizer_spoke;
  }

  static ending meaning(int status) {
    if (notes_of_children->sanitizer_spoke) return ending::undocumented;
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT) return ending::fast_fail;
    if (WIFEXITED(status) && WEXITSTATUS(status) == EXIT_FAILURE) return ending::fatal_message;
    return ending::undocumented;
  }

  /// What is printed goes nowhere, reports of sanitizers apart.
  void silence() const {
    const rlimit no_core{0, 0};
    setrlimit(RLIMIT_CORE, &no_core);
    error_output = reports_ ? dup(2) : -1;
    const int nowhere = open("/dev/null", O_WRONLY);
    if (nowhere < 0 || dup2(nowhere, 1) < 0 || dup2(nowhere, 2) < 0) std::abort();
  }

  std::size_t cases_;
  std::size_t bytes_;
  unsigned most_seconds_ = 20;
  bool reports_ = true;
};

/// A form, and the numbers that its file leads to.
struct damaged_form {
  form as;
  content what;
  std::size_t bytes;
  ending documented;  // beside true and false; none where no load ends the process
  int least_loadable;
  int least_ended;
};

void PrintTo(const damaged_form& kind, std::ostream* out) { *out << to_string(kind.as) << ' ' << to_string(kind.what); }

std::string whole_file(const damaged_form& kind) {
  if (kind.as == form::compressed) return test::compressed_fields().file.bytes;
  if (kind.as == form::text) return test::text_fields(test::rich_tree(), kind.what).file.bytes;
  return test::binary_fields(test::rich_tree(), kind.what).file.bytes;
}

/// The damaged files by number: all beginnings, then each byte with values other than its own.
class damaged_files {
 public:
  static constexpr std::size_t values_per_byte = 8;

  explicit damaged_files(std::string whole) : whole_(std::move(whole)) {
    std::mt19937 random(20231);
    for (const char c : whole_) {
      const auto own = static_cast<unsigned char>(c);
      std::vector<unsigned char> values;
      const auto add = [&](unsigned value) {
        const auto byte = static_cast<unsigned char>(value);
        const bool known = byte == own || std::find(values.begin(), values.end(), byte) != values.end();
        if (!known && values.size() < values_per_byte) values.push_back(byte);
      };
      for (const unsigned value : {0x00U, 0x01U, 0x7fU, 0xffU, unsigned{'"'}, unsigned{'\n'}, own ^ 0x20U}) add(value);
      while (values.size() < values_per_byte) add(static_cast<unsigned>(random()));
      values_.insert(values_.end(), values.begin(), values.end());
    }
  }

  std::size_t count() const { return whole_.size() + values_.size(); }
  bool is_cut(std::size_t number) const { return number < whole_.size(); }
  std::size_t place(std::size_t number) const {
    return is_cut(number) ? number : (number - whole_.size()) / values_per_byte;
  }

  std::string bytes(std::size_t number) const {
    if (is_cut(number)) return whole_.substr(0, number);
    std::string changed = whole_;
    changed[place(number)] = static_cast<char>(values_[number - whole_.size()]);
    return changed;
  }

  std::string about(std::size_t number) const {
    if (is_cut(number)) return "cut off at byte " + std::to_string(number);
    return "byte " + std::to_string(place(number)) + " changed to " + std::to_string(values_[number - whole_.size()]);
  }

 private:
  std::string whole_;
  std::vector<unsigned char> values_;
};

TEST(CaseRunnerDeathTest, TellsDocumentedEndsFromAllOthersAndGoesOnBehindThem) {
  std::vector<std::pair<ending, std::function<void()>>> cases = {
      {ending::none, [] {}},
      {ending::fast_fail, [] { std::abort(); }},
      {ending::fatal_message, [] { ut_msgman->msgfatal("", "", "", 0, "", 0, 0); }},
      {ending::undocumented, [] { _exit(0); }},
      {ending::undocumented, [] { raise(SIGKILL); }},
      {ending::undocumented, [] { pause(); }},
      {ending::none, [] {}}};
#ifdef __SANITIZE_ADDRESS__
  cases.push_back({ending::undocumented, [] {
                     volatile std::size_t beyond = 4;
                     std::vector<char>(4).data()[beyond] = 1;
                   }});
  cases.push_back({ending::undocumented, [] { raise(SIGSEGV); }});
#endif
  if (__ubsan_handle_builtin_unreachable != nullptr) {
    struct source_place {
      const char* file;
      unsigned line, column;
    };
    cases.push_back({ending::undocumented, [] {
                       source_place place{"", 1, 1};
                       __ubsan_handle_builtin_unreachable(&place);
                     }});
  }
  case_runner runner(cases.size());
  runner.limit(1);
  runner.hide_reports();
  EXPECT_EQ(runner.run([&](std::size_t i) { cases[i].second(); }), static_cast<int>(cases.size()) - 2);
  for (std::size_t i = 0; i < cases.size(); ++i) {
    EXPECT_EQ(static_cast<int>(runner.of(i).load), static_cast<int>(cases[i].first)) << i;
  }
}

class EveryDamageDeathTest : public testing::TestWithParam<damaged_form> {
 protected:
  /// Lines are told in text files, once the first line has told that it is one.
  static std::int64_t line_of(const std::string& bytes, std::int64_t offset) {
    if (bytes.substr(0, 7) != "BX_DB:A" || bytes.find('\n') == std::string::npos) return 0;
    return 1 + std::count(bytes.begin(), bytes.begin() + offset, '\n');
  }

  /// One line of printable characters. A name is at most 254 bytes long, each of which takes four at most.
  static bool is_sane(const std::string& message) {
    constexpr std::size_t longest = 100 + 4 * 254;
    return !message.empty() && message.size() <= longest &&
           std::all_of(message.begin(), message.end(), [](char c) { return c >= ' ' && c <= '~'; });
  }

  static void expect_sane(const qelmodb::check_report& report, const std::string& bytes, const std::string& about) {
    std::int64_t last = 0;
    for (const qelmodb::fault& found : report.faults) {
      EXPECT_TRUE(is_sane(found.message)) << about << ": " << found.message;
      EXPECT_EQ(found.text().find_first_of("\n\r\t\x1b\x7f"), std::string::npos) << about << ": " << found.text();
      EXPECT_GE(found.offset, last) << about << ": " << found.text();
      ASSERT_LE(found.offset, static_cast<std::int64_t>(bytes.size())) << about << ": " << found.text();
      EXPECT_EQ(found.line, line_of(bytes, found.offset)) << about << ": " << found.text();
      last = found.offset;
    }
  }

  static bool checked(const std::string& bytes, const std::string& about) {
    const qelmodb::check_report report = qelmodb::check_bytes(bytes, GetParam().what);
    expect_sane(report, bytes, about);
    EXPECT_TRUE(report.loadable() || !report.faults.empty()) << about;
    return report.loadable();
  }

  static ending load(const std::string& bytes) {
    BX_DB db;
    if (!test::loaded(db, bytes, GetParam().what)) return ending::said_false;
    const qelmodb::check_report report = qelmodb::check_bytes(bytes, GetParam().what);
    if (!report.loadable()) return ending::said_true;
    const qelmodb::tree_size size = qelmodb::measure(db);
    const bool alike = size.instances == report.instances && size.wires == report.wires;
    return alike ? ending::said_true : ending::counted_otherwise;
  }

  static bool may_end(ending how) {
    return how == ending::said_true || how == ending::said_false ||
           (how == GetParam().documented && how != ending::none);
  }
};

TEST_P(EveryDamageDeathTest, IsCheckedSanelyAndLoadsAsTheCheckerSaysOrEndsAsDocumented) {
  const std::string whole = whole_file(GetParam());
  ASSERT_EQ(whole.size(), GetParam().bytes);
  ASSERT_TRUE(qelmodb::check_bytes(whole, GetParam().what).sound());
  const damaged_files files(whole);
  ASSERT_EQ(files.count(), GetParam().bytes * 9);

  // In children, too: a process that has not done much is cheaper to fork.
  case_runner runner(files.count());
  runner.expect([&](std::size_t i) { runner.of(i).loadable = checked(files.bytes(i), files.about(i)); });
  const int ended = runner.run([&](std::size_t i) { runner.of(i).load = load(files.bytes(i)); });
  int loadable = 0;
  int documented = 0;
  for (std::size_t i = 0; i < files.count(); ++i) {
    const outcome& how = runner.of(i);
    loadable += how.loadable ? 1 : 0;
    documented += how.load == GetParam().documented ? 1 : 0;
    EXPECT_TRUE(may_end(how.load)) << files.about(i) << ": " << static_cast<int>(how.load);
    EXPECT_TRUE(how.load == ending::said_true || !how.loadable) << files.about(i) << ": " << static_cast<int>(how.load);
    // The last line of a text file needs no end.
    const bool lacks_line_end = GetParam().as == form::text && i + 1 == whole.size();
    EXPECT_FALSE(how.loadable && files.is_cut(i) && !lacks_line_end) << files.about(i);
  }
  EXPECT_EQ(documented, ended);
  // A process that goes on loses nothing by a load.
  runner.expect([&](std::size_t i) {
    const ending before = runner.of(i).load;
    EXPECT_TRUE(before == GetParam().documented || load(files.bytes(i)) == before) << files.about(i);
  });
  EXPECT_GE(loadable, GetParam().least_loadable);
  EXPECT_GE(ended, GetParam().least_ended);
  RecordProperty("cases", std::to_string(files.count()));
  RecordProperty("loadable", loadable);
  RecordProperty("ended", ended);
}

INSTANTIATE_TEST_SUITE_P(AllForms, EveryDamageDeathTest,
                         testing::Values(damaged_form{form::text, content::database, 765, ending::fast_fail, 400, 1000},
                                         damaged_form{form::binary, content::database, 760, ending::none, 2000, 0},
                                         damaged_form{form::compressed, content::database, 697, ending::fatal_message,
                                                      2000, 500},
                                         damaged_form{form::text, content::grid, 447, ending::fast_fail, 200, 500},
                                         damaged_form{form::binary, content::grid, 330, ending::none, 1000, 0}),
                         [](const testing::TestParamInfo<damaged_form>& kind) {
                           return std::string(qelmodb::to_string(kind.param.as)) + "_" +
                                  qelmodb::to_string(kind.param.what);
                         });

}  // namespace
