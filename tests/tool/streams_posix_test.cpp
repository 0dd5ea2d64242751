// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What the shell puts in the place of files: pipes, handles, terminals, nothing at all.
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "bxdb_runner.h"
#include "packing_formats.h"
#include "tile_files.h"

namespace {

using namespace test;
namespace fs = std::filesystem;

class BxdbStreams : public ToolTest {
 protected:
  /// Runs a line of the shell, in the folder of the test and with $bxdb for the program, and gives its status.
  outcome shell(const std::string& line) const {
    const std::string setting = "cd '" + folder_.name() + "' && bxdb='" BXDB_PROGRAM "' && ";
    const int ended = std::system((setting + "{ " + line + "\n} > .out 2> .err < /dev/null").c_str());
    return {WIFEXITED(ended) ? WEXITSTATUS(ended) : -1, read_file(file(".out")), read_file(file(".err"))};
  }

  outcome expect_shell(int status, const std::string& line) const {
    outcome result = shell(line);
    EXPECT_EQ(result.status, status) << line << "\n" << result.out.substr(0, 2000) << result.err.substr(0, 2000);
    return result;
  }
};

const words handles = {"/dev/stdout", "/dev/fd/1", "/proc/self/fd/1", "-"};

TEST_F(BxdbStreams, RedirectedOutputIsAddedToAndNotReplaced) {
  made("a.bxd", small_text());
  for (const std::string& out : handles) {
    made("notes", "notes\n");
    fs::remove(file("hard"));
    fs::create_hard_link(file("notes"), file("hard"));
    expect_shell(0, "$bxdb convert a.bxd " + out + " --form text >> notes");
    EXPECT_EQ(read_file(file("notes")), "notes\n" + small_text()) << out;
    EXPECT_EQ(read_file(file("hard")), read_file(file("notes"))) << "another file has taken its place";
    expect_shell(0, "{ echo first; $bxdb convert a.bxd " + out + " --form text; echo last; } > notes");
    EXPECT_EQ(read_file(file("notes")), "first\n" + small_text() + "last\n") << out;
  }
}

TEST_F(BxdbStreams, PipesAreWritten) {
  made("a.bxd", small_text());
  for (const std::string& out : handles) {
    EXPECT_EQ(expect_shell(0, "$bxdb convert a.bxd " + out + " --form text | cat").out, small_text()) << out;
    expect_shell(0, "$bxdb generate " + out + " --columns 5 --rows 5 | $bxdb check -");
  }
  expect_shell(0, "$bxdb convert a.bxd - --form binary | gzip | $bxdb convert /dev/stdin b.bxd --form text");
  EXPECT_EQ(read_file(file("b.bxd")), small_text());
}

TEST_F(BxdbStreams, NamedPipesAreWrittenAndRead) {
  made("a.bxd", small_text());
  ASSERT_EQ(mkfifo(file("pipe").c_str(), 0600), 0);
  expect_shell(0, "cat pipe > copy & $bxdb convert a.bxd pipe --form text; s=$?; wait; exit $s");
  EXPECT_EQ(read_file(file("copy")), small_text());
  expect_shell(0, "cat a.bxd > pipe & $bxdb diff pipe a.bxd");
  EXPECT_TRUE(fs::is_fifo(file("pipe")));
  EXPECT_TRUE(holds(expect_shell(2, "$bxdb diff pipe pipe").err, "pipe: cannot be read twice"));
}

TEST_F(BxdbStreams, OneSocketMayBeInputAndOutput) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  const std::string text = small_text();
  ASSERT_EQ(write(ends[0], text.data(), text.size()), static_cast<ssize_t>(text.size()));
  shutdown(ends[0], SHUT_WR);
  expect_shell(0, "$bxdb convert - - --form text <&" + std::to_string(ends[1]) + " >&" + std::to_string(ends[1]));
  close(ends[1]);
  std::string got;
  char bytes[4096];
  for (ssize_t count = 0; (count = read(ends[0], bytes, sizeof bytes)) > 0;) {
    got.append(bytes, static_cast<std::size_t>(count));
  }
  close(ends[0]);
  EXPECT_EQ(got, text);
}

TEST_F(BxdbStreams, OtherHandlesAreWrittenToo) {
  made("a.bxd", small_text());
  made("copy", "old\n");
  expect_shell(0, "$bxdb convert a.bxd /dev/fd/7 --form text 7>> copy");
  EXPECT_EQ(read_file(file("copy")), "old\n" + small_text());
  const outcome closed = expect_shell(2, "$bxdb convert a.bxd /dev/fd/7 --form text");
  EXPECT_TRUE(holds(closed.err, "/dev/fd/7: cannot open for writing: ")) << closed.err;
}

TEST_F(BxdbStreams, AConversionMayReplaceTheFileThatStandardInputIs) {
  made("a.bxd", small_text());
  expect_shell(0, "$bxdb convert - a.bxd --form binary < a.bxd && $bxdb convert - a.bxd --form text < a.bxd");
  EXPECT_EQ(read_file(file("a.bxd")), small_text());
}

TEST_F(BxdbStreams, NoOutputGoesIntoItsOwnInput) {
  made("a.bxd", small_text());
  for (const std::string& out : handles) {
    expect_shell(2, "$bxdb convert a.bxd " + out + " --form text >> a.bxd");
    EXPECT_EQ(read_file(file("a.bxd")), small_text()) << out;
  }
  expect_shell(2, "$bxdb convert - - --form text < a.bxd >> a.bxd");
  expect_shell(2, "$bxdb convert a.bxd /dev/fd/7 --form text 7>> a.bxd");
  EXPECT_TRUE(holds(expect_shell(2, "$bxdb print a.bxd >> a.bxd").err, "a.bxd: standard output goes into this file"));
  EXPECT_EQ(read_file(file("a.bxd")), small_text());
  made("q", "{\"name\": \"LEFT\"}\n");
  expect_shell(2, "$bxdb query a.bxd < q >> q");
  EXPECT_EQ(lines_of(read_file(file("q"))), 1U);
  made("b.bxd", text_of_tiles(six_tiles()));
  expect_shell(2, "$bxdb grid b.bxd --svg b.svg --json > b.svg");
  fs::create_symlink("b.bxd", file("soft"));
  expect_shell(2, "$bxdb grid b.bxd --svg soft");
  fs::create_symlink("new", file("dangling"));
  expect_shell(2, "$bxdb grid b.bxd --svg dangling --png new");
  EXPECT_FALSE(fs::exists(file("new")));
  EXPECT_EQ(read_file(file("b.bxd")), text_of_tiles(six_tiles()));
}

TEST_F(BxdbStreams, ADescriptionDoesNotReplaceTheDatabaseBehindItsName) {
  fs::create_symlink("a.bxd", file("a.npd"));
  expect_shell(2, "$bxdb generate a.bxd");
  EXPECT_FALSE(fs::exists(file("a.bxd")));
}

TEST_F(BxdbStreams, AReaderThatGoesAwayEndsTheProgramQuietlyOrWithASentence) {
  expect_shell(0, "$bxdb generate a.bxd --columns 60 --rows 60 --wires 40");
  for (const std::string& out : handles) {
    const std::string line = "{ $bxdb convert a.bxd " + out + " --form text; echo $? > status; } | true";
    EXPECT_EQ(shell(line).err, "") << out;
    EXPECT_EQ(read_file(file("status")), std::to_string(128 + SIGPIPE) + "\n");
    EXPECT_TRUE(holds(shell("trap '' PIPE; " + line).err, "cannot write: Broken pipe")) << out;
    EXPECT_EQ(read_file(file("status")), "2\n");
  }
}

TEST_F(BxdbStreams, AFullDeviceIsToldOnce) {
  made("a.bxd", small_text());
  for (const char* command : {"convert a.bxd - --form text", "generate -", "generate - --form text"}) {
    EXPECT_EQ(expect_shell(2, std::string("$bxdb ") + command + " > /dev/full").err,
              "bxdb: standard output: cannot write: No space left on device\n");
  }
}

TEST_F(BxdbStreams, AFullDeviceIsToldOnceByJsonAndTextToo) {
  made("a.bxd", text_of_tiles(six_tiles()));
  expect_shell(0, "$bxdb generate large.bxd");
  for (const char* command : {"grid a.bxd --json", "grid large.bxd --json", "find large.bxd BASIC_ASS", "info a.bxd"}) {
    EXPECT_EQ(expect_shell(2, std::string("$bxdb ") + command + " > /dev/full").err,
              "bxdb: standard output: cannot write: No space left on device\n")
        << command;
  }
}

TEST_F(BxdbStreams, AFileBeyondTheLimitForFileSizesIsAFaultAndLeavesNothing) {
  const outcome refused = expect_shell(2, "mkdir d && cd d && ulimit -f 16 && $bxdb generate a.bxd");
  EXPECT_TRUE(holds(refused.err, "a.bxd: cannot write: File too large")) << refused.err;
  EXPECT_TRUE(fs::is_empty(file("d")));
}

TEST_F(BxdbStreams, ThatAreClosedAreFaultsAndGetNoFileInTheirPlace) {
  made("a.bxd", text_of_tiles(six_tiles()));
  EXPECT_TRUE(holds(expect_shell(2, "$bxdb info - <&-").err, "standard input: cannot read: "));
  EXPECT_TRUE(holds(expect_shell(2, "$bxdb convert a.bxd - --form text >&-").err, "standard output: cannot write: "));
  EXPECT_TRUE(holds(expect_shell(2, "$bxdb check a.bxd >&-").err, "standard output: cannot write: "));
  expect_shell(0, "$bxdb convert a.bxd b.bxd --form text <&- >&- 2>&-");
  EXPECT_EQ(read_file(file("b.bxd")), text_of_tiles(six_tiles()));
}

TEST_F(BxdbStreams, ATerminalIsWritten) {
  ASSERT_EQ(std::system("script --version > /dev/null 2>&1"), 0) << "the terminals of this test are made by script";
  made("a.bxd", small_text());
  for (const std::string& out : {std::string("/dev/tty"), std::string("/dev/stdout"), std::string("-")}) {
    const std::string shown =
        expect_shell(0, "export bxdb; script -qec '$bxdb convert a.bxd " + out + " --form text' log").out;
    EXPECT_TRUE(holds(shown, "BX_WIRE:  \"J0\" (61, -5)\r\n")) << out << shown;
  }
}

}  // namespace
