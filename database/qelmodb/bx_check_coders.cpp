// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_check_coders.h"

#include <algorithm>

#include "bx_path_tracker.h"

using qelmodb::severity;

namespace {

// A piece of the file for a message, of one line.
std::string shown(std::string_view text) {
  constexpr std::size_t most = 24;
  return bx_printable(text.substr(0, std::min(most, text.find('\n'))));
}

std::string_view trimmed(std::string_view text) {
  const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
  while (!text.empty() && blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && blank(text.back())) text.remove_suffix(1);
  return text;
}

// A decimal number with nothing behind it. Beyond 32 bits says so in range.
bool parse(std::string_view text, bx_long& value, bool& in_range) {
  in_range = true;
  const bool plus = !text.empty() && text.front() == '+';
  if (plus) text.remove_prefix(1);
  if (text.empty() || text.front() == '+' || (plus && text.front() == '-')) return false;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  in_range = error != std::errc::result_out_of_range;
  return stop == text.data() + text.size() && error != std::errc::invalid_argument;
}

}  // namespace

bx_check_context::bx_check_context(std::string_view bytes, const qelmodb::check_options& options)
    : bytes_(bytes), options_(options) {
  constexpr std::int64_t start = std::int64_t{4} << 30;
  constexpr std::int64_t factor = 64;
  report.bytes = static_cast<std::int64_t>(bytes.size());
  std::int64_t& memory = options_.within.memory;
  if (memory == qelmodb::limits::in_proportion) memory = start + factor * report.bytes;
}

std::string bx_printable(std::string_view text) {
  std::string result;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    result += byte >= 0x20 && byte < 0x7f ? std::string(1, c) : std::string(neoform("\\x%02X", byte));
  }
  return result;
}

std::uint32_t bx_name_counter::search(std::string_view name) {
  const auto next = static_cast<std::uint32_t>(entries_.size());
  const std::uint32_t number = numbers_.find_or_add(
      numbers_.hash_of(name), next, [this, name](std::uint32_t known) { return entries_[known].text == name; });
  if (number == next) entries_.push_back({name});
  entries_[last_].next = number;
  return number;
}

std::int64_t bx_check_context::line_at(std::size_t offset) {
  if (!counts_lines) return 0;
  if (offset < line_start_) {
    line_start_ = 0;
    line_ = 1;
  }
  line_ += std::count(bytes_.begin() + static_cast<std::ptrdiff_t>(line_start_),
                      bytes_.begin() + static_cast<std::ptrdiff_t>(offset), '\n');
  line_start_ = offset;
  return line_;
}

void bx_check_context::add(severity level, std::size_t offset, std::string message) {
  if (!part.empty()) message = part + ": " + message;
  std::int64_t& total = level == severity::error     ? report.errors
                        : level == severity::warning ? report.warnings
                                                     : report.notes;
  if (total++ >= static_cast<std::int64_t>(options_.most_faults)) return;
  report.faults.push_back({level, static_cast<std::int64_t>(offset), line_at(offset), path(), std::move(message)});
}

std::string bx_check_context::path() const {
  const std::size_t count = names.size() + (wire.empty() ? 0 : 1);
  return bx_joined_path(
      count, [this](std::size_t i) { return i < names.size() ? names[i] : wire; }, bx_longest_path);
}

bool bx_check_context::report_progress() {
  constexpr std::size_t step = std::size_t{1} << 20;
  next_report_ = at_ + step;
  if (!options_.report) return true;
  const auto whole = static_cast<std::int64_t>(bytes_.size());
  if (options_.report({"checking", static_cast<std::int64_t>(at_), whole})) return true;
  was_cancelled = true;
  return fail(at_, "the check was cancelled");
}

bool bx_check_context::justified(std::size_t start, const char* label, bx_long count, int least_size,
                                 const char* records) {
  if (count < 0) return fail(start, neoform("the %s is %d", label, count));
  const std::size_t most = left() / static_cast<std::size_t>(least_size);
  if (static_cast<std::size_t>(count) <= most) return true;
  return fail(start, neoform("the %s is %d, but the %lld bytes left hold at most %lld %s", label, count,
                             static_cast<long long>(left()), static_cast<long long>(most), records));
}

std::int64_t bx_check_context::memory_of(std::int64_t wires) const noexcept {
  constexpr std::int64_t instance = sizeof(BX_INSTANCE) + sizeof(BX_INSTANCE*);  // and its place in the parent's list
  return report.instances * instance + wires * std::int64_t{sizeof(BX_WIRE)} + kept_names_;
}

bool bx_check_context::within_limits(std::size_t start, bx_long more_wires) {
  const qelmodb::limits& most = options_.within;
  const std::int64_t wires = report.wires + more_wires;
  report.memory = memory_of(report.wires);
  const struct {
    const char* name;
    const char* unit;
    std::int64_t held;
    std::int64_t limit;
  } all[] = {{"bytes", "bytes", report.bytes, most.bytes},
             {"instances", "instances", report.instances, most.instances},
             {"wires", "wires", wires, most.wires},
             {"names", "names", report.names, most.names},
             {"depth", "levels below the root", report.depth, most.depth},
             {"memory", "bytes of memory", memory_of(wires), most.memory}};
  for (const auto& each : all) {
    if (each.held <= each.limit) continue;
    report.limit = each.name;
    return fail(start, neoform("%lld %s go beyond the limit of %lld", static_cast<long long>(each.held), each.unit,
                               static_cast<long long>(each.limit)));
  }
  return true;
}

std::string bx_check_context::found(std::size_t offset) const {
  if (offset >= bytes_.size()) return "the end of the file";
  if (bytes_[offset] == '\n') return "the end of the line";
  return "\"" + shown(bytes_.substr(offset)) + "\"";
}

// ---- text

bool bx_text_checker::begin(const bx_record_kind& kind) {
  const std::string_view rest = context_.rest();
  const std::string_view label = trimmed(kind.text_label);
  const std::size_t start = static_cast<std::size_t>(
      std::find_if(rest.begin(), rest.end(), [](char c) { return c != ' ' && c != '\t'; }) - rest.begin());
  std::size_t quote = start;
  if (rest.substr(start, label.size()) == label) {
    quote = start + label.size();
    while (quote < rest.size() && (rest[quote] == ' ' || rest[quote] == '\t')) ++quote;
    if (quote < rest.size() && rest[quote] == '"') {
      context_.advance(quote + 1);
      return true;
    }
  }
  const std::size_t place = context_.at() + quote;
  return context_.fail(place,
                       std::string("expected ") + std::string(label) + " \"name\", found " + context_.found(place));
}

bool bx_text_checker::name(bx_check_record& record) {
  const std::string_view rest = context_.rest();
  const std::string_view room = rest.substr(0, bx_key_size);
  const std::size_t quote = room.find('"');
  const std::size_t line_end = room.find('\n');
  // A name may go on in the next line; but then a point follows it there, and not the name of another record.
  if (line_end < quote && (quote == std::string_view::npos || rest.substr(quote + 1, 2) != " (")) {
    return context_.fail(context_.at(), "the name has no closing quote in its line");
  }
  if (quote == std::string_view::npos) {
    return context_.fail(context_.at(), rest.size() < static_cast<std::size_t>(bx_key_size)
                                            ? "the name has no closing quote"
                                            : neoform("the name is longer than %d characters", BX_FILE_NAME_LIMIT));
  }
  record.name = rest.substr(0, quote);
  if (record.name.find('\0') != std::string_view::npos)
    return context_.fail(context_.at(), "the name holds a NUL byte");
  if (line_end < quote) context_.add(severity::warning, context_.at(), "the name holds a line end");
  context_.count_name(record.name);
  context_.advance(quote + 1);
  return true;
}

bool bx_text_checker::expect(char c, const char* where) {
  if (!context_.rest().empty() && context_.rest().front() == c) {
    context_.advance(1);
    return true;
  }
  return context_.fail(context_.at(),
                       std::string("expected '") + c + "' " + where + ", found " + context_.found(context_.at()));
}

bool bx_text_checker::number(const char* label, char delimiter, bx_long& value) {
  // The reader takes 99 characters, blanks before the digits included.
  const std::string_view key = context_.rest().substr(0, bx_key_size);
  const std::size_t end = key.find(delimiter);
  const std::size_t start = std::min(key.find_first_not_of(' '), key.size());
  const std::size_t place = context_.at() + start;
  bool in_range = true;
  if (end == std::string_view::npos || !parse(key.substr(start, end - start), value, in_range)) {
    return context_.fail(place, std::string("expected the number ") + label + " and '" + delimiter + "', found " +
                                    context_.found(place));
  }
  if (!in_range) return context_.fail(place, std::string(label) + " does not fit into 32 bits");
  context_.advance(end + 1);
  return true;
}

bool bx_text_checker::pair(const char* a, bx_long& first, const char* b, bx_long& second) {
  return expect(' ', "before a point") && expect('(', "of a point") && number(a, ',', first) && number(b, ')', second);
}

bool bx_text_checker::end() {
  const std::string_view rest = context_.rest();
  const std::size_t line_end = rest.find('\n');
  if (line_end == std::string_view::npos) return context_.fail(context_.at() + rest.size(), "the line has no end");
  if (!trimmed(rest.substr(0, line_end)).empty()) {
    return context_.fail(context_.at(), "expected the end of the line, found " + context_.found(context_.at()));
  }
  context_.advance(line_end + 1);
  return true;
}

bool bx_text_checker::count(const char* label, bx_long& value) {
  const std::string_view rest = context_.rest();
  const std::size_t line_end = rest.find('\n');
  const std::string_view line = trimmed(rest.substr(0, line_end));
  bool in_range = true;
  const std::size_t length = std::min(line_end, rest.size());
  // The reader looks at the first 99 characters only.
  const bool is_number = length < static_cast<std::size_t>(bx_key_size) && parse(line, value, in_range);
  // A count of 0 may be the end of the file, and readers take that without a line end.
  const bool may_be_last = is_number && in_range && value == 0;
  if (line_end == std::string_view::npos && !rest.empty() && !may_be_last) {
    return context_.fail(context_.at() + rest.size(), std::string("the line with the ") + label + " has no end");
  }
  if (!is_number) {
    return context_.fail(context_.at(),
                         std::string("expected a line with the ") + label + ", found " + context_.found(context_.at()));
  }
  if (!in_range) return context_.fail(context_.at(), std::string("the ") + label + " does not fit into 32 bits");
  context_.advance(length);
  if (line_end != std::string_view::npos) {
    context_.advance(1);
  } else {
    context_.add(severity::note, context_.at(), "the last line has no end");
  }
  return true;
}

// ---- binary

const char* bx_binary_checker_base::take(const char* label, std::size_t count) {
  if (context_.left() < count) {
    context_.fail(context_.at(), neoform("expected the %d bytes of %s, found %d and the end of the file",
                                         static_cast<int>(count), label, static_cast<int>(context_.left())));
    return nullptr;
  }
  const char* bytes = context_.rest().data();
  context_.advance(count);
  return bytes;
}

bool bx_binary_checker_base::number(const char* label, bx_long& value) {
  const char* bytes = take(label, 4);
  if (bytes == nullptr) return false;
  value = static_cast<bx_long>(static_cast<bx_ulong>(bx_decode(bytes, 4)));
  return true;
}

bool bx_binary_checker_base::string(const char* label, bx_long limit, std::string_view& text) {
  const std::string_view room = context_.rest().substr(0, static_cast<std::size_t>(limit));
  const std::size_t end = room.find('\0');
  if (end == std::string_view::npos) {
    return context_.fail(context_.at(),
                         room.size() < static_cast<std::size_t>(limit)
                             ? std::string("the ") + label + " is cut off by the end of the file"
                             : std::string(neoform("the %s is longer than %d characters", label, limit - 1)));
  }
  text = room.substr(0, end);
  context_.advance(end + 1);
  return true;
}

bool bx_binary_checker::name_table() {
  const std::size_t start = context_.at();
  bx_long count = 0;
  if (!number("the name count", count)) return false;
  constexpr int least_entry = 9;  // an address and a NUL
  if (!context_.justified(start, "name count", count, least_entry, "names")) return false;
  context_.report.names = count;
  if (!context_.within_limits(start)) return false;
  table_.reserve(static_cast<std::size_t>(count));
  for (bx_long i = 0; i < count; ++i) {
    if (!context_.go_on()) return false;
    const std::size_t entry = context_.at();
    const char* bytes = take("a name's address", 8);
    if (bytes == nullptr) return false;
    const std::uint64_t address = bx_decode(bytes, 8);
    std::string_view text;
    if (!string("name", bx_key_size, text)) return false;
    context_.keeps_name(text);
    const auto [known, added] = table_.emplace(address, known_name{text});
    if (!added && known->second.text != text) {
      context_.add(severity::warning, entry, neoform("name %d has the address of an earlier one, which is lost", i));
      known->second.text = text;
    }
    if (text.find('"') != std::string_view::npos) {
      context_.add(severity::note, entry, "the name holds a double quote, which no text file can");
    }
  }
  context_.end_section("name table");
  return true;
}

bool bx_binary_checker::name(bx_check_record& record) {
  const bool is_root = !root_seen_;
  root_seen_ = true;
  return reference(record.name, is_root);
}

void bx_binary_checker::count_names() {
  for (const auto& [address, name] : table_) {
    if (name.is_used) context_.count_name(name.is_cut ? name.text.substr(0, name.text.find('$')) : name.text);
  }
}

bool bx_binary_checker::use(std::string_view& text, bool is_root, bool is_cut) {
  const std::size_t start = context_.at();
  const char* bytes = take("a name reference", 8);
  if (bytes == nullptr) return false;
  const std::uint64_t address = bx_decode(bytes, 8);
  const auto known = table_.find(address);
  if (known != table_.end()) {
    text = known->second.text;
    known->second.is_cut = known->second.is_cut || is_cut;
    if (!known->second.is_used && !counts_later_) context_.count_name(text);
    known->second.is_used = true;
    return true;
  }
  text = {};
  if (is_root) {
    context_.add(severity::note, start, "the root has no name");
    return true;
  }
  if (address == 0) return true;
  context_.add(
      severity::error, start,
      neoform("the name reference %016llX is not in the name table", static_cast<unsigned long long>(address)));
  return true;
}
