// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <charconv>
#include <cstring>

#include "np_device.h"
#include "ut_filemanager.h"
#include "ut_string.h"

namespace {

bx_long line_of(const std::vector<bx_long>& edges, bx_long at) {
  if (edges.size() < 2 || at < edges.front() || at > edges.back()) return -1;
  const auto above = std::upper_bound(edges.begin(), edges.end(), at);
  const auto line = static_cast<bx_long>(above - edges.begin()) - 1;
  return std::min(line, static_cast<bx_long>(edges.size()) - 2);
}

// Splits the description into words and keeps count of the line, for messages.
class word_reader {
 public:
  word_reader(const char* filename, UT_STREAM& file) : filename_(filename), file_(file) {}

  bool word(std::string& text) {
    text.clear();
    for (char c = 0; get(c);) {
      const bool blank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
      if (!blank) {
        text += c;
      } else if (!text.empty()) {
        pending_line_ = c == '\n';
        return true;
      } else if (c == '\n') {
        ++line_;
      }
      if (text.size() > longest_word) return false;
    }
    return !text.empty();
  }

  bool number(bx_long& value) {
    std::string text;
    if (!word(text)) return false;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stop == end;
  }

  bool expect(const char* what) {
    std::string text;
    return word(text) && text == what;
  }

  std::string fault(const char* expected) const { return neoform("%s:%d: expected %s", filename_, line_, expected); }

 private:
  static constexpr std::size_t longest_word = 64;

  bool get(char& c) {
    if (pending_line_) {
      ++line_;
      pending_line_ = false;
    }
    std::size_t available = 0;
    const char* next = file_.peek(1, available);
    if (available == 0) return false;
    c = *next;
    file_.consume(1);
    return true;
  }

  const char* filename_;
  UT_STREAM& file_;
  int line_ = 1;
  bool pending_line_ = false;
};

// Reads "word count edge edge ...". Edges are taken one by one, so a huge count costs nothing.
bool read_edges(word_reader& words, const char* word, std::vector<bx_long>& edges, std::string& why) {
  bx_long count = 0;
  if (!words.expect(word) || !words.number(count) || count < 1 || count > NP_TABLEDEVICE::max_lines) {
    why = words.fault(neoform("\"%s\" and a count from 1 to %d", word, NP_TABLEDEVICE::max_lines));
    return false;
  }
  for (bx_long i = 0; i <= count; ++i) {
    bx_long edge = 0;
    if (!words.number(edge) || (i > 0 && edge <= edges.back())) {
      why = words.fault(neoform("%d ascending edges after \"%s %d\", edge %d is missing or not above the one before",
                                count + 1, word, count, i));
      return false;
    }
    edges.push_back(edge);
  }
  return true;
}

void write_edges(UT_STREAM& file, const char* word, const std::vector<bx_long>& edges) {
  std::string line = neoform("%s %d", word, static_cast<bx_long>(edges.size()) - 1);
  for (const bx_long edge : edges) line += neoform(" %d", edge);
  file.writeline(line.c_str());
}

}  // namespace

NP_DEVICE::~NP_DEVICE() = default;

NP_TABLEDEVICE::NP_TABLEDEVICE(std::vector<bx_long> row_edges, std::vector<bx_long> column_edges)
    : row_edges_(std::move(row_edges)), column_edges_(std::move(column_edges)) {}

NP_TABLEDEVICE::~NP_TABLEDEVICE() = default;

bx_long NP_TABLEDEVICE::maxrow() { return static_cast<bx_long>(row_edges_.size()) - 2; }
bx_long NP_TABLEDEVICE::maxcol() { return static_cast<bx_long>(column_edges_.size()) - 2; }
bx_long NP_TABLEDEVICE::rowof(const UT_POINT& point) { return line_of(row_edges_, point.y); }
bx_long NP_TABLEDEVICE::colof(const UT_POINT& point) { return line_of(column_edges_, point.x); }

std::unique_ptr<NP_TABLEDEVICE> NP_TABLEDEVICE::read(const char* filename, std::string& why) {
  UT_PTRFILE file(UT_READ);
  if (ut_file->add_ofile(filename, UT_READ, &file, false) == nullptr) {
    why = ut_file->geterror();
    return nullptr;
  }
  std::unique_ptr<NP_TABLEDEVICE> device = read(file, filename, why);
  ut_file->rm_ofile(&file);
  return device;
}

std::unique_ptr<NP_TABLEDEVICE> NP_TABLEDEVICE::read(UT_STREAM& file, const char* name, std::string& why) {
  word_reader words(name, file);
  std::vector<bx_long> rows;
  std::vector<bx_long> columns;
  std::string rest;
  bool good = false;
  if (!words.expect("NP_DEVICE:1")) {
    why = words.fault("\"NP_DEVICE:1\"");
  } else if (read_edges(words, "rows", rows, why) && read_edges(words, "columns", columns, why)) {
    good = !words.word(rest) && rest.empty();
    if (!good) why = words.fault("the end of the file");
  }
  return good ? std::make_unique<NP_TABLEDEVICE>(std::move(rows), std::move(columns)) : nullptr;
}

bool NP_TABLEDEVICE::write(const char* filename, std::string& why) const {
  UT_PTRFILE file(UT_WRITE);
  bool whole = ut_file->add_ofile(filename, UT_WRITE, &file, true) != nullptr;
  if (whole) {
    file.writeline("NP_DEVICE:1");
    write_edges(file, "rows", row_edges_);
    write_edges(file, "columns", column_edges_);
    whole = ut_file->rm_ofile(&file);
  }
  if (!whole) why = ut_file->geterror();
  return whole;
}
