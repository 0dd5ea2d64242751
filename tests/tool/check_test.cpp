// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bxdb_runner.h"
#include "packing_formats.h"
#include "program.h"

namespace {

using namespace test;

class BxdbCheck : public ToolTest {};

TEST_F(BxdbCheck, ASoundFileGivesOneLineAndStatusZero) {
  const std::string db = made("a.bxd", small_text());
  const outcome sound = expect(0, {"check", db});
  EXPECT_EQ(sound.out, db + ": sound: text database file, 4 instances, 8 wires; 0 errors, 0 warnings, 0 notes\n");
  EXPECT_TRUE(sound.err.empty());
}

TEST_F(BxdbCheck, AFaultNamesFileLineAndPath) {
  // The right child stands before the left one: a fault of order.
  const std::string db = made("a.bxd", replaced(small_text(), "\"LEFT\" (0, 0) (40, 40)", "\"LEFT\" (70, 0) (90, 40)"));
  const outcome bad = expect(1, {"check", db});
  EXPECT_TRUE(holds(bad.out, db + ": warning: line 17: ")) << bad.out;
  EXPECT_TRUE(holds(bad.out, "chip/RIGHT")) << bad.out;
  EXPECT_TRUE(holds(bad.out, db + ": loadable, but")) << bad.out;
}

TEST_F(BxdbCheck, ATextCutOffAnywhereIsInvalidAndNamesThePlace) {
  const std::string whole = small_text();
  for (std::size_t length = 0; length + 1 < whole.size(); length += 23 * start_stride) {
    const std::string db = made("cut.bxd", whole.substr(0, length));
    const outcome bad = expect(1, {"check", db});
    EXPECT_TRUE(holds(bad.out, db + ": error: ")) << length << bad.out;
    EXPECT_EQ(bad.err, "");
    expect(2, {"info", db});
  }
}

TEST_F(BxdbCheck, ABinaryFileCutOffAnywhereIsInvalidAndNamesThePlace) {
  expect(0, {"convert", made("a.bxd", small_text()), file("b.bxd"), "--form", "binary"});
  const std::string whole = read_file(file("b.bxd"));
  for (std::size_t length = 8; length < whole.size(); length += 29 * start_stride) {
    const std::string db = made("cut.bxd", whole.substr(0, length));
    const outcome bad = expect(1, {"check", db});
    EXPECT_TRUE(holds(bad.out, db + ": error: byte ")) << length << bad.out;
    expect(2, {"print", db});
  }
}

TEST_F(BxdbCheck, AFileThatIsNoDatabaseIsInvalidAndOneThatCannotBeReadIsAFailure) {
  expect(1, {"check", made("a.txt", "nothing\n")});
  expect(1, {"check", made("empty.bxd", "")});
  EXPECT_TRUE(holds(expect(2, {"check", file("missing.bxd")}).err, file("missing.bxd") + ": "));
  EXPECT_TRUE(holds(expect(2, {"check", folder_.name()}).err, folder_.name() + ": "));
}

TEST_F(BxdbCheck, TextThatWouldEndALoadingProcessIsOnlyReported) {
  const std::string long_name(100, 'n');
  expect(1, {"check", made("a.bxd", replaced(small_text(), "\"J1\"", '"' + long_name + '"'))});
  expect(1, {"check", made("a.bxd", "BX_DB:A\nBX_INSTANCE: ")});
  expect(1, {"check", made("a.bxd", replaced(small_text(), "(9, 10)", "(" + std::string(200, '9') + ", 10)"))});
}

TEST_F(BxdbCheck, CountsThatTheBytesCannotHoldAreReported) {
  const std::string db = made("a.bxd", replaced(small_text(), "(0, 0) (20, 20)\n2\n", "(0, 0) (20, 20)\n2000000000\n"));
  EXPECT_TRUE(holds(expect(1, {"check", db}).out, db + ": error: line "));
  expect(2, {"info", db});
}

TEST_F(BxdbCheck, JsonTellsWhatTheTextTells) {
  const nlohmann::json sound = json_of(0, {"check", made("a.bxd", small_text())});
  EXPECT_EQ(sound["form"], "text");
  EXPECT_EQ(sound["instances"], 4);
  EXPECT_EQ(sound["wires"], 8);
  EXPECT_EQ(sound["dollar_wires"], 2);
  EXPECT_TRUE(sound["faults"].empty());
  const nlohmann::json bad = json_of(1, {"check", made("b.bxd", small_text().substr(0, 200))});
  EXPECT_EQ(bad["loadable"], false);
  EXPECT_EQ(bad["faults"][0]["severity"], "error");
  EXPECT_GT(bad["faults"][0]["line"], 1);
}

TEST_F(BxdbCheck, AForeignFileIsNamedForWhatItIs) {
  const std::pair<std::string, std::string> kinds[] = {{"", "empty"},
                                                       {"\x89PNG\r\n\x1a\n....", "a PNG picture"},
                                                       {"<?xml version=\"1.0\"?>\n<svg/>\n", "an SVG picture"},
                                                       {"\xff\xd8\xff\xe0....", "a JPEG picture"},
                                                       {"NP_DEVICE:1\nrows 1 0 1\n", "a device description"}};
  for (const auto& [bytes, kind] : kinds) {
    const std::string name = made("a.bxd", bytes);
    EXPECT_EQ(expect(1, {"check", name}).out, name + ": error: byte 0: not a BX_DB file: it is " + kind + "\n" + name +
                                                  ": invalid: not a BX_DB file, it is " + kind +
                                                  "; 1 error, 0 warnings, 0 notes\n");
    const nlohmann::json told = json_of(1, {"check", name});
    EXPECT_EQ(told["foreign_kind"], kind);
    EXPECT_TRUE(told["form"].is_null());
    EXPECT_TRUE(told["content"].is_null());
    EXPECT_TRUE(holds(expect(2, {"info", name}).err, "not a BX_DB file: it is " + kind));
  }
  const std::string other = made("b.bxd", "hello\n");
  EXPECT_TRUE(holds(expect(1, {"check", other}).out, other + ": invalid: not a BX_DB file; 1 error")) << other;
  EXPECT_TRUE(json_of(1, {"check", other})["foreign_kind"].is_null());
}

TEST_F(BxdbCheck, AFileThatEndsBeforeItTellsWhatItHoldsIsUndetermined) {
  const std::string only = made("a.bxd", "BX_DB:A");
  EXPECT_TRUE(holds(expect(1, {"check", only}).out, only + ": invalid: undetermined file; 1 error"));
  EXPECT_TRUE(json_of(1, {"check", only})["content"].is_null());
  for (const std::size_t lines : {1U, 2U, 3U}) {
    std::size_t end = 0;
    for (std::size_t i = 0; i < lines; ++i) end = small_text().find('\n', end) + 1;
    const std::string cut = made("cut.bxd", small_text().substr(0, end));
    const outcome bad = expect(1, {"check", cut});
    EXPECT_TRUE(holds(bad.out, ": invalid: text file, undetermined whether database or grid, ")) << bad.out;
    const nlohmann::json told = json_of(1, {"check", cut});
    EXPECT_EQ(told["form"], "text");
    EXPECT_TRUE(told["content"].is_null()) << told["content"];
  }
  EXPECT_EQ(json_of(1, {"check", file("cut.bxd"), "--grid-file"})["content"], "grid");
}

TEST_F(BxdbCheck, ADatabaseUnderTheNameOfAGridFileIsToldToBeOne) {
  expect(0, {"convert", made("a.bxd", small_text()), file("b.bxd"), "--form", "binary"});
  for (const auto& [form, name] : {std::pair("text", file("a.bxd")), std::pair("binary", file("b.bxd"))}) {
    const std::string grid = made("c.bxg", read_file(name));
    const outcome bad = expect(1, {"check", grid});
    EXPECT_TRUE(holds(bad.out, "; the file is a database file, but a grid file was expected")) << bad.out;
    EXPECT_TRUE(holds(bad.out, grid + ": invalid: " + form + " database file; 1 error")) << bad.out;
    EXPECT_EQ(json_of(1, {"check", grid})["content"], "database");
    EXPECT_TRUE(holds(expect(2, {"info", grid}).err, "the file is a database file, but a grid file was expected"));
  }
}

TEST_F(BxdbCheck, AgreesWithInfoInAllThatBothTell) {
  expect(0, {"generate", file("a.bxd"), "--columns", "5", "--rows", "5"});
  expect(0, {"generate", file("g.bxg"), "--columns", "5", "--rows", "5"});
  expect(0, {"convert", file("a.bxd"), file("t.bxd"), "--form", "text"});
  expect(0, {"convert", file("t.bxd"), file("b.bxd"), "--form", "binary"});
  expect(0, {"convert", file("a.bxd"), file("c.bxd"), "--form", "compressed"});
  expect(0, {"convert", file("g.bxg"), file("t.bxg"), "--form", "text"});
  made("packed.bxd", packings().front().pack(read_file(file("t.bxd"))));
  made("unsorted.bxd", replaced(small_text(), "\"LEFT\" (0, 0) (40, 40)", "\"LEFT\" (70, 0) (90, 40)"));
  for (const char* name : {"a.bxd", "b.bxd", "c.bxd", "t.bxd", "g.bxg", "t.bxg", "packed.bxd", "unsorted.bxd"}) {
    const nlohmann::json info = json_of(0, {"info", file(name)});
    const nlohmann::json check = json_of(std::string(name) == "unsorted.bxd" ? 1 : 0, {"check", file(name)});
    for (const auto& [key, value] : info.items()) {
      EXPECT_EQ(check.value(key, value), value) << name << " " << key;
    }
    for (const char* key : {"file", "form", "content", "packing", "bytes", "bytes_on_disk", "instances", "wires",
                            "names", "name_table", "depth", "errors", "warnings", "notes"}) {
      EXPECT_TRUE(info.contains(key) && check.contains(key)) << key;
    }
    const std::string text = expect(0, {"info", file(name)}).out;
    EXPECT_TRUE(holds(text, "distinct names " + check["names"].dump() + "\n")) << text;
    EXPECT_TRUE(holds(text, "faults         0 errors, " + info["warnings"].dump() + " warning")) << text;
  }
  EXPECT_EQ(json_of(0, {"check", made("s.bxd", small_text())})["names"], 9);
}

TEST_F(BxdbCheck, ControlCharactersOfNamesAreEscaped) {
  const std::string db = made("a.bxd", replaced(small_text(), "\"RIGHT\" (50, ", "\"\x1b[2J\" (-9, "));
  const outcome bad = expect(1, {"check", db});
  EXPECT_TRUE(holds(bad.out, "\\x1B[2J")) << bad.out;
  EXPECT_FALSE(holds(bad.out, "\x1b"));
}

TEST_F(BxdbCheck, MostLimitsWhatIsDescribedAndSaysSo) {
  std::string text = "BX_DB:A\nBX_INSTANCE: \"r\" (0, 0) (9, 9)\n50\n";
  for (int i = 50; i > 0; --i) text += "BX_WIRE:  \"W" + std::to_string(100 + i) + "\" (1, 1)\n";
  const std::string db = made("a.bxd", text + "0\n");
  const outcome some = expect(1, {"check", db, "--most", "3"});
  EXPECT_EQ(lines_of(some.out), 4U) << some.out;
  EXPECT_TRUE(holds(some.out, "not shown; see --most"));
}

TEST_F(BxdbCheck, ACompressedFileOfZerosIsInvalid) {
  const std::string db = made("a.bxd", "BX_DB:C\n" + std::string(40, '\0'));
  EXPECT_TRUE(holds(expect(1, {"check", db}).out, "invalid: compressed database file"));
  expect(2, {"info", db});
}

}  // namespace
