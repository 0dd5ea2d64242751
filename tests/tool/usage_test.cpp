// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <limits>

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
    EXPECT_TRUE(bad.err.starts_with("bxdb: ")) << bad.err;
    EXPECT_EQ(lines_of(bad.err), 1U) << bad.err;
    EXPECT_TRUE(bad.out.empty()) << bad.out;
  }
}

TEST_F(BxdbUsage, HelpAndVersionMayBeAskedForAsCommands) {
  EXPECT_EQ(expect(0, {"help"}).out, expect(0, {"--help"}).out);
  EXPECT_EQ(expect(0, {"version"}).out, expect(0, {"--version"}).out);
  for (const std::string& command : all_commands) {
    EXPECT_EQ(expect(0, {"help", command}).out, expect(0, {command, "--help"}).out);
  }
  EXPECT_EQ(expect(2, {"help", "gird"}).err,
            "bxdb: there is no command \"gird\"; did you mean grid? (see bxdb --help)\n");
}

TEST_F(BxdbUsage, WordsThatNothingIsMadeOfAreToldWithWhatTheyMayHaveBeenMeantToBe) {
  const std::string db = made("a.bxd", small_text());
  const std::vector<std::pair<words, std::string>> cases = {
      {{}, "a command is needed (see bxdb --help)"},
      {{"inf"}, "there is no command \"inf\"; did you mean info? (see bxdb --help)"},
      {{"ifno", db, "--json"}, "there is no command \"ifno\"; did you mean info? (see bxdb --help)"},
      {{"gen", db}, "there is no command \"gen\"; did you mean generate? (see bxdb --help)"},
      {{"nonsense"}, "there is no command \"nonsense\" (see bxdb --help)"},
      {{"--versoin"}, "there is no option --versoin; did you mean --version? (see bxdb --help)"},
      {{"info", db, "--jsn"}, "info: there is no option --jsn; did you mean --json? (see bxdb info --help)"},
      {{"info", "--max-wirs=3"},
       "info: there is no option --max-wirs; did you mean --max-wires? (see bxdb info --help)"},
      {{"info", db, "--nonsense", "3"}, "info: there is no option --nonsense (see bxdb info --help)"},
      {{"info", db, "b", "c"}, "info: \"b\" is one word too many (see bxdb info --help)"},
      {{"info"}, "info: FILE is required (see bxdb info --help)"},
      {{"info", db, "--max-wires"}, "info: --max-wires needs a value (see bxdb info --help)"},
      {{"convert", db, db, "--form", "txt"},
       "convert: --form: \"txt\" is none of text, binary, compressed; did you mean text? (see bxdb convert --help)"}};
  for (const auto& [arguments, sentence] : cases) EXPECT_EQ(expect(2, arguments).err, "bxdb: " + sentence + "\n");
}

TEST_F(BxdbUsage, ANumberIsReadAsItIsWrittenOrRefused) {
  const std::string db = made("a.bxd", small_text());
  const std::string most = std::to_string(std::numeric_limits<std::int64_t>::max());
  for (const char* bad : {"-1", "x", "", "1.5", "1e3", "0x10", " 8", "9223372036854775808", "99999999999999999999"}) {
    EXPECT_EQ(expect(2, {"info", db, "--max-wires", bad}).err, std::string("bxdb: info: --max-wires: \"") + bad +
                                                                   "\" is not a whole number from 0 to " + most +
                                                                   " (see bxdb info --help)\n");
  }
  expect(0, {"info", db, "--max-wires", "8"});
  expect(0, {"info", db, "--max-wires", "+008"});
  EXPECT_TRUE(holds(expect(2, {"info", db, "--max-wires", "0000000007"}).err, "beyond the limit of 7"));
  EXPECT_TRUE(
      holds(expect(2, {"generate", file("b.bxd"), "--seed", "-1"}).err, "--seed: \"-1\" is not a whole number"));
  EXPECT_TRUE(holds(expect(2, {"explain", db, "--most", "-1"}).err, "--most: \"-1\" is not a whole number from 0 to "));
  EXPECT_TRUE(holds(expect(2, {"at", db, "2147483648", "0"}).err,
                    "X: \"2147483648\" is not a whole number from -2147483648 to 2147483647"));
  expect(1, {"at", db, "-2147483648", "0"});
}

TEST_F(BxdbUsage, ASizeMayHaveAFractionBeforeItsUnit) {
  const std::string db = made("a.bxd", std::string(small_text()));
  const auto limit_of = [&](const std::string& size) {
    const std::string err = run({"info", db, "--max-size", size}).err;
    const std::string before = db + ": more than ";
    const std::size_t at = err.find(before);
    return at == std::string::npos ? err : err.substr(at + before.size(), err.find(" bytes", at) - at - before.size());
  };
  EXPECT_EQ(limit_of("0.25k"), "256");
  EXPECT_EQ(limit_of("0.25 KiB"), "256");
  EXPECT_EQ(limit_of("0.0001M"), "104");
  EXPECT_EQ(limit_of("010"), "10");
  EXPECT_EQ(limit_of("12B"), "12");
  EXPECT_EQ(limit_of("1.5G"), "");
  EXPECT_EQ(limit_of("7.999E"), "");
  for (const char* bad : {"-1", "-1G", "many", "1.5", "1,5G", ".5G", "1.G", "1.5.5G", "1Q", "1GiG", "G", "", "0x1"}) {
    EXPECT_EQ(
        expect(2, {"info", db, "--max-memory", bad}).err,
        std::string("bxdb: info: --max-memory: \"") + bad +
            "\" is no size: it takes a number of bytes, or a number and a unit, K, M, G, T, P or E, such as 512M or "
            "1.5G (see bxdb info --help)\n");
  }
  for (const char* large : {"8E", "99999999999999999999", "99999999999999G", "9223372036854775808"}) {
    EXPECT_TRUE(holds(expect(2, {"info", db, "--max-memory", large}).err, "is too large: sizes are below 8E")) << large;
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

TEST_F(BxdbUsage, HelpAndVersionTakeNoMoreWordsThanTheyNeed) {
  const std::string help = expect(0, {"--help"}).out;
  for (const char* about : {"help", "version", "--help"}) EXPECT_EQ(expect(0, {"help", about}).out, help);
  const std::vector<std::pair<words, std::string>> cases = {
      {{"help", "info", "grid"}, "help: \"grid\" is one word too many (see bxdb --help)"},
      {{"version", "info"}, "version: \"info\" is one word too many (see bxdb --help)"},
      {{"help", "--json"}, "there is no command \"--json\" (see bxdb --help)"},
      {{"hlep"}, "there is no command \"hlep\"; did you mean help? (see bxdb --help)"},
      {{"verison"}, "there is no command \"verison\"; did you mean version? (see bxdb --help)"}};
  for (const auto& [line, text] : cases) EXPECT_EQ(expect(2, line).err, "bxdb: " + text + "\n");
}

TEST_F(BxdbUsage, AnOptionInAWrongPlaceOrGivenTwiceIsToldAsThat) {
  const std::string db = made("a.bxd", small_text());
  const std::vector<std::pair<words, std::string>> cases = {
      {{"--json", "info", db}, "info: --json belongs after the command (see bxdb info --help)"},
      {{"--max-size=5", "info", db}, "info: --max-size belongs after the command (see bxdb info --help)"},
      {{"info", db, "--max-size", "5M", "--max-size", "6M"}, "info: --max-size is given twice (see bxdb info --help)"},
      {{"info", db, "--", "--json"}, "info: \"--json\" is one word too many (see bxdb info --help)"},
      {{"info", db, "--max-size"}, "info: --max-size needs a value (see bxdb info --help)"}};
  for (const auto& [line, text] : cases) EXPECT_EQ(expect(2, line).err, "bxdb: " + text + "\n");
}

TEST_F(BxdbUsage, ControlCharactersBeyondAsciiAreShownAsBytesAndLettersAsTheyAre) {
  // A control character of two bytes, the same as a byte of its own, what only looks like letters, and letters.
  const std::string name = "\xc2\x9bX\x9b\xc0\x80\xed\xa0\x9f|\xc3\xa4\xe2\x9b\x84\xf0\x9f\x98\x80\xc2\xa0";
  const std::string shown = "\\xc2\\x9bX\\x9b\xc0\\x80\xed\xa0\\x9f|\xc3\xa4\xe2\x9b\x84\xf0\x9f\x98\x80\xc2\xa0";
  const std::string db = made("a.bxd", replaced(small_text(), "\"RIGHT\"", '"' + name + '"'));
  std::vector<words> lines = {{"at", db, "60", "0"},    {"print", db},   {"grid", db, "--derive-device"},
                              {"node", db, "60", "-5"}, {"explain", db}, {"diff", db, made("b.bxd", small_text())}};
#ifndef _WIN32  // where a word of a command line is valid UTF-8
  lines.push_back({"find", db, name});
#endif
  for (const words& line : lines) {
    const std::string out = run(line).out;
    EXPECT_TRUE(holds(out, shown)) << line[0] << "\n" << out;
    EXPECT_FALSE(holds(out, "X\x9b")) << line[0];
  }
  EXPECT_TRUE(holds(expect(1, {"find", db, "\xc2\x85"}).err, "nothing named \"\\xc2\\x85\""));
}

}  // namespace
