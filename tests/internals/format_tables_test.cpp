// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The tables of the format page are made from the record descriptions: a field that is added to a record
// makes these tests fail until the page is remade. Each failure prints the table that the page should hold.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "bx_records.h"
#include "qelmoext.h"

namespace {

std::string page() {
  const std::filesystem::path name =
      std::filesystem::path(__FILE__).parent_path() / ".." / ".." / "docs" / "file-formats.md";
  std::ifstream file(name, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

/// What stands behind a marker comment, up to the next blank line.
std::string marked(const std::string& marker) {
  const std::string text = page();
  const std::string line = "<!-- " + marker + " -->\n";
  const std::size_t at = text.find(line);
  if (at == std::string::npos) return "no line " + line;
  const std::size_t start = at + line.size();
  return text.substr(start, text.find("\n\n", start) + 1 - start);
}

/// The lines of a fenced block behind a marker, without the fences.
std::string fenced(const std::string& marker) {
  const std::string block = marked(marker);
  const std::size_t first = block.find('\n') + 1;
  return block.substr(first, block.rfind("```") - first);
}

/// Renders a record as rows of a byte table.
class table_coder {
 public:
  explicit table_coder(std::string name_size) : name_size_(std::move(name_size)) {}

  bool begin(const bx_record_kind& /*kind*/) { return true; }
  template <class Object>
  bool name(Object& /*object*/) {
    return row(name_size_, name_size_ == "8" ? "name reference" : "name, then a NUL byte");
  }
  bool pair(const char* a, bx_long /*first*/, const char* b, bx_long /*second*/) { return row("4", a) && row("4", b); }
  bool end() { return true; }
  bool count(const char* label, bx_long /*number*/) { return row("4", label); }

  /// Records that follow a count.
  bool row(const std::string& size, const std::string& content) {
    rows_ += "| " + offset_ + " | " + size + " | " + content + " |\n";
    if (size.find_first_not_of("0123456789") != std::string::npos) {
      offset_ = "then";
    } else if (offset_ != "then") {
      offset_ = std::to_string(std::stoi(offset_) + std::stoi(size));
    }
    return true;
  }

  std::string table() const { return "| Offset | Bytes | Content |\n|---|---|---|\n" + rows_; }

 private:
  std::string name_size_;
  std::string offset_ = "0";
  std::string rows_;
};

/// Renders the line of a text record.
class line_coder {
 public:
  bool begin(const bx_record_kind& kind) { return put(kind.text_label); }
  template <class Object>
  bool name(Object& /*object*/) {
    return put("\"NAME\"");
  }
  bool pair(const char* a, bx_long /*first*/, const char* b, bx_long /*second*/) {
    return put(std::string(" (") + a + ", " + b + ")");
  }
  bool end() { return put("\n"); }
  bool count(const char* label, bx_long /*number*/) { return put(std::string(label) + "\n"); }
  bool put(const std::string& text) {
    lines += text;
    return true;
  }

  std::string lines;
};

TEST(FormatPage, HoldsTheTableOfTheBinaryWireRecord) {
  table_coder coder("8");
  bx_any_record record;
  bx_describe_wire(coder, record);
  EXPECT_EQ(marked("binary wire record"), coder.table());
}

TEST(FormatPage, HoldsTheTableOfTheBinaryInstanceRecord) {
  table_coder coder("8");
  bx_any_record record;
  bx_describe_instance(coder, record);
  coder.count(bx_wire_count_label, 0);
  coder.row(std::to_string(bx_least_wire_size(bx_binary_sizes)) + " each", "the wire records");
  coder.count(bx_child_count_label, 0);
  coder.row("varies", "the instance records of the children");
  EXPECT_EQ(marked("binary instance record"), coder.table());
}

TEST(FormatPage, HoldsTheTableOfTheBinaryGridRecord) {
  table_coder coder("varies");
  bx_any_record record;
  bx_describe_instance(coder, record);
  coder.count(bx_child_count_label, 0);
  coder.row("varies", "the grid records of the children");
  EXPECT_EQ(marked("binary grid record"), coder.table());
}

TEST(FormatPage, HoldsTheLinesOfTheTextRecords) {
  line_coder coder;
  bx_any_record record;
  bx_describe_instance(coder, record);
  coder.count(bx_wire_count_label, 0);
  bx_describe_wire(coder, record);
  coder.count(bx_child_count_label, 0);
  EXPECT_EQ(fenced("text records"), coder.lines);
}

TEST(FormatPage, ItsTextExampleIsWhatTheLibraryWritesOfIt) {
  const std::string text = fenced("text example");
  ASSERT_TRUE(qelmodb::check_bytes(text, qelmodb::content::database).sound());
  BX_DB db;
  const char old = db.getseparator();
  db.setseparator('$');
  UT_MEMFILE in{std::string(text)};
  ASSERT_TRUE(qelmodb::load(db, in, qelmodb::content::database));
  db.setseparator(old);
  UT_MEMFILE out;
  ASSERT_TRUE(qelmodb::dump(db, out, qelmodb::form::text, qelmodb::content::database));
  EXPECT_EQ(out.bytes(), text);
}

/// The bytes of the hexadecimal dump: what stands between the offset and the "|" of each line.
std::string bytes_of_dump() {
  std::istringstream lines(fenced("hexadecimal dump"));
  std::string bytes;
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line.substr(0, line.find('|')));
    std::string word;
    words >> word;
    EXPECT_EQ(std::stoul(word, nullptr, 16), bytes.size());
    while (words >> word) bytes += static_cast<char>(static_cast<unsigned char>(std::stoi(word, nullptr, 16)));
  }
  return bytes;
}

TEST(FormatPage, ItsDumpIsASoundFileThatHoldsTheSmallDatabase) {
  BX_DB small("TOP", 0, 0, 9, 9);
  auto* block = new BX_INSTANCE("LB", 0, 3, 4, 5);
  const BX_WIRE wire("IN", 1, -2);
  block->addwire(&wire);
  small.addinstance(block);
  const std::string bytes = bytes_of_dump();
  EXPECT_TRUE(qelmodb::check_bytes(bytes, qelmodb::content::database).faults.empty());
  BX_DB db;
  UT_MEMFILE in{std::string(bytes)};
  ASSERT_TRUE(qelmodb::load(db, in, qelmodb::content::database));
  EXPECT_TRUE(qelmodb::same_tree(small, db, qelmodb::content::database));
  EXPECT_EQ(db.names.getcount(), 3);
}

TEST(FormatPage, NamesTheLimitsOfTheForms) {
  const std::string text = page();
  EXPECT_NE(text.find(std::to_string(BX_FILE_NAME_LIMIT) + " characters"), std::string::npos);
  EXPECT_NE(text.find(std::to_string(BX_GRID_NAME_LIMIT) + " characters"), std::string::npos);
}

}  // namespace
