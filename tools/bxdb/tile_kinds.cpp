// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "tile_kinds.h"

#include <algorithm>
#include <map>
#include <unordered_map>

#include "qelmoext.h"
#include "ut_string.h"

namespace bxdb {
namespace {

bool is_digit(char c) noexcept { return '0' <= c && c <= '9'; }
bool is_letter(char c) noexcept { return ('a' <= c && c <= 'z') || ('A' <= c && c <= 'Z'); }

/// Takes a letter and the digits behind it off the front; false, and nothing taken, when there are none.
bool take_coordinate(std::string_view& text, char letter) noexcept {
  if (text.size() < 2 || text[0] != letter || !is_digit(text[1])) return false;
  text.remove_prefix(2);
  while (!text.empty() && is_digit(text[0])) text.remove_prefix(1);
  return true;
}

bool take_pair(std::string_view& text, char first, char second) noexcept {
  std::string_view rest = text;
  if (!take_coordinate(rest, first)) return false;
  if (!rest.empty() && rest[0] == '_') rest.remove_prefix(1);
  if (!take_coordinate(rest, second)) return false;
  text = rest;
  return true;
}

/// Without a "Tile_X1Y3_" at the front.
std::string_view without_leading_place(std::string_view name) noexcept {
  std::string_view rest = name;
  while (!rest.empty() && is_letter(rest[0])) rest.remove_prefix(1);
  if (rest.size() < name.size() && !rest.empty() && rest[0] == '_') {
    rest.remove_prefix(1);
  } else {
    rest = name;
  }
  if (!take_pair(rest, 'X', 'Y') && !take_pair(rest, 'R', 'C')) return name;
  if (rest.size() < 2 || rest[0] != '_') return name;
  return rest.substr(1);
}

bool drop_number(std::string_view& text) noexcept {
  std::string_view rest = text;
  while (!rest.empty() && is_digit(rest.back())) rest.remove_suffix(1);
  if (rest.size() == text.size()) return false;
  text = rest;
  return true;
}

void drop_underscore(std::string_view& text) noexcept {
  if (!text.empty() && text.back() == '_') text.remove_suffix(1);
}

/// Takes "_X1Y3" off the end.
bool drop_pair(std::string_view& text, char first, char second) noexcept {
  std::string_view rest = text;
  if (!drop_number(rest) || !rest.ends_with(second)) return false;
  rest.remove_suffix(1);
  drop_underscore(rest);
  if (!drop_number(rest) || !rest.ends_with(first)) return false;
  rest.remove_suffix(1);
  drop_underscore(rest);
  text = rest;
  return true;
}

/// Without "_X1Y3" at the end, and without numbers there.
std::string_view without_trailing_place(std::string_view name) noexcept {
  std::string_view rest = name;
  if (!drop_pair(rest, 'X', 'Y')) drop_pair(rest, 'R', 'C');
  while (drop_number(rest)) drop_underscore(rest);
  return rest.empty() ? name : rest;
}

/// Whether the instance only groups others: the library makes such to keep lists of children short.
bool is_group(std::string_view name) noexcept {
  constexpr std::size_t number_end = 7;
  if (!name.starts_with("BXD")) return false;
  if (name.starts_with("BXD__")) return true;
  return name.size() > number_end && name[number_end] == '_' &&
         std::all_of(name.begin() + 3, name.begin() + number_end, is_digit);
}

using tile_list = std::vector<const BX_INSTANCE*>;
using name_list = std::vector<const char*>;

bool have_one_name(const tile_list& tiles) noexcept {
  return std::all_of(tiles.begin(), tiles.end(), [&tiles](const BX_INSTANCE* tile) {
    return std::string_view(ut_text(tile->name)) == ut_text(tiles.front()->name);
  });
}

/// For each tile the name of the innermost instance around it that is neither a group nor the root; null for tiles
/// without such.
name_list holders_of(const BX_DB& db, const tile_list& tiles) {
  std::unordered_map<const BX_INSTANCE*, std::size_t> places;
  for (std::size_t i = 0; i < tiles.size(); ++i) places.emplace(tiles[i], i);
  name_list holders(tiles.size());
  name_list holder_at;  // by depth: what holds the children of the instance last met there
  bx_walk(db, [&](const BX_INSTANCE& inst, bx_long depth) {
    const auto level = static_cast<std::size_t>(depth);
    holder_at.resize(level);
    const char* outer = level == 0 ? nullptr : holder_at.back();
    if (const auto at = places.find(&inst); at != places.end()) holders[at->second] = outer;
    const char* name = ut_text(inst.name);
    holder_at.push_back(level == 0 || is_group(name) ? outer : name);
    return true;
  });
  return holders;
}

name_list names_of(const tile_list& tiles) {
  name_list names;
  names.reserve(tiles.size());
  for (const BX_INSTANCE* tile : tiles) names.push_back(ut_text(tile->name));
  return names;
}

/// The tiles of one stem.
struct family {
  std::map<std::string_view, std::int64_t> variants;  // names without leading place, and their tiles
  std::int64_t tiles = 0;

  /// Numbers that tell few sorts of many tiles apart are part of the kind; others number the tiles.
  bool numbers_matter() const noexcept {
    constexpr std::int64_t most_variants = 4;
    constexpr std::int64_t least_tiles_of_each = 4;
    const auto count = static_cast<std::int64_t>(variants.size());
    return count <= most_variants && tiles >= count * least_tiles_of_each;
  }
};

std::vector<std::string_view> kind_names(const name_list& names) {
  std::map<std::string_view, family> families;
  for (const char* name : names) {
    family& one = families[stem_of(name)];
    ++one.variants[without_leading_place(name)];
    ++one.tiles;
  }
  std::vector<std::string_view> kinds;
  kinds.reserve(names.size());
  for (const char* name : names) {
    const std::string_view stem = stem_of(name);
    kinds.push_back(families.find(stem)->second.numbers_matter() ? without_leading_place(name) : stem);
  }
  return kinds;
}

}  // namespace

std::string_view stem_of(std::string_view name) noexcept { return without_trailing_place(without_leading_place(name)); }

tile_kinds::tile_kinds(const BX_DB& db, const std::vector<const BX_INSTANCE*>& tiles) {
  name_list names = names_of(tiles);
  if (!tiles.empty() && have_one_name(tiles)) {
    name_list holders = holders_of(db, tiles);
    if (std::find(holders.begin(), holders.end(), nullptr) == holders.end()) {
      shared_name_ = names.front();
      names = std::move(holders);
    }
  }
  const std::vector<std::string_view> tile_names = kind_names(names);
  std::map<std::string_view, std::int64_t> counts;
  for (const std::string_view name : tile_names) ++counts[name];
  for (const auto& [name, count] : counts) kinds_.push_back({std::string(name), count});
  std::stable_sort(kinds_.begin(), kinds_.end(), [](const kind& a, const kind& b) { return a.tiles > b.tiles; });
  std::map<std::string_view, std::size_t> places;
  for (std::size_t i = 0; i < kinds_.size(); ++i) places[kinds_[i].name] = i;
  kind_of_.reserve(tiles.size());
  for (const std::string_view name : tile_names) kind_of_.push_back(places[name]);
}

}  // namespace bxdb
