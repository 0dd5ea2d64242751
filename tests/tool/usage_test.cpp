// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bxdb_runner.h"

namespace {

using namespace test;

const words all_commands = {"generate", "info", "check", "print", "convert", "explain",
                            "find",     "at",   "node",  "query", "grid",    "diff"};

class BxdbUsage : public ToolTest {};

TEST_F(BxdbUsage, HelpOfEachCommandEndsWellAndShowsAnExampleOfIt) {
  for (const std::string& command : all_commands) {
    const outcome help = expect(0, {command, "--help"});
    EXPECT_TRUE(holds(help.out, "Example: bxdb " + command + " ")) << command << help.out;
  }
}

TEST_F(BxdbUsage, HelpNamesEveryCommandAndTheExitStatuses) {
  const outcome help = expect(0, {"--help"});
  for (const std::string& command : all_commands) EXPECT_TRUE(holds(help.out, "  " + command + " ")) << command;
  EXPECT_TRUE(holds(help.out, "Exit status:"));
  EXPECT_TRUE(holds(help.out, "Example: bxdb "));
}

TEST_F(BxdbUsage, HelpOfEveryCommandNamesTheStandardStreamsThatItTakes) {
  for (const std::string& command : all_commands) {
    const std::string help = expect(0, {command, "--help"}).out;
    const bool writes = command == "generate" || command == "convert" || command == "grid";
    EXPECT_EQ(holds(help, "standard output"), writes) << command;
    EXPECT_EQ(holds(help, "standard input"), command != "generate") << command;
  }
}

TEST_F(BxdbUsage, VersionIsThatOfTheLibrary) {
  EXPECT_EQ(expect(0, {"--version"}).out, std::string("bxdb ") + BXDB_VERSION + "\n");
}

TEST_F(BxdbUsage, BadUseHasStatusTwoAndSaysSoOnStandardError) {
  const std::string db = made("a.bxd", small_text());
  for (const words& arguments : std::vector<words>{{},
                                                   {"nonsense"},
                                                   {"info"},
                                                   {"info", "--nonsense", db},
                                                   {"info", db, "surplus"},
                                                   {"at", db, "1"},
                                                   {"at", db, "one", "2"},
                                                   {"at", db, "1", "99999999999"},
                                                   {"node", db, "1"},
                                                   {"query"},
                                                   {"convert", db, file("b.bxd")},
                                                   {"convert", db, file("b.bxd"), "--form", "nonsense"},
                                                   {"find", db, "J0", "--instances", "--wires"},
                                                   {"generate", file("b.bxd"), "--names", "nonsense"},
                                                   {"info", db, "--max-size", "many"}}) {
    const outcome bad = expect(2, arguments);
    EXPECT_FALSE(bad.err.empty());
    EXPECT_TRUE(bad.out.empty()) << bad.out;
  }
}

TEST_F(BxdbUsage, EveryReadingCommandNamesTheFileThatIsMissingADirectoryOrNoDatabase) {
  const std::string good = made("good.bxd", small_text());
  const std::string no_database = made("readme.txt", "nothing of the kind\n");
  const std::string below_a_file = good + "/below.bxd";
  for (const std::string& bad : {file("missing.bxd"), folder_.name(), below_a_file, no_database}) {
    for (const words& arguments : std::vector<words>{{"info", bad},
                                                     {"print", bad},
                                                     {"convert", bad, file("out.bxd"), "--form", "text"},
                                                     {"explain", bad},
                                                     {"find", bad, "J0"},
                                                     {"at", bad, "1", "2"},
                                                     {"node", bad, "1", "2"},
                                                     {"query", bad},
                                                     {"grid", bad},
                                                     {"diff", bad, good},
                                                     {"diff", good, bad}}) {
      EXPECT_TRUE(holds(expect(2, arguments).err, bad + ":"));
    }
  }
  EXPECT_FALSE(std::filesystem::exists(file("out.bxd")));
}

TEST_F(BxdbUsage, AFileBeyondTheSizeLimitIsNotTakenIntoMemory) {
  const std::string db = made("a.bxd", small_text());
  const std::string size = std::to_string(small_text().size());
  expect(0, {"info", db, "--max-size", size});
  const outcome refused = expect(2, {"info", db, "--max-size", std::to_string(small_text().size() - 1)});
  EXPECT_TRUE(holds(refused.err, db + ": more than"));
}

}  // namespace
