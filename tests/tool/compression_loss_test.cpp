// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What a compressed file cannot give back, and what cannot be compressed at all.
#include <sstream>

#include "bxdb_runner.h"
#include "loss_proof.h"

namespace {

using namespace test;

/// A text record of an instance; its children follow.
std::string instance(const std::string& name, int x, int y, const words& wires, int children = 0) {
  std::ostringstream text;
  text << "BX_INSTANCE: \"" << name << "\" (" << x << ", " << y << ") (" << x + 9 << ", " << y + 9 << ")\n"
       << wires.size() << "\n";
  for (const std::string& wire : wires) text << "BX_WIRE:  " << wire << "\n";
  text << children << "\n";
  return text.str();
}

/// A text file of a root and these children.
std::string file_of(const words& children) {
  std::string text = "BX_DB:A\n" + instance("r", 0, 0, {}, static_cast<int>(children.size()));
  for (const std::string& child : children) text += child;
  return text;
}

class BxdbLosses : public ToolTest {
 protected:
  words line() const { return {"convert", in_, out_, "--form", "compressed"}; }

  /// Expects these lines, each behind the name of the input; the file is refused, and written when it is allowed to
  /// lose. Then its text is that given.
  void expect_losses(const std::string& text, const words& reports, const std::string& back) {
    made("in.bxd", text);
    std::string expected;
    for (const std::string& report : reports) expected += "bxdb: " + in_ + ": " + report + "\n";
    for (const char* old : {"", "old content"}) {
      std::filesystem::remove(out_);
      if (*old != '\0') made("out.bxd", old);
      const outcome refused = expect(1, line());
      EXPECT_EQ(refused.err,
                expected + "bxdb: " + out_ + ": not written: it would not give everything back; see --allow-loss\n");
      EXPECT_EQ(refused.out, "");
      EXPECT_EQ(std::filesystem::exists(out_), *old != '\0');
      if (std::filesystem::exists(out_)) {
        EXPECT_EQ(read_file(out_), old);
      }
    }
    words allowed = line();
    allowed.emplace_back("--allow-loss");
    EXPECT_EQ(expect(0, allowed).err, expected);
    EXPECT_EQ(json_of(0, {"info", out_})["form"], "compressed");
    expect(0, {"convert", out_, file("back.bxd"), "--form", "text"});
    EXPECT_EQ(read_file(file("back.bxd")), back);
  }

  /// Expects these lines, each behind the name of the input, and no file, whether or not losses are allowed.
  void expect_objections(const std::string& text, const words& reports) {
    made("in.bxd", text);
    std::string expected;
    for (const std::string& report : reports) expected += "bxdb: " + in_ + ": " + report + "\n";
    const std::string reasons = std::to_string(reports.size()) + (reports.size() == 1 ? " reason" : " reasons");
    words allowed = line();
    allowed.emplace_back("--allow-loss");
    for (const words& arguments : {line(), allowed}) {
      std::filesystem::remove(out_);
      EXPECT_EQ(expect(1, arguments).err,
                expected + "bxdb: " + out_ + ": not written: " + reasons + " against compressing\n");
      EXPECT_FALSE(std::filesystem::exists(out_));
      made("out.bxd", "old content");
      expect(1, arguments);
      EXPECT_EQ(read_file(out_), "old content");
    }
    const outcome explained = expect(1, {"explain", in_});
    EXPECT_EQ(explained.out, "");
    EXPECT_EQ(explained.err, expected + "bxdb: " + in_ + ": not explained: " + reasons + " against compressing\n");
  }

  std::string in_ = file("in.bxd");
  std::string out_ = file("out.bxd");
};

TEST_F(BxdbLosses, WiresWhoseNamesAreCut) {
  const std::string cut = replaced(replaced(small_text(), "A$1", "A"), "A$2", "A");
  expect_losses(small_text(),
                {"chip/LEFT/A$1: comes back as \"A\"", "chip/LEFT/A$2: comes back as \"A\"",
                 "2 wires come back with their names cut at the first \"$\""},
                cut);
}

TEST_F(BxdbLosses, NamesThatWereCutWhileLoadingAreNoLoss) {
  made("in.bxd", small_text());
  words cut = line();
  cut.emplace_back("--cut");
  EXPECT_EQ(expect(0, cut).err, "");
}

TEST_F(BxdbLosses, WiresOfSwitchMatricesKeepTheirDollars) {
  made("in.bxd", file_of({instance("BASIC_ASS", 0, 0, {"\"J$1\" (1, 1)", "\"J$2\" (2, 1)"})}));
  EXPECT_EQ(expect(0, line()).err, "");
  expect(0, {"convert", out_, file("back.bxd"), "--form", "text"});
  EXPECT_EQ(read_file(file("back.bxd")), read_file(in_));
}

TEST_F(BxdbLosses, AnInstanceThatHasTheNameOfAWireThatIsCut) {
  const std::string text = file_of({instance("N$1", 0, 0, {}), instance("T", 10, 0, {"\"N$1\" (11, 1)"})});
  expect_losses(text,
                {"r/N$1: comes back as \"N\"", "r/T/N$1: comes back as \"N\"",
                 "1 instance comes back with its name cut at the first \"$\"",
                 "1 wire comes back with its name cut at the first \"$\""},
                file_of({instance("N", 0, 0, {}), instance("T", 10, 0, {"\"N\" (11, 1)"})}));
}

TEST_F(BxdbLosses, WiresThatHaveOtherNamesInTheFirstInstanceOfTheirShape) {
  const auto tree = [](const std::string& second, const std::string& third) {
    return file_of(
        {instance("T", 0, 0, {"\"IN\" (1, 1)"}), instance("T", 10, 0, {second}), instance("T", 20, 0, {third})});
  };
  expect_losses(tree("\"OUT\" (11, 1)", "\"UP\" (21, 1)"),
                {"r/T/OUT: comes back as \"IN\"", "r/T/UP: comes back as \"IN\"",
                 "2 wires come back with the names of the first instance of the same shape"},
                tree("\"IN\" (11, 1)", "\"IN\" (21, 1)"));
}

TEST_F(BxdbLosses, AWireOfASwitchMatrixThatHasTwoOfItsName) {
  made("in.bxd", file_of({instance("BASIC_ASS", 0, 0, {"\"J\" (1, 1)", "\"J\" (2, 1)"})}));
  const outcome refused = expect(1, line());
  EXPECT_TRUE(holds(refused.err, "bxdb: " + in_ + ": r/BASIC_ASS/J: comes back at (")) << refused.err;
  EXPECT_TRUE(holds(refused.err, "bxdb: " + in_ + ": 1 wire comes back at another node\n")) << refused.err;
  EXPECT_FALSE(std::filesystem::exists(out_));
  words allowed = line();
  allowed.emplace_back("--allow-loss");
  expect(0, allowed);
  const nlohmann::json diff = json_of(1, {"diff", in_, out_});
  EXPECT_EQ(diff["wires"]["moved"], 1);
  EXPECT_EQ(diff["differences"].size(), 1U);
}

TEST_F(BxdbLosses, WiresOfASwitchMatrixBehindAnotherAtTheSamePlace) {
  const auto tree = [](const std::string& wire) {
    return file_of({instance("BASIC_ASS", 0, 0, {wire}), instance("BASIC_ASS", 0, 0, {"\"J\" (5, 5)"})});
  };
  expect_losses(tree("\"J\" (1, 2)"),
                {"r/BASIC_ASS/J: comes back at (5, 5) instead of (1, 2)", "1 wire comes back at another node"},
                tree("\"J\" (5, 5)"));
}

TEST_F(BxdbLosses, WiresBeyondThoseThatATemplateHolds) {
  words wires(65537, "\"W\" (0, 0)");
  const std::string text = file_of({instance("T", 0, 0, wires)});
  made("in.bxd", text);
  const outcome refused = expect(1, line());
  EXPECT_TRUE(holds(refused.err, "bxdb: " + in_ + ": r/T/W: does not come back\n")) << refused.err.substr(0, 500);
  EXPECT_EQ(lines_of(refused.err), 102U) << "a hundred cases, their number, and that nothing is written";
  EXPECT_FALSE(std::filesystem::exists(out_));
  words allowed = line();
  allowed.emplace_back("--allow-loss");
  const outcome written = expect(0, allowed);
  const nlohmann::json diff = json_of(1, {"diff", in_, out_, "--summary"});
  EXPECT_EQ(diff["instances"]["removed"], 0);
  const auto lost = diff["wires"]["removed"].get<int>();
  EXPECT_TRUE(holds(written.err, ": " + std::to_string(lost) + " wires do not come back\n")) << written.err;
  EXPECT_GT(lost, 0);
}

TEST_F(BxdbLosses, AllowingThemIsForTheCompressedFormOnly) {
  const std::string db = made("a.bxd", small_text());
  for (const char* form : {"text", "binary"}) {
    const outcome bad = expect(2, {"convert", db, out_, "--form", form, "--allow-loss"});
    EXPECT_TRUE(holds(bad.err, "--allow-loss: only the compressed form loses anything")) << bad.err;
    EXPECT_FALSE(std::filesystem::exists(out_));
  }
}

// ---- what cannot be compressed

TEST_F(BxdbLosses, AWireThatTheLargestSwitchMatrixLacksIsInTheWay) {
  expect_objections(file_of({instance("BASIC_ASS", 0, 0, {"\"J0\" (1, 1)", "\"J1\" (2, 1)"}),
                             instance("BASIC_ASS", 10, 0, {"\"J2\" (11, 1)"})}),
                    {"r/BASIC_ASS: wire \"J2\" of a switch matrix, which the one with most wires, at (0, 0), lacks"});
}

TEST_F(BxdbLosses, AHiddenSwitchMatrixUnlikeAllOthersIsInTheWay) {
  const std::string hidden = instance("BASIC_ASS", 0, 0, {"\"J0\" (1, 1)"});
  const std::string seen = instance("BASIC_ASS", 0, 0, {"\"J0\" (1, 1)", "\"J1\" (2, 1)"});
  expect_objections(
      file_of({hidden, seen}),
      {"r/BASIC_ASS: switch matrix with wires like no other, hidden behind another one at the same place"});
}

TEST_F(BxdbLosses, OneShapeMoreThanThereAreNumbersForIsInTheWay) {
  const auto shapes = [](int count) {
    words children;
    for (int i = 0; i < count; ++i) children.push_back(instance("T", 0, 0, {"\"W\" (" + std::to_string(i) + ", 0)"}));
    return file_of(children);
  };
  expect_objections(shapes(32768), {"r/T: needs a template beyond the 32768 that there can be"});
  made("in.bxd", shapes(32767));  // the root has one, too
  EXPECT_EQ(expect(0, line()).err, "");
  expect(0, {"convert", out_, file("back.bxd"), "--form", "text"});
  EXPECT_EQ(read_file(file("back.bxd")), read_file(in_));
}

TEST_F(BxdbLosses, ADeviceOfTooManyNamesIsNotGenerated) {
  const words plain = {"generate", out_,      "--profile", "plain",  "--wires",
                       "1",        "--names", "unique",    "--form", "compressed"};
  words many = plain;
  many.insert(many.end(), {"--columns", "200", "--rows", "200"});
  EXPECT_TRUE(holds(expect(1, many).err, out_ + ": not written: 1 reason against compressing\n"));
  EXPECT_FALSE(std::filesystem::exists(out_));
  EXPECT_FALSE(std::filesystem::exists(file("out.npd")));
  words few = plain;
  few.insert(few.end(), {"--columns", "20", "--rows", "20"});
  expect(0, few);
  EXPECT_EQ(json_of(0, {"check", out_})["sound"], true);
}

// ---- the comparison that guards the output

class LossProof : public ::testing::Test {
 protected:
  LossProof() {
    for (BX_DB* db : {&before_, &after_}) {
      auto* inst = new BX_INSTANCE("T$1", 0, 0, 9, 9);
      for (const char* name : {"A$1", "B", "C"}) {
        const BX_WIRE wire(name, 1, 2);
        inst->addwire(&wire);
      }
      db->addinstance(inst);
    }
    inst_ = after_.getinstance(0);
  }

  static char* text(const char* value) { return const_cast<char*>(value); }

  bool proven(const std::vector<std::pair<qelmodb::loss, int>>& counts) const {
    qelmodb::compression_losses losses;
    for (const auto& [what, count] : counts) losses.counts[static_cast<int>(what)] = count;
    return bxdb::comes_back_as_announced(before_, after_, losses);
  }

  BX_DB before_{"r", 0, 0, 9, 9};
  BX_DB after_{"r", 0, 0, 9, 9};
  BX_INSTANCE* inst_ = nullptr;  // of what came back
};

using qelmodb::loss;

TEST_F(LossProof, TellsEachKindAndItsNumber) {
  EXPECT_TRUE(proven({}));
  inst_->wires[0].name = text("A");
  EXPECT_FALSE(proven({}));
  EXPECT_TRUE(proven({{loss::cut_wire, 1}}));
  EXPECT_FALSE(proven({{loss::cut_wire, 2}}));
  EXPECT_FALSE(proven({{loss::renamed_wire, 1}}));
  inst_->wires[1].name = text("X");
  EXPECT_TRUE(proven({{loss::cut_wire, 1}, {loss::renamed_wire, 1}}));
  inst_->wires[1].nodey = 3;
  inst_->wires[2].nodex = 2;
  EXPECT_TRUE(proven({{loss::cut_wire, 1}, {loss::renamed_wire, 1}, {loss::moved_wire, 2}}));
  inst_->name = text("T");
  EXPECT_TRUE(proven({{loss::cut_instance, 1}, {loss::cut_wire, 1}, {loss::renamed_wire, 1}, {loss::moved_wire, 2}}));
}

TEST_F(LossProof, TellsWiresThatAreMissing) {
  inst_->wires.a_droplast();
  EXPECT_FALSE(proven({}));
  EXPECT_TRUE(proven({{loss::dropped_wire, 1}}));
}

TEST_F(LossProof, AcceptsNothingThatIsNoLoss) {
  inst_->name = text("S");
  EXPECT_FALSE(proven({}));
  EXPECT_FALSE(proven({{loss::cut_instance, 1}}));
  inst_->name = before_.getinstance(0)->name;
  ASSERT_TRUE(proven({}));
  for (bx_long BX_INSTANCE::*edge : {&BX_INSTANCE::xmin, &BX_INSTANCE::ymin, &BX_INSTANCE::xmax, &BX_INSTANCE::ymax}) {
    ++(inst_->*edge);
    EXPECT_FALSE(proven({}));
    --(inst_->*edge);
  }
  const BX_WIRE more("D", 1, 2);
  inst_->addwire(&more);
  EXPECT_FALSE(proven({}));
  EXPECT_FALSE(proven({{loss::dropped_wire, -1}}));
}

TEST_F(LossProof, AcceptsNoOtherShape) {
  inst_->addinstance(new BX_INSTANCE("U", 0, 1, 9, 9));
  EXPECT_FALSE(proven({})) << "one more";
  before_.addinstance(new BX_INSTANCE("U", 0, 1, 9, 9));
  EXPECT_FALSE(proven({})) << "as many, but a sibling instead of a child";
  before_.getinstance(0)->addinstance(new BX_INSTANCE("U", 0, 1, 9, 9));
  after_.addinstance(new BX_INSTANCE("U", 0, 1, 9, 9));
  EXPECT_TRUE(proven({}));
}

}  // namespace
