// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The tables of the format page are made from the record descriptions: a field that is added to a record
// makes these tests fail until the page is remade. Each failure prints the table that the page should hold.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "bx_template_records.h"
#include "qelmocompress.h"

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

// ---- stand-ins for templates, of which only the descriptions count

struct any_runs {};
struct any_offsets {};
struct any_lines {};
struct any_wires {};
struct any_wire_templates {};

template <class Ranges>
struct any_map {
  std::uint16_t size = 0;
  Ranges ranges;
};

struct any_layout {
  std::uint16_t numwires = 0;
  any_wires wires;
};

struct any_wire_template {
  std::uint8_t absolute = 0;
  std::uint16_t span_dir = 0;
  any_map<any_runs> index_map;
  std::uint16_t num_offset_map = 0;
  any_map<any_offsets> offset_maps;
};

struct any_set {
  std::uint16_t num_wire_template = 0;
  any_wire_templates wire_templates;
  any_lines colmap;
  any_lines rowmap;
};

struct any_skeleton : bx_any_record {
  std::uint16_t tmplt = 0;
};

/// Renders the records of templates likewise.
class template_table_coder : public table_coder {
 public:
  template_table_coder() : table_coder("8") {}

  bool field(const char* label, std::uint16_t /*value*/) { return row("2", of_each_ + label); }
  bool flag(const char* label, std::uint8_t /*value*/) { return row("2", std::string(label) + ", 0 or 1"); }
  bool wire_lists(any_set& /*set*/) {
    return row("2", "wire list count") && row("2 each", "wire counts of the lists") &&
           row("2 each", "wire templates of the first list, then of the second, and so on");
  }

  template <class Describe>
  bool array(const char* label, std::uint16_t /*count*/, any_wires& wires, int /*least_size*/, Describe describe) {
    return row("2", label) && describe(wires);
  }
  bool delta_wire(any_wires& /*wires*/) {
    return row(std::to_string(bx_least_delta_wire_size) + " to 17 each", "the wires, delta-coded");
  }
  template <class Describe>
  bool array(const char* label, std::uint16_t /*count*/, any_wire_templates& /*all*/, int least_size,
             Describe /*describe*/) {
    return row("2", label) && row(std::to_string(least_size) + " or more each", "the wire template records");
  }
  template <class Describe>
  bool array(const char* label, std::uint16_t /*count*/, any_map<any_offsets>& item, int /*least_size*/,
             Describe describe) {
    row("2", label);
    of_each_ = "of each: ";
    return describe(item);
  }

  bool entries(const char* label, const char* key, const char* value, any_runs& /*runs*/) {
    return list(label, "4", std::string(key) + " (2), " + value + " (2)");
  }
  bool entries(const char* label, const char* key, const char* value, any_offsets& /*runs*/) {
    return list(label, "10", std::string(key) + " (2), " + value + " in x (4) and y (4)");
  }
  bool entries(const char* label, const char* key, const char* value, any_lines& /*lines*/) {
    return list(label, "6", std::string(key) + " (4), " + value + " (2)");
  }

 private:
  bool list(const char* label, const std::string& size, const std::string& entry) {
    return row("2", of_each_ + label) && row(size + " each", of_each_ + entry);
  }

  std::string of_each_;
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

template <class Record, class Describe>
std::string template_table(Describe describe) {
  template_table_coder coder;
  Record record;
  describe(coder, record);
  return coder.table();
}

TEST(FormatPage, HoldsTheTablesOfTheTemplateRecords) {
  EXPECT_EQ(marked("set record"),
            template_table<any_set>([](auto& coder, auto& set) { bx_describe_matrix_set(coder, set); }));
  EXPECT_EQ(marked("wire template record"),
            template_table<any_wire_template>([](auto& coder, auto& wire) { bx_describe_wire_template(coder, wire); }));
  EXPECT_EQ(marked("template record"),
            template_table<any_layout>([](auto& coder, auto& layout) { bx_describe_layout(coder, layout); }));
}

TEST(FormatPage, HoldsTheTableOfTheSkeletonRecord) {
  template_table_coder coder;
  any_skeleton inst;
  bx_describe_skeleton(coder, inst);
  coder.count(bx_child_count_label, 0);
  coder.row("varies", "the records of the children");
  EXPECT_EQ(marked("skeleton record"), coder.table());
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

/// The bytes of a hexadecimal dump: what stands between the offset and the "|" of each line.
std::string bytes_of_dump(const std::string& marker) {
  std::istringstream lines(fenced(marker));
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
  const std::string bytes = bytes_of_dump("hexadecimal dump");
  EXPECT_TRUE(qelmodb::check_bytes(bytes, qelmodb::content::database).faults.empty());
  BX_DB db;
  UT_MEMFILE in{std::string(bytes)};
  ASSERT_TRUE(qelmodb::load(db, in, qelmodb::content::database));
  EXPECT_TRUE(qelmodb::same_tree(small, db, qelmodb::content::database));
  EXPECT_EQ(db.names.getcount(), 3);
}

/// Puts the addresses of the page in place of those that strings have now.
std::string with_addresses_of(const std::string& page_bytes, std::string bytes, const BX_DB& db) {
  std::size_t at = 12;
  for (const char* name : db.names) {
    const std::string there = page_bytes.substr(at, 8);
    std::string here;
    for (int i = 0; i < 8; ++i) here += static_cast<char>(reinterpret_cast<std::uintptr_t>(name) >> (8 * i));
    for (std::size_t found = 0; (found = bytes.find(here, found)) != std::string::npos; found += 8) {
      bytes.replace(found, 8, there);
    }
    at += 8 + std::strlen(name) + 1;
  }
  return bytes;
}

/// The device of the page's compressed example.
void fill_example(BX_DB& db) {
  struct wire {
    const char* name;
    bx_long x, y;
  };
  const auto add = [](BX_INSTANCE& parent, const char* name, const UT_EXTREMA& box, std::initializer_list<wire> wires) {
    auto* inst = new BX_INSTANCE(name, box.xmin, box.ymin, box.xmax, box.ymax);
    for (const wire& w : wires) {
      const BX_WIRE made(w.name, w.x, w.y);
      inst->addwire(&made);
    }
    parent.addinstance(inst);
  };
  for (const bx_long x : {0, 10}) {
    for (const bx_long y : {0, 8}) {
      UT_EXTREMA box;
      box.xmin = x, box.xmax = x + 9, box.ymin = y, box.ymax = y + 7;
      if (y == 0) {
        add(db, "BASIC_ASS", box, {{"E", 5, y + 2}, {"L", x + 3, x == 0 ? 4 : 5}, {"N", x + 1, 6}});
      } else {
        add(db, "BASIC_ASS", box, {{"E", 5, y + 2}, {"N", x + 1, 6}});
      }
    }
  }
  UT_EXTREMA box;
  box.xmin = 0, box.xmax = 4, box.ymin = 20, box.ymax = 24;
  add(db, "LB", box, {{"A", 1, 22}, {"B", 1, 152}, {"C", -300, 153}, {"D", 70000, 153}});
  box.ymin = 30, box.ymax = 34;
  add(db, "LB", box, {{"A", 1, 32}, {"B", 1, 162}, {"C", -300, 163}, {"D", 70000, 163}});
}

TEST(FormatPage, ItsCompressedDumpIsWhatTheLibraryWritesOfIt) {
  BX_DB db("TOP", 0, 0, 20, 40);
  fill_example(db);
  qelmodb::intern_root_name(db);
  db.compress();
  UT_MEMFILE out;
  ASSERT_TRUE(qelmodb::dump(db, out, qelmodb::form::compressed, qelmodb::content::database));
  const std::string bytes = bytes_of_dump("compressed hexadecimal dump");
  EXPECT_EQ(bytes, with_addresses_of(bytes, out.bytes(), db));
  EXPECT_TRUE(qelmodb::check_bytes(bytes, qelmodb::content::database).faults.empty());
  BX_DB back;
  UT_MEMFILE in{std::string(bytes)};
  ASSERT_TRUE(qelmodb::load(back, in, qelmodb::content::database));
  EXPECT_TRUE(qelmodb::same_tree(db, back, qelmodb::content::database));
}

TEST(FormatPage, NamesTheLimitsOfTheForms) {
  const std::string text = page();
  EXPECT_NE(text.find(std::to_string(BX_FILE_NAME_LIMIT) + " characters"), std::string::npos);
  EXPECT_NE(text.find(std::to_string(BX_GRID_NAME_LIMIT) + " characters"), std::string::npos);
}

}  // namespace
