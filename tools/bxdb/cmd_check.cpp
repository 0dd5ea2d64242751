// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include "commands.h"
#include "failure.h"
#include "json_output.h"
#include "loaded_database.h"
#include "progress.h"
#include "text.h"

namespace bxdb {
namespace {

qelmodb::check_report checked(const input_file& input, const check_options& how) {
  progress shown("checking " + input.name);
  qelmodb::check_options options;
  options.most_faults = how.most_faults;
  options.within = how.input.within;
  options.report = shown.options().report;
  options.count_names = how.as_json;
  return qelmodb::check_bytes(input.bytes, input.what, options);
}

/// The first line tells the form.
bool is_form_known(const qelmodb::check_report& report) { return !report.sections.empty(); }

std::string verdict(const qelmodb::check_report& report) {
  if (report.limit != nullptr) return fmt::format("beyond a limit, see --max-{}", report.limit);
  if (!report.loadable()) return "invalid";
  return report.sound() ? "sound" : "loadable, but lookups can miss what it holds";
}

std::string faults_text(const qelmodb::check_report& report) {
  std::string text = fmt::format("{}, {}, {}", counted(report.errors, "error"), counted(report.warnings, "warning"),
                                 counted(report.notes, "note"));
  const auto described = static_cast<std::int64_t>(report.faults.size());
  const std::int64_t hidden = report.errors + report.warnings + report.notes - described;
  if (hidden > 0) text += fmt::format(" ({} not shown; see --most)", hidden);
  return text;
}

qelmodb::content content_of(const qelmodb::check_report& report) {
  const bool is_grid = (report.file_content == qelmodb::content::grid) != report.is_other_content;
  return is_grid ? qelmodb::content::grid : qelmodb::content::database;
}

/// What the file turned out to be.
std::string described(const input_file& input, const qelmodb::check_report& report) {
  if (report.foreign_kind != nullptr) return fmt::format("not a BX_DB file, it is {}", report.foreign_kind);
  if (!is_form_known(report)) return input.bytes.starts_with("BX_DB:") ? "undetermined file" : "not a BX_DB file";
  const std::string form = qelmodb::to_string(report.file_form);
  std::string file = input.is_certain ? fmt::format("{} {} file", form, qelmodb::to_string(content_of(report)))
                                      : form + " file, undetermined whether database or grid";
  if (report.is_other_content) return file;
  return fmt::format("{}, {}, {}", file, counted(report.instances, "instance"), counted(report.wires, "wire"));
}

void print_text(const input_file& input, const qelmodb::check_report& report, const std::string& what) {
  for (const qelmodb::fault& fault : report.faults) fmt::print("{}\n", fault_text(input.name, fault));
  fmt::print("{}: {}: {}; {}\n", printable(input.name), verdict(report), what, faults_text(report));
}

json or_null(bool known, const char* text) { return known ? json(text) : json(nullptr); }

json head_of(const input_file& input, const qelmodb::check_report& report, const std::string& file) {
  return {{"file", file},
          {"form", or_null(is_form_known(report), qelmodb::to_string(report.file_form))},
          {"content", or_null(is_form_known(report) && input.is_certain, qelmodb::to_string(content_of(report)))},
          {"foreign_kind", or_null(report.foreign_kind != nullptr, report.foreign_kind)},
          {"packing", to_string(input.packed)},
          {"bytes", input.is_unpacked ? json(report.bytes) : json(nullptr)},
          {"bytes_on_disk", input.size_on_disk},
          {"loadable", report.loadable()},
          {"sound", report.sound()}};
}

void print_as_json(const input_file& input, const qelmodb::check_report& report, const std::string& file) {
  json_list_document document(head_of(input, report, file), "faults");
  for (const qelmodb::fault& fault : report.faults) {
    document.add({{"severity", qelmodb::to_string(fault.level)},
                  {"offset", fault.offset},
                  {"line", fault.line},
                  {"path", fault.path},
                  {"message", fault.message}});
  }
  document.end({{"errors", report.errors},
                {"warnings", report.warnings},
                {"notes", report.notes},
                {"instances", report.instances},
                {"wires", report.wires},
                {"names", report.different_names},
                {"name_table", report.names},
                {"depth", report.depth},
                {"dollar_wires", report.dollar_wires},
                {"memory", report.memory},
                {"limit", or_null(report.limit != nullptr, report.limit)}});
}

/// What is known of a file whose packed data is damaged.
qelmodb::check_report report_on(const damaged_data& damage, const check_options& options) {
  qelmodb::check_report report;
  report.errors = 1;
  if (options.most_faults == 0) return report;
  report.faults.push_back({qelmodb::severity::error, static_cast<std::int64_t>(damage.at), 0, {}, damage.reason});
  return report;
}

int tell(const input_file& input, const qelmodb::check_report& report, const check_options& options,
         const std::string& what) {
  if (options.as_json) {
    print_as_json(input, report, options.file);
  } else {
    print_text(input, report, what);
  }
  return report.sound() ? done : no;
}

}  // namespace

int run_check(const check_options& options) {
  input_file input = read_packed_input(options.file, options.input);
  try {
    unpack_input(input, options.input);
  } catch (const damaged_data& damage) {
    return tell(input, report_on(damage, options), options, fmt::format("damaged {} data", to_string(input.packed)));
  }
  const qelmodb::check_report report = checked(input, options);
  return tell(input, report, options, described(input, report));
}

}  // namespace bxdb
