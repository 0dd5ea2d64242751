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
  return qelmodb::check_bytes(input.bytes, input.what, options);
}

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

void print_text(const input_file& input, const qelmodb::check_report& report) {
  for (const qelmodb::fault& fault : report.faults) fmt::print("{}\n", fault_text(input.name, fault));
  fmt::print("{}: {}: {} {} file, {}, {}; {}\n", printable(input.name), verdict(report),
             qelmodb::to_string(report.file_form), qelmodb::to_string(report.file_content),
             counted(report.instances, "instance"), counted(report.wires, "wire"), faults_text(report));
}

void print_as_json(const input_file& input, const qelmodb::check_report& report) {
  json_list_document document({{"file", input.name},
                               {"form", qelmodb::to_string(report.file_form)},
                               {"content", qelmodb::to_string(report.file_content)},
                               {"packing", to_string(input.packed)},
                               {"bytes", report.bytes},
                               {"loadable", report.loadable()},
                               {"sound", report.sound()}},
                              "faults");
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
                {"names", report.names},
                {"depth", report.depth},
                {"dollar_wires", report.dollar_wires},
                {"memory", report.memory},
                {"limit", report.limit == nullptr ? nlohmann::json() : nlohmann::json(report.limit)}});
}

}  // namespace

int run_check(const check_options& options) {
  const input_file input = read_input(options.file, options.input);
  const qelmodb::check_report report = checked(input, options);
  if (options.as_json) {
    print_as_json(input, report);
  } else {
    print_text(input, report);
  }
  return report.sound() ? done : no;
}

}  // namespace bxdb
