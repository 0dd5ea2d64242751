// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// JSON on standard output.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "qelmodb.h"

namespace bxdb {

using json = nlohmann::ordered_json;

/// The text with bytes that are no UTF-8 as U+FFFD.
std::string valid_utf8(std::string_view text);

/// The value on one line, names treated likewise.
std::string compact_json(const json& value);

/// Prints one value. Bytes of names that are no UTF-8 appear as U+FFFD.
void print_json(const json& value);

/// {"xmin": ..., "ymin": ..., "xmax": ..., "ymax": ...}
json rectangle_json(const UT_EXTREMA& box);

/// {"x": ..., "y": ...}
json position_json(const BX_WIRE& wire);

/// Prints an object with a list that may be too long to be held: the head, the list's records one by one,
/// the tail.
class json_list_document {
 public:
  json_list_document(const json& head, const char* list_key);
  void add(const json& record);
  void end(const json& tail);

 private:
  bool first_ = true;
};

}  // namespace bxdb
