// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The least sizes that are added up from the record descriptions, against what the writers make of the
// smallest records.
#include <gtest/gtest.h>

#include "bx_record_writers.h"
#include "bx_records.h"
#include "ut_ptrfile.h"

namespace {

template <class Write>
int written_size(Write write) {
  UT_MEMFILE file;
  write(file);
  return static_cast<int>(file.bytes().size());
}

TEST(LeastSizes, OfBinaryRecordsAreThoseOfTheSmallestRecordsWritten) {
  const BX_WIRE wire(nullptr, 0, 0);
  const BX_INSTANCE leaf(nullptr, 0, 0, 0, 0);
  EXPECT_EQ(bx_least_wire_size(bx_binary_sizes), written_size([&](UT_MEMFILE& file) { wire.writeme(&file); }));
  EXPECT_EQ(bx_least_instance_size(bx_binary_sizes, true),
            written_size([&](UT_MEMFILE& file) { leaf.writeme(&file); }));
  EXPECT_EQ(bx_least_instance_size(bx_binary_grid_sizes, false),
            written_size([&](UT_MEMFILE& file) { leaf.writegrid(&file); }));
}

TEST(LeastSizes, OfBinaryRecordsAreTheDocumentedOnes) {
  static_assert(bx_least_wire_size(bx_binary_sizes) == 16);
  static_assert(bx_least_instance_size(bx_binary_sizes, true) == 32);
  static_assert(bx_least_instance_size(bx_binary_grid_sizes, false) == 21);
}

// A reader takes text without labels and digits, so these are smaller than anything that is written.
TEST(LeastSizes, OfTextRecordsAreThoseOfTheShortestThatReadersTake) {
  const std::string wire = "\"\" (,)\n";
  const std::string instance = "\"\" (,) (,)\n";
  EXPECT_EQ(bx_least_wire_size(bx_text_sizes), static_cast<int>(wire.size()));
  EXPECT_EQ(bx_least_instance_size(bx_text_sizes, true), static_cast<int>((instance + "\n\n").size()));
  EXPECT_EQ(bx_least_instance_size(bx_text_sizes, false), static_cast<int>((instance + "\n").size()));
  UT_MEMFILE wire_file{std::string(wire)};
  BX_WIRE read;
  EXPECT_EQ(read.readme(static_cast<UT_STREAM*>(&wire_file), '$'), 1);
  UT_MEMFILE file(instance + "1\n" + wire + "\n");
  BX_INSTANCE inst(nullptr, 0, 0, 0, 0);
  EXPECT_EQ(inst.readme(static_cast<UT_STREAM*>(&file)), 1);
  EXPECT_TRUE(file.ok());
}

TEST(Limits, OfTheBuffersAreThoseOfTheFiles) {
  EXPECT_EQ(bx_key_size, 100);
  EXPECT_EQ(bx_grid_name_size, 255);
}

}  // namespace
