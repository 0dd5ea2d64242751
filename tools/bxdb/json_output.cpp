// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "json_output.h"

#include <fmt/format.h>

namespace bxdb {

std::string compact_json(const json& value) { return value.dump(-1, ' ', false, json::error_handler_t::replace); }

std::string valid_utf8(std::string_view text) { return json::parse(compact_json(text)).get<std::string>(); }

void print_json(const json& value) { fmt::print("{}\n", value.dump(2, ' ', false, json::error_handler_t::replace)); }

json rectangle_json(const UT_EXTREMA& box) {
  return {{"xmin", box.xmin}, {"ymin", box.ymin}, {"xmax", box.xmax}, {"ymax", box.ymax}};
}

json position_json(const BX_WIRE& wire) { return {{"x", wire.nodex}, {"y", wire.nodey}}; }

json_list_document::json_list_document(const json& head, const char* list_key) {
  fmt::print("{{\n");
  for (const auto& [key, value] : head.items()) fmt::print("  {}: {},\n", compact_json(key), compact_json(value));
  fmt::print("  {}: [", compact_json(list_key));
}

void json_list_document::add(const json& record) {
  fmt::print("{}\n    {}", first_ ? "" : ",", compact_json(record));
  first_ = false;
}

void json_list_document::end(const json& tail) {
  fmt::print("{}]", first_ ? "" : "\n  ");
  for (const auto& [key, value] : tail.items()) fmt::print(",\n  {}: {}", compact_json(key), compact_json(value));
  fmt::print("\n}}\n");
}

}  // namespace bxdb
