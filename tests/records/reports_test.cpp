// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The reports, piece by piece as the message manager receives them.
#include <gtest/gtest.h>

#include "record_bytes.h"

namespace {

using pieces = std::vector<std::string>;

class Reports : public testing::Test {
 protected:
  Reports() : root_("R", 0, 0, 10, 20) {
    const BX_WIRE wire("A$B", 3, -4);
    root_.addwire(&wire);
    auto* child = new BX_INSTANCE("C", 0, 7, 4, 9);
    child->addwire(&wire);
    root_.addinstance(child);
  }

  BX_INSTANCE root_;
};

TEST_F(Reports, OfAWireIsThreePiecesAfterItsBlanks) {
  const test::caught_report report;
  root_.getwire(0)->printme(2);
  EXPECT_EQ(report.pieces(), (pieces{" ", " ", "BX_WIRE: \"A$B\"; Node location:", "(3, -4)", "\n"}));
}

TEST_F(Reports, OfAWireAtNoLevelStartsWithTheWire) {
  const test::caught_report report;
  root_.getwire(0)->printme(0);
  root_.getwire(0)->printme(-3);
  const std::string line = "BX_WIRE: \"A$B\"; Node location:(3, -4)\n";
  EXPECT_EQ(report.text(), line + line);
}

TEST_F(Reports, OfARootIndentChildrenByThreeBlanksAndTheirWiresBySix) {
  const test::caught_report report;
  root_.printme(0);
  const std::string b = " ";
  EXPECT_EQ(report.pieces(), (pieces{"BX_INSTANCE: \"R\"; Extrema:",
                                     "(0, 0), (10, 20)",
                                     "\n",        //
                                     "WIRES:\n",  //
                                     b,
                                     b,
                                     b,
                                     "BX_WIRE: \"A$B\"; Node location:",
                                     "(3, -4)",
                                     "\n",            //
                                     "INSTANCES:\n",  //
                                     b,
                                     b,
                                     b,
                                     "BX_INSTANCE: \"C\"; Extrema:",
                                     "(0, 7), (4, 9)",
                                     "\n",  //
                                     b,
                                     b,
                                     b,
                                     "WIRES:\n",  //
                                     b,
                                     b,
                                     b,
                                     b,
                                     b,
                                     b,
                                     "BX_WIRE: \"A$B\"; Node location:",
                                     "(3, -4)",
                                     "\n",  //
                                     b,
                                     b,
                                     b,
                                     "INSTANCES:\n"}));
}

TEST_F(Reports, OfAGridHaveNoWires) {
  const test::caught_report report;
  root_.printgrid(1);
  const std::string b = " ";
  EXPECT_EQ(report.pieces(),
            (pieces{b, "BX_INSTANCE: \"R\"; Extrema:", "(0, 0), (10, 20)", "\n",  //
                    b, "INSTANCES:\n",                                            //
                    b, b, b, b, "BX_INSTANCE: \"C\"; Extrema:", "(0, 7), (4, 9)", "\n", b, b, b, b, "INSTANCES:\n"}));
}

TEST_F(Reports, ShowMissingNamesAsEmptyAndSkipMissingChildren) {
  BX_INSTANCE nameless(nullptr, 1, 2, 3, 4);
  const BX_WIRE wire(nullptr, 5, 6);
  nameless.addwire(&wire);
  nameless.addinstance(new BX_INSTANCE("C", 1, 2, 3, 4));
  delete nameless.instances[0];
  nameless.instances[0] = nullptr;
  const test::caught_report report;
  nameless.printme(0);
  EXPECT_EQ(report.text(),
            "BX_INSTANCE: \"\"; Extrema:(1, 2), (3, 4)\nWIRES:\n   BX_WIRE: \"\"; Node location:(5, 6)\nINSTANCES:\n");
}

TEST_F(Reports, HoldNamesOfAnyLength) {
  const std::string name(5000, 'n');
  const BX_INSTANCE inst(name.c_str(), 0, 0, 1, 1);
  const test::caught_report report;
  inst.printgrid(0);
  EXPECT_EQ(report.text(), "BX_INSTANCE: \"" + name + "\"; Extrema:(0, 0), (1, 1)\nINSTANCES:\n");
}

}  // namespace
