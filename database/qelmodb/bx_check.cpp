// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Checking the bytes of a file: the same walk over the same record descriptions as loading, without
// building anything.
#include <algorithm>
#include <string>

#include "bx_check_compressed.h"
#include "bx_check_tree.h"
#include "bx_file_kind.h"
#include "ut_filemanager.h"

using qelmodb::content;
using qelmodb::form;
using qelmodb::severity;

namespace {

bool is_packed(const char* kind) { return std::string_view(kind).substr(0, 6) == "packed"; }

bool foreign_file(bx_check_context& context) {
  const char* kind = bx_foreign_kind(context.rest());
  context.report.foreign_kind = kind;
  const std::string start = "not a BX_DB file: ";
  if (kind == nullptr) return context.fail(0, start + "expected \"BX_DB:\", found " + context.found(0));
  return context.fail(0, start + "it is " + kind + (is_packed(kind) ? "; unpack it first" : ""));
}

// Moves behind the first line and gives the letter of the form, NUL when there is none.
bool first_line(bx_check_context& context, char& letter) {
  const std::string_view bytes = context.rest();
  const std::string_view magic = bx_magic;
  if (bytes.substr(0, magic.size()) != magic) return foreign_file(context);
  const std::size_t end = bytes.find('\n');
  if (end == std::string_view::npos) return context.fail(bytes.size(), "the first line has no end");
  letter = bytes[magic.size()];
  if (letter == '\n' || letter == '\r') letter = '\0';
  context.advance(end + 1);
  context.end_section("first line");
  return true;
}

void check_end(bx_check_context& context, bool text) {
  const std::string_view rest = context.rest();
  const std::size_t blank = text ? rest.find_first_not_of(" \t\r\n") : 0;
  if (rest.empty() || blank == std::string_view::npos) return;
  context.fail(context.at() + blank, neoform("%lld bytes stand behind the last record, which nothing reads",
                                             static_cast<long long>(rest.size() - blank)));
}

form form_of(char letter, content what) {
  if (letter == bx_text_letter) return form::text;
  return letter == bx_compressed_letter && what == content::database ? form::compressed : form::binary;
}

bool is_control(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }

bool check_records(bx_check_context& context, form as, content what) {
  const bool with_wires = what == content::database;
  if (as == form::compressed) return bx_check_compressed(context);
  if (as == form::text) {
    context.counts_lines = true;
    bx_text_checker coder(context);
    return bx_check_instances(coder, context, with_wires);
  }
  if (!with_wires) {
    bx_binary_grid_checker coder(context);
    return bx_check_instances(coder, context, false);
  }
  bx_binary_checker coder(context);
  return coder.name_table() && bx_check_instances(coder, context, true);
}

// Stops behind the limit.
bool read_whole_file(const char* filename, std::int64_t limit, std::string& bytes) {
  UT_PTRFILE file(UT_READ);
  if (ut_file->add_ofile(filename, UT_READ, &file, false) == nullptr) return false;
  while (static_cast<std::int64_t>(bytes.size()) <= limit) {
    std::size_t available = 0;
    const char* block = file.peek(1, available);
    if (available == 0) break;
    bytes.append(block, available);
    file.consume(available);
  }
  ut_file->rm_ofile(&file);
  return true;
}

void check_whole_file(const char* filename, content what, const qelmodb::check_options& options, std::string& bytes,
                      qelmodb::check_report& report) {
  if (read_whole_file(filename, options.within.bytes, bytes)) {
    report = qelmodb::check_bytes(bytes, what, options);
    return;
  }
  bx_check_context context({}, options);
  context.report.file_content = what;
  context.fail(0, ut_file->geterror());
  report = std::move(context.report);
}

content other_than(content what) { return what == content::database ? content::grid : content::database; }

void check_whole(bx_check_context& context, content what) {
  context.report.file_content = what;
  char letter = '\0';
  if (!context.within_limits(0) || !first_line(context, letter)) return;
  const form as = form_of(letter, what);
  context.report.file_form = as;
  if (as == form::binary && letter != bx_binary_letter) {
    context.add(severity::note, sizeof bx_magic - 1, "the letter of the form is unknown; the file is read as binary");
  }
  if (check_records(context, as, what)) check_end(context, as == form::text);
}

qelmodb::check_report check_as(std::string_view bytes, content what, const qelmodb::check_options& options) {
  bx_check_context context(bytes, options);
  check_whole(context, what);
  return std::move(context.report);
}

// The text without its first line; empty when that has no end.
std::string_view behind_line(std::string_view text) {
  const std::size_t end = text.find('\n');
  return end != std::string_view::npos ? text.substr(end + 1) : std::string_view();
}

// The text after a name in quotes, which may hold a line end.
std::string_view behind_name(std::string_view text) {
  const std::size_t quote = text.find('"');
  const std::size_t end = quote != std::string_view::npos ? text.find('"', quote + 1) : quote;
  return end != std::string_view::npos ? text.substr(end + 1) : std::string_view();
}

std::string_view behind_blanks(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
}

// The root's line and a count, and then: a wire or another count in a database, an instance or the end in a grid.
std::optional<content> content_of_text(std::string_view bytes) {
  const std::string_view label = "BX_INSTANCE:";
  const std::string_view root = behind_line(bytes);
  if (behind_blanks(root).substr(0, label.size()) != label) return std::nullopt;
  const std::string_view next = behind_blanks(behind_line(behind_line(behind_name(root))));
  if (next.empty()) {
    return check_as(bytes, content::grid, {0}).loadable() ? std::optional(content::grid) : std::nullopt;
  }
  // The labels of instances and wires begin alike.
  const std::string_view common = "BX_";
  if (next.size() <= common.size() && common.substr(0, next.size()) == next) return std::nullopt;
  return next.substr(0, label.size()) == label.substr(0, next.size()) ? content::grid : content::database;
}

// A sound file of the other content has a fault somewhere, which by itself does not say so.
void tell_other_content(std::string_view bytes, const qelmodb::check_options& options, qelmodb::check_report& report) {
  const auto first = std::find_if(report.faults.begin(), report.faults.end(),
                                  [](const qelmodb::fault& fault) { return fault.level == severity::error; });
  if (first == report.faults.end() || report.sections.empty() || report.limit != nullptr) return;
  const content other = other_than(report.file_content);
  if (!check_as(bytes, other, {0, options.within, options.report}).loadable()) return;
  report.is_other_content = true;
  first->message += std::string("; the file is a ") + to_string(other) + " file, but a " +
                    to_string(report.file_content) + " file was expected";
}

}  // namespace

namespace qelmodb {

check_report check_bytes(std::string_view bytes, content what, const check_options& options) {
  check_report report;
  bool was_cancelled = false;
  {
    bx_check_context context(bytes, options);
    check_whole(context, what);
    report = std::move(context.report);
    report.different_names = context.different_names();
    was_cancelled = context.was_cancelled;
  }
  std::stable_sort(report.faults.begin(), report.faults.end(),
                   [](const fault& a, const fault& b) { return a.offset < b.offset; });
  if (!was_cancelled) tell_other_content(bytes, options, report);
  return report;
}

check_report check_file(const char* filename, content what, const check_options& options) {
  std::string bytes;
  check_report report;
  check_whole_file(filename, what, options, bytes, report);
  return report;
}

bool load_checked(BX_DB& db, const char* filename, content what, check_report& report, const check_options& options) {
  std::string bytes;
  check_whole_file(filename, what, options, bytes, report);
  if (!report.loadable()) return false;
  UT_MEMFILE file(std::move(bytes));
  work_options work;
  work.report = options.report;
  return load(db, file, what, work);
}

std::optional<content> find_content(std::string_view bytes) {
  const std::string_view magic = bx_magic;
  if (bytes.substr(0, magic.size()) != magic || bytes.size() == magic.size()) return std::nullopt;
  const char letter = bytes[magic.size()];
  if (letter == bx_text_letter) return content_of_text(bytes);
  if (letter == bx_compressed_letter) return content::database;
  const check_options none{0};
  const check_report database = check_as(bytes, content::database, none);
  if (database.loadable()) return content::database;
  const check_report grid = check_as(bytes, content::grid, none);
  if (grid.loadable()) return content::grid;
  // A name table hardly makes sense by accident, and neither do two instances of a grid.
  if (database.instances > 0) return content::database;
  return grid.instances > 1 ? std::optional(content::grid) : std::nullopt;
}

content detect_content(std::string_view bytes) { return find_content(bytes).value_or(content::database); }

std::string fault::text() const {
  std::string place = line > 0 ? neoform("line %lld: ", static_cast<long long>(line))
                               : neoform("byte %lld: ", static_cast<long long>(offset));
  place += message;
  if (path.empty()) return place;
  place += " [";
  // Names hold anything but NUL.
  for (const char c : path) place += is_control(c) ? bx_printable(std::string_view(&c, 1)) : std::string(1, c);
  return place + "]";
}

const char* to_string(content what) noexcept { return what == content::grid ? "grid" : "database"; }

const char* to_string(form what) noexcept {
  switch (what) {
    case form::text:
      return "text";
    case form::binary:
      return "binary";
    case form::compressed:
      return "compressed";
  }
  return "";
}

const char* to_string(severity level) noexcept {
  switch (level) {
    case severity::error:
      return "error";
    case severity::warning:
      return "warning";
    case severity::note:
      return "note";
  }
  return "";
}

}  // namespace qelmodb
