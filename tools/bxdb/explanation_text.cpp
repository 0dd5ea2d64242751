// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include <algorithm>

#include "compressing.h"
#include "explanation.h"
#include "file_names.h"
#include "text.h"

namespace bxdb {
namespace {

/// Prints one line or more for each of a list's first entries, and how many there are behind these.
template <class List, class Print>
void print_first(const List& list, const explain_options& options, Print print) {
  const std::size_t shown = std::min(list.size(), options.most_shown);
  for (std::size_t i = 0; i < shown; ++i) print(list[i]);
  if (list.size() > shown) fmt::print("  ... and {} more; see --most\n", list.size() - shown);
}

/// The entries in descending order of a number, those of one number in their own order.
template <class Entry, class Number>
std::vector<Entry> descending(std::vector<Entry> entries, Number number) {
  std::stable_sort(entries.begin(), entries.end(),
                   [number](const Entry& a, const Entry& b) { return number(a) > number(b); });
  return entries;
}

std::string bytes_text(std::int64_t bytes) {
  const std::string exact = counted(bytes, "byte");
  const std::string rounded = size_text(static_cast<std::uint64_t>(bytes));
  return exact == rounded ? exact : exact + " (" + rounded + ")";
}

void print_losses(const qelmodb::compression_losses& losses) {
  if (losses.total() == 0) fmt::print("  losses           none\n");
  for (int kind = 0; kind < qelmodb::loss_count; ++kind) {
    const auto what = static_cast<qelmodb::loss>(kind);
    if (losses.count(what) != 0) fmt::print("  losses           {}\n", counted_loss(what, losses.count(what)));
  }
}

/// Templates that nothing shares are what keeps a database from compressing better.
std::string templates_text(const std::vector<template_use>& templates) {
  std::int64_t single = 0;
  std::int64_t bytes = 0;
  for (const template_use& use : templates) {
    if (use.instances != 1) continue;
    ++single;
    bytes += use.record_size;
  }
  return fmt::format("{}, {} of one instance only ({})", templates.size(), single, counted(bytes, "byte"));
}

void print_summary(const explanation& about) {
  const template_census& census = about.census;
  fmt::print("{}\n", printable(shown_input(about.options.file)));
  fmt::print("  form             {} database file{}\n", qelmodb::to_string(about.file_form),
             about.file_form == qelmodb::form::compressed ? "" : ", compressed in memory");
  fmt::print("  instances        {}\n", census.instances);
  fmt::print("  wires            {}\n", census.wires);
  fmt::print("  templates        {}\n", templates_text(census.templates));
  fmt::print("  switch matrices  {} with {}, in {} and {}\n", census.matrices, counted(census.matrix_wires, "wire"),
             counted(census.columns, "column"), counted(census.rows, "row"));
  fmt::print("  wire lists       {}\n", census.wire_lists.size());
  fmt::print("  wire templates   {}\n", census.wire_templates.size());
  fmt::print("  binary form      {}\n", bytes_text(about.binary_size));
  fmt::print("  compressed form  {}, a ratio of {:.2f}\n", bytes_text(about.compressed_size), about.ratio());
  for (const qelmodb::file_section& section : about.sections) {
    fmt::print("    {:<17}  {:>12} bytes\n", section.name, section.bytes);
  }
  print_losses(about.losses);
}

void print_templates(const explanation& about) {
  fmt::print("\nInstance templates, those that save most first\n");
  if (about.census.templates.empty()) return fmt::print("  none\n");
  fmt::print("  {:>6} {:>6} {:>9} {:>12} {:>12}  name\n", "number", "wires", "instances", "record bytes",
             "saved bytes");
  const auto sorted = descending(about.census.templates, [](const template_use& use) { return use.saved(); });
  print_first(sorted, about.options, [](const template_use& use) {
    fmt::print("  {:>6} {:>6} {:>9} {:>12} {:>12}  {}\n", use.number, use.layout->getnumwires(), use.instances,
               use.record_size, use.saved(), printable(ut_text(use.layout->name)));
  });
}

std::string point_text(const BX_POINT& point) { return fmt::format("({}, {})", point.x, point.y); }

std::string difference_text(const wire_difference& wire) {
  const std::string name = printable(ut_text(wire.name));
  if (!wire.there) return fmt::format("{} at {} only here", name, point_text(*wire.here));
  if (!wire.here) return fmt::format("{} at {} only there", name, point_text(*wire.there));
  return fmt::format("{} at {} here, {} there", name, point_text(*wire.here), point_text(*wire.there));
}

void print_near(const explanation& about, const near_miss& miss) {
  const template_use& use = about.of(miss.number);
  fmt::print("  template {} ({}), first {} {}; nearest: template {} ({})\n", miss.number,
             counted(use.instances, "instance"), printable(about.path_of(miss)), rectangle_text(*use.first), miss.other,
             counted(about.of(miss.other).instances, "instance"));
  for (const wire_difference& wire : miss.wires) fmt::print("    {}\n", difference_text(wire));
  if (miss.wires.empty()) fmt::print("    the same wires in another order\n");
  fmt::print("    if these were equal, {} would be saved\n", counted(use.record_size, "byte"));
}

void print_near_templates(const explanation& about) {
  fmt::print("\nNear misses: templates that share all but at most {} with another of their name\n",
             counted(static_cast<std::int64_t>(about.options.near_wires), "wire"));
  if (about.near.found.empty()) fmt::print("  none\n");
  print_first(about.near.found, about.options, [&about](const near_miss& miss) { print_near(about, miss); });
  if (about.near.complete) return;
  fmt::print("  the search ended after {} comparisons of wires; there may be more\n", near_options().most_comparisons);
}

void print_wire_lists(const explanation& about) {
  fmt::print("\nWire lists of switch matrices, those of most places first\n");
  if (about.census.wire_lists.empty()) return fmt::print("  none\n");
  fmt::print("  {:>6} {:>6} {:>9}\n", "number", "wires", "places");
  const auto sorted = descending(about.census.wire_lists, [](const wire_list_use& list) { return list.places; });
  print_first(sorted, about.options, [](const wire_list_use& list) {
    fmt::print("  {:>6} {:>6} {:>9}\n", list.number, list.wires, list.places);
  });
}

const char* span_text(const WIRE_TEMPLATE_SM& wire) {
  switch (wire.span_dir) {
    case 0:
      return "column";
    case 1:
      return "row";
    default:
      return "none";
  }
}

void print_wire_templates(const explanation& about) {
  fmt::print("\nWires of switch matrices, the largest records first\n");
  if (about.census.wire_templates.empty()) return fmt::print("  none\n");
  fmt::print("  {:>6} {:>9} {:>8} {:>8} {:>8} {:>12}  name\n", "number", "spans to", "absolute", "vectors", "runs",
             "record bytes");
  const auto sorted =
      descending(about.census.wire_templates, [](const wire_template_size& size) { return size.record_size; });
  print_first(sorted, about.options, [](const wire_template_size& size) {
    fmt::print("  {:>6} {:>9} {:>8} {:>8} {:>8} {:>12}  {}\n", size.number, span_text(*size.wire),
               size.wire->absolute != 0 ? "yes" : "no", size.wire->num_offset_map, size.runs, size.record_size,
               printable(ut_text(size.wire->name)));
  });
}

}  // namespace

void print_as_text(const explanation& about) {
  print_summary(about);
  print_templates(about);
  print_near_templates(about);
  print_wire_lists(about);
  print_wire_templates(about);
}

}  // namespace bxdb
