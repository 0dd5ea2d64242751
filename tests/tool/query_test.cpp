// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The commands node and query.
#include "bxdb_runner.h"

namespace {

using test::holds;
using test::lines_of;
using test::outcome;
using test::small_text;
using json = nlohmann::json;

class BxdbNode : public test::ToolTest {};

TEST_F(BxdbNode, ListsTheWiresAtANodeWithTheRectanglesOfTheirInstances) {
  const std::string text = test::replaced(small_text(), "\"J1\" (9, 10)", "\"J1\" (60, -5)");
  const std::string db = made("a.bxd", text);
  EXPECT_EQ(expect(0, {"node", db, "60", "-5"}).out,
            "wire chip/LEFT/BASIC_ASS/J1 (0, 0) (20, 20)\nwire chip/RIGHT/J0 (50, -20) (100, 30)\n");
  const json found = json_of(0, {"node", db, "60", "-5"});
  EXPECT_EQ(found["count"], 2);
  EXPECT_EQ(found["wires"][0]["wire"], "J1");
  EXPECT_EQ(found["wires"][1]["instance"], "chip/RIGHT");
  EXPECT_EQ(found["wires"][1]["box"]["xmin"], 50);
}

TEST_F(BxdbNode, WithoutWiresHasStatusOneAndNamesTheFile) {
  const std::string db = made("a.bxd", small_text());
  const outcome none = expect(1, {"node", db, "60", "5"});
  EXPECT_EQ(none.out, "");
  EXPECT_EQ(none.err, db + ": no wire at node (60, 5)\n");
  EXPECT_EQ(json_of(1, {"node", db, "60", "5"})["count"], 0);
}

class BxdbQuery : public test::ToolTest {
 protected:
  /// The answers to lines of questions, and the status.
  std::vector<json> asked(int status, const std::string& lines) const {
    const outcome result = run({"query", made("a.bxd", small_text())}, made("questions", lines));
    EXPECT_EQ(result.status, status) << result.out << result.err;
    std::vector<json> answers;
    std::istringstream stream(result.out);
    for (std::string line; std::getline(stream, line);) answers.push_back(json::parse(line));
    return answers;
  }

  /// The answer to one question.
  json answer(const std::string& question) const {
    const std::vector<json> answers = asked(0, question + "\n");
    EXPECT_EQ(answers.size(), 1U);
    return answers.empty() ? json() : answers[0];
  }

  std::string error(const std::string& line) const {
    const std::vector<json> answers = asked(1, line + "\n");
    EXPECT_EQ(answers.size(), 1U) << line;
    return answers.empty() ? "" : answers[0].value("error", "");
  }
};

std::vector<std::string> paths(const json& list) {
  std::vector<std::string> found;
  for (const json& each : list) found.push_back(each["path"]);
  return found;
}

using texts = std::vector<std::string>;

const std::string valid_keys =
    "valid are \"name\", \"at\", \"meeting\", \"node\", \"wire\", \"instance\", and beside these \"in\", \"most\", "
    "\"id\"";

TEST_F(BxdbQuery, AnswersByNameAndPlace) {
  const json named = answer(R"({"name": "BASIC_ASS"})");
  EXPECT_EQ(named["count"], 1);
  EXPECT_EQ(named["instances"][0], json::parse(R"({"instance": 2, "path": "chip/LEFT/BASIC_ASS",
                            "box": {"xmin": 0, "ymin": 0, "xmax": 20, "ymax": 20}})"));
  EXPECT_EQ(paths(answer(R"({"at": [20, 20]})")["instances"]), (texts{"chip", "chip/LEFT", "chip/LEFT/BASIC_ASS"}));
  EXPECT_EQ(paths(answer(R"({"meeting": [60, 40, 40, 21]})")["instances"]), (texts{"chip", "chip/LEFT", "chip/RIGHT"}));
  EXPECT_EQ(answer(R"({"node": [9, 10]})"), json::parse(R"({"count": 1, "wires": [
              {"wire": "J1", "node": {"x": 9, "y": 10}, "in": 2, "path": "chip/LEFT/BASIC_ASS"}]})"));
}

TEST_F(BxdbQuery, NothingFoundIsAnAnswer) {
  EXPECT_EQ(answer(R"({"name": "NOPE"})"), json::parse(R"({"count": 0, "instances": []})"));
  EXPECT_EQ(answer(R"({"node": [-2147483648, 2147483647]})"), json::parse(R"({"count": 0, "wires": []})"));
  EXPECT_EQ(answer(R"({"wire": "J0", "in": "chip/NOPE"})")["count"], 0);
}

TEST_F(BxdbQuery, FindsWiresInAnInstanceGivenByNumberOrPath) {
  const json by_number = answer(R"({"wire": "J0", "in": 3})");
  EXPECT_EQ(by_number["count"], 2);
  EXPECT_EQ(by_number["wires"][1]["node"]["x"], 61);
  EXPECT_EQ(answer(R"({"wire": "J0", "in": "chip/RIGHT"})"), by_number);
  EXPECT_EQ(answer(R"({"wire": "CLK", "in": "chip"})")["wires"][0]["path"], "chip");
}

TEST_F(BxdbQuery, TellsTheNeighboursOfAnInstance) {
  const json left = answer(R"({"instance": "chip/LEFT"})")["instances"][0];
  EXPECT_EQ(left["instance"], 1);
  EXPECT_EQ(left["depth"], 1);
  EXPECT_EQ(left["wires"], 3);
  EXPECT_EQ(left["children"], 1);
  EXPECT_EQ(left["parent"], 0);
  EXPECT_EQ(left["next"], 2);
  EXPECT_EQ(left["next_past"], 3);
  const json last = answer(R"({"instance": 3})")["instances"][0];
  EXPECT_TRUE(last["next"].is_null());
  EXPECT_TRUE(answer(R"({"instance": 0})")["instances"][0]["parent"].is_null());
}

TEST_F(BxdbQuery, PathsMayHoldNamesWithSlashesAndBeThoseOfSeveral) {
  std::string text = test::replaced(small_text(), "\"RIGHT\"", "\"LEFT/BASIC_ASS\"");
  const outcome result = run({"query", made("b.bxd", text)},
                             made("questions", "{\"instance\": \"chip/LEFT/BASIC_ASS\"}\n{\"instance\": \"LEFT\"}\n"));
  std::istringstream lines(result.out);
  std::string line;
  std::getline(lines, line);
  const json found = json::parse(line);
  ASSERT_EQ(found["count"], 2) << line;
  EXPECT_EQ(found["instances"][0]["instance"], 2);
  EXPECT_EQ(found["instances"][1]["instance"], 3);
  std::getline(lines, line);
  EXPECT_EQ(json::parse(line)["count"], 0) << "a path begins at the root";
}

TEST_F(BxdbQuery, KeepsTheIdAndTheLengthOfListsAskedFor) {
  const json answered = answer(R"({"at": [20, 20], "most": 1, "id": {"mine": [7]}})");
  EXPECT_EQ(answered["id"], json::parse(R"({"mine": [7]})"));
  EXPECT_EQ(answered["count"], 3);
  EXPECT_EQ(answered["instances"].size(), 1U);
  EXPECT_EQ(answer(R"({"wire": "J0", "in": 3, "most": 0})")["wires"].size(), 0U);
}

TEST_F(BxdbQuery, GoesOnBehindLinesThatAreNoQuestions) {
  const std::vector<json> answers = asked(1, "what?\n\n   \n{\"id\": 5, \"who\": 1}\n{\"name\": \"LEFT\"}");
  ASSERT_EQ(answers.size(), 3U);
  EXPECT_EQ(answers[0]["error"], "no JSON; see its character 1");
  EXPECT_EQ(answers[1]["id"], 5);
  EXPECT_EQ(answers[1]["error"], "no question has a \"who\"; " + valid_keys);
  EXPECT_EQ(answers[2]["count"], 1) << "the last line needs no end";
}

TEST_F(BxdbQuery, SaysWhatIsWrongWithAQuestion) {
  EXPECT_EQ(error("[]"), "a question is an object");
  EXPECT_EQ(error("{}"), "nothing is asked; " + valid_keys);
  EXPECT_EQ(error(R"({"name": "A", "at": [1, 2]})"), "\"name\" and \"at\" are two questions");
  EXPECT_EQ(error(R"({"name": 1})"), "\"name\" takes a text");
  EXPECT_EQ(error(R"({"wire": "A"})"), "\"wire\" and \"in\" go together");
  EXPECT_EQ(error(R"({"name": "A", "in": 1})"), "\"wire\" and \"in\" go together");
  EXPECT_EQ(error(R"({"wire": "A", "in": 4})"), "there is no instance 4");
  EXPECT_EQ(error(R"({"instance": -1})"), "an instance is given by its number or its path");
  EXPECT_EQ(error(R"({"name": "A", "most": -1})"), "\"most\" takes a whole number that is not negative");
  const std::string pair = "\"node\" takes a list of 2 whole numbers of 32 bits";
  for (const char* value : {"[1]", "[1, 2, 3]", "[1, 2.5]", "[1, 2147483648]", "[1, -2147483649]", "7",
                            "[18446744073709551615, 0]", "[1, 99999999999999999999]"}) {
    EXPECT_EQ(error(std::string("{\"node\": ") + value + "}"), pair) << value;
  }
}

TEST_F(BxdbQuery, ListsTheValidKeysForOnesThatAreUnknownOrThereTwice) {
  EXPECT_EQ(error(R"({"name": "LEFT", "Most": 1})"), "no question has a \"Most\"; " + valid_keys);
  EXPECT_EQ(error(R"({"name": "LEFT", "name": "RIGHT"})"), "\"name\" is there twice; " + valid_keys);
  EXPECT_EQ(error(R"({"name": "LEFT", "na\u006de": "LEFT"})"), "\"name\" is there twice; " + valid_keys);
  const json twice = asked(1, "{\"id\": 5, \"name\": \"LEFT\", \"most\": 1, \"most\": 2}\n").at(0);
  EXPECT_EQ(twice["id"], 5);
  EXPECT_EQ(twice["error"], "\"most\" is there twice; " + valid_keys);
  EXPECT_EQ(error(R"({"name": "LEFT", "id": {"a": {"b": 1, "b": 1}}})"),
            "\"b\" is there twice; an object has each key once");
  EXPECT_EQ(answer(R"({"name": "LEFT", "id": [{"a": 1}, {"a": 1, "name": 2}]})")["count"], 1);
}

TEST_F(BxdbQuery, ANulCharacterInATextIsAnErrorAndEndsNoName) {
  for (const char* question : {R"({"name": "LEFT\u0000"})", R"({"wire": "CLK\u0000x", "in": 0})",
                               R"({"wire": "CLK", "in": "chip\u0000"})", R"({"instance": "\u0000chip"})"}) {
    EXPECT_TRUE(holds(error(question), "holds the character \\u0000, which no name does")) << question;
  }
  EXPECT_EQ(error(R"({"name\u0000": "LEFT"})"), "no question has a \"name\\u0000\"; " + valid_keys);
  EXPECT_EQ(answer(R"({"name": "LEFT", "id": "a\u0000b"})")["id"], std::string("a\0b", 3));
}

TEST_F(BxdbQuery, NestedAHundredThousandDeepIsAnErrorAndTheNextQuestionIsAnswered) {
  const auto nested = [](std::size_t levels) {
    return "{\"id\": " + std::string(levels - 1, '[') + std::string(levels - 1, ']') + ", \"name\": \"LEFT\"}\n";
  };
  const std::vector<json> answers = asked(1, nested(100000) + nested(65) + nested(64));
  ASSERT_EQ(answers.size(), 3U);
  EXPECT_EQ(answers[0]["error"], "lists and objects are nested deeper than 64 levels");
  EXPECT_EQ(answers[1], answers[0]);
  EXPECT_EQ(answers[2]["count"], 1);
  std::string objects = "{\"id\": ";
  for (int i = 0; i < 100000; ++i) objects += "{\"a\":";
  EXPECT_EQ(error(objects), "lists and objects are nested deeper than 64 levels");
}

TEST_F(BxdbQuery, ANumberBeyondAllRangesIsAnError) {
  EXPECT_EQ(error(R"({"name": "LEFT", "id": 1e999})"), "a number is too large");
  EXPECT_EQ(error(R"({"node": [1e999, 0]})"), "a number is too large");
}

TEST_F(BxdbQuery, ALineThatIsTooLongIsNotKept) {
  const std::string question = "{\"name\": \"LEFT\"}";
  const std::vector<json> answers = asked(1, std::string(3 << 20, '[') + "\n" + question + "\n");
  ASSERT_EQ(answers.size(), 2U);
  EXPECT_EQ(answers[0]["error"], "the line is too long");
  EXPECT_EQ(answers[1]["count"], 1);
  EXPECT_EQ(asked(0, std::string((1 << 20) - question.size(), ' ') + question + "\n")[0]["count"], 1);
}

TEST_F(BxdbQuery, NamesThatAreNoUnicodeAreShownWithReplacements) {
  const std::string text = test::replaced(small_text(), "\"RIGHT\"", "\"R\xff\"");
  const outcome result = run({"query", made("b.bxd", text)}, made("questions", "{\"instance\": 3}\n"));
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(holds(result.out, "chip/R\xEF\xBF\xBD")) << result.out;
}

TEST_F(BxdbQuery, WhatCannotBeReadIsAFailure) {
  EXPECT_EQ(run({"query", file("none.bxd")}).status, 2);
  const outcome folder = run({"query", made("a.bxd", small_text())}, folder_.name());
  EXPECT_EQ(folder.status, 2);
  EXPECT_TRUE(holds(folder.err, "standard input")) << folder.err;
}

TEST_F(BxdbQuery, EndsWithItsInput) {
  const outcome result = run({"query", made("a.bxd", small_text())});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "");
}

TEST_F(BxdbQuery, ALineThatIsTooLongIsAnsweredWhateverItBeginsWith) {
  const std::vector<json> answers = asked(1, std::string(1 << 20, ' ') + "{\"name\": \"LEFT\"}\n");
  ASSERT_EQ(answers.size(), 1U);
  EXPECT_EQ(answers[0]["error"], "the line is too long");
}

TEST_F(BxdbQuery, ANulByteInALineIsAnErrorAndEndsNoQuestion) {
  const std::string nul(1, '\0');
  const std::string question = R"({"name": "LEFT"})";
  EXPECT_EQ(error(question + nul), "no JSON: a NUL byte; see its character 17");
  EXPECT_EQ(error(question + nul + R"(, "most": 1})"), "no JSON: a NUL byte; see its character 17");
  EXPECT_EQ(error(nul), "no JSON: a NUL byte; see its character 1");
}

}  // namespace
