// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The coders that check records: one for each form, all walking the same descriptions as the readers. They
// read bytes in memory and stop at the first that no reader could make sense of.
#pragma once

#include <charconv>
#include <cstring>
#include <unordered_map>

#include "bx_record_readers.h"
#include "bx_text_table.h"
#include "qelmoext.h"
#include "ut_hash.h"

/// Text of a file as it may stand in a message: unprintable bytes as \xNN.
std::string bx_printable(std::string_view text);

/// What a checked record holds.
struct bx_check_record {
  std::string_view name;
  bx_long nodex = 0, nodey = 0, xmin = 0, xmax = 0, ymin = 0, ymax = 0;
};

/// Counts the different names of a tree. Like instances name the same wires in the same order, so the name that
/// followed the last one before is compared first; mostly nothing is hashed.
class bx_name_counter {
 public:
  /// The name lies in the file.
  void add(std::string_view name) {
    const std::uint32_t usual = entries_[last_].next;
    last_ = usual != 0 && entries_[usual].text == name ? usual : search(name);
  }

  std::int64_t count() const noexcept { return static_cast<std::int64_t>(entries_.size()) - 1; }

 private:
  struct entry {
    std::string_view text;
    std::uint32_t next = 0;  // which name followed the last time; 0 when none did
  };

  std::uint32_t search(std::string_view name);

  std::vector<entry> entries_{entry()};  // the first is none
  bx_text_table numbers_;
  std::uint32_t last_ = 0;
};

/// The bytes, the place in them, and the faults found.
class bx_check_context {
 public:
  bx_check_context(std::string_view bytes, const qelmodb::check_options& options);

  qelmodb::check_report report;
  std::vector<std::string_view> names;  // the path to the instance in hand
  std::string_view wire;                // the wire in hand; empty outside wires
  std::string part;                     // what else is in hand, such as "template 5"; begins the messages
  bool counts_lines = false;
  bool was_cancelled = false;

  std::size_t at() const noexcept { return at_; }
  std::size_t left() const noexcept { return bytes_.size() - at_; }
  std::string_view rest() const noexcept { return bytes_.substr(at_); }
  void advance(std::size_t count) noexcept { at_ += count; }

  /// Records a fault at a place at or behind the last one; always false.
  bool fail(std::size_t offset, std::string message) {
    add(qelmodb::severity::error, offset, std::move(message));
    return false;
  }
  void add(qelmodb::severity level, std::size_t offset, std::string message);

  /// Whether a count, read at start, is one and the bytes left can hold as many records of a least size; otherwise
  /// fails.
  bool justified(std::size_t start, const char* label, bx_long count, int least_size,
                 const char* records = "such records");

  /// To be called when a record that begins at start has added to the report, and before so many wires are looked at.
  /// False, and a fault, when that goes beyond a limit.
  bool within_limits(std::size_t start, bx_long more_wires = 0);

  /// Counts the memory of a name that is kept for itself.
  void keeps_name(std::string_view text) noexcept { kept_names_ += static_cast<std::int64_t>(text.size()) + 32; }

  /// Counts the name of an instance or a wire, which lies in the file, when that was asked for.
  void count_name(std::string_view name) {
    if (options_.count_names) different_names_.add(name);
  }
  std::int64_t different_names() const noexcept { return different_names_.count(); }

  /// To be called between records. False, and a fault, when the check was cancelled.
  bool go_on() { return at_ < next_report_ || report_progress(); }

  /// Ends a section of the file here; it begins where the last one ended.
  void end_section(const char* name) {
    const std::int64_t start =
        report.sections.empty() ? 0 : report.sections.back().offset + report.sections.back().bytes;
    report.sections.push_back({name, start, static_cast<std::int64_t>(at_) - start});
  }

  /// What stands at a place, for messages.
  std::string found(std::size_t offset) const;

 private:
  std::int64_t line_at(std::size_t offset);
  std::string path() const;
  std::int64_t memory_of(std::int64_t wires) const noexcept;
  bool report_progress();

  std::string_view bytes_;
  qelmodb::check_options options_;
  std::size_t at_ = 0;
  std::size_t line_start_ = 0;  // up to where line ends were counted
  std::int64_t line_ = 1;
  std::size_t next_report_ = 0;
  std::int64_t kept_names_ = 0;  // bytes
  bx_name_counter different_names_;
};

class bx_text_checker {
 public:
  explicit bx_text_checker(bx_check_context& context) : context_(context) {}

  bool begin(const bx_record_kind& kind);
  bool name(bx_check_record& record);
  bool pair(const char* a, bx_long& first, const char* b, bx_long& second);
  bool end();
  bool count(const char* label, bx_long& number);

  static const bx_form_sizes& sizes() noexcept { return bx_text_sizes; }

 private:
  bool expect(char c, const char* where);
  bool number(const char* label, char delimiter, bx_long& value);

  bx_check_context& context_;
};

/// Binary records, names apart.
class bx_binary_checker_base {
 public:
  bool begin(const bx_record_kind& /*kind*/) { return true; }
  bool pair(const char* a, bx_long& first, const char* b, bx_long& second) {
    return number(a, first) && number(b, second);
  }
  bool end() { return true; }
  bool count(const char* label, bx_long& value) { return number(label, value); }

 protected:
  explicit bx_binary_checker_base(bx_check_context& context) : context_(context) {}

  /// The next count bytes, or null and an error.
  const char* take(const char* label, std::size_t count);
  bool number(const char* label, bx_long& value);

  /// A NUL-terminated text that fits into limit bytes.
  bool string(const char* label, bx_long limit, std::string_view& text);

  bx_check_context& context_;
};

class bx_binary_checker : public bx_binary_checker_base {
 public:
  explicit bx_binary_checker(bx_check_context& context) : bx_binary_checker_base(context) {}

  bool name_table();
  bool name(bx_check_record& record);

  static const bx_form_sizes& sizes() noexcept { return bx_binary_sizes; }

 protected:
  /// The text that a reference stands for. None in the table is a fault, except of the root: that may be nameless.
  bool reference(std::string_view& text, bool is_root) { return use(text, is_root, false); }

  /// The same for a wire name that loading cuts at its first "$", and with it all that share the entry.
  bool cut_reference(std::string_view& text) { return use(text, false, true); }

  /// For files in which later references cut earlier ones: the names are counted by count_names, and not as they are
  /// met.
  void count_later() noexcept { counts_later_ = true; }
  void count_names();

 private:
  bool use(std::string_view& text, bool is_root, bool is_cut);

  struct key_hash {
    std::size_t operator()(std::uint64_t key) const { return static_cast<std::size_t>(ut_hash(key, ut_hash_seed())); }
  };

  struct known_name {
    std::string_view text;
    bool is_used = false;
    bool is_cut = false;
  };

  std::unordered_map<std::uint64_t, known_name, key_hash> table_;
  bool root_seen_ = false;
  bool counts_later_ = false;
};

class bx_binary_grid_checker : public bx_binary_checker_base {
 public:
  explicit bx_binary_grid_checker(bx_check_context& context) : bx_binary_checker_base(context) {}

  bool name(bx_check_record& record) {
    if (!string("name", bx_grid_name_size, record.name)) return false;
    context_.keeps_name(record.name);
    context_.count_name(record.name);
    return true;
  }

  static const bx_form_sizes& sizes() noexcept { return bx_binary_grid_sizes; }
};
