// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "query_answers.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <limits>

#include "question.h"

namespace bxdb {

namespace {

template <std::size_t count>
std::array<bx_long, count> coordinates(const json& question, const char* key) {
  const json& list = question.at(key);
  const auto fits = [](const json& value) {
    return value.is_number_integer() && (!value.is_number_unsigned() || value.get<std::uint64_t>() <= INT32_MAX) &&
           value.get<std::int64_t>() >= INT32_MIN && value.get<std::int64_t>() <= INT32_MAX;
  };
  if (!list.is_array() || list.size() != count || !std::all_of(list.begin(), list.end(), fits)) {
    throw no_question(fmt::format("\"{}\" takes a list of {} whole numbers of 32 bits", key, count));
  }
  std::array<bx_long, count> values;
  std::transform(list.begin(), list.end(), values.begin(), [](const json& value) { return value.get<bx_long>(); });
  return values;
}

std::size_t most_of(const json& question) {
  if (!question.contains("most")) return std::numeric_limits<std::size_t>::max();
  if (!question["most"].is_number_unsigned()) throw no_question("\"most\" takes a whole number that is not negative");
  return question["most"].get<std::size_t>();
}

}  // namespace

json query_answers::answer(const std::string& line) {
  json answered = json::object();
  try {
    answered.update(answer_to(parse_question(line, answered)));
  } catch (const no_question& e) {
    ++faults_;
    answered["error"] = e.what();
  }
  return answered;
}

json query_answers::answer_to(const json& question) {
  const std::string kind = kind_of(question);
  const std::size_t most = most_of(question);
  if (kind == "instance") return described(question, most);
  if (kind == "wire") {
    collect_wires(text_of(question, "wire").c_str(), question);
    return wires_answer(most);
  }
  if (kind == "node") {
    const auto [x, y] = coordinates<2>(question, "node");
    index_.wires_at(x, y, wires_);
    return wires_answer(most);
  }
  if (kind == "name") {
    const auto named = index_.instances_named(text_of(question, "name").c_str());
    instances_.assign(named.begin(), named.end());
  } else if (kind == "at") {
    const auto [x, y] = coordinates<2>(question, "at");
    index_.instances_at(x, y, instances_);
  } else {
    const auto [x1, y1, x2, y2] = coordinates<4>(question, "meeting");
    index_.instances_meeting(x1, y1, x2, y2, instances_);
  }
  return instances_answer(most);
}

json query_answers::instances_answer(std::size_t most) {
  json list = json::array();
  for (std::size_t i = 0; i < std::min(most, instances_.size()); ++i) list.push_back(short_form(*instances_[i]));
  return {{"count", instances_.size()}, {"instances", std::move(list)}};
}

json query_answers::wires_answer(std::size_t most) {
  json list = json::array();
  for (std::size_t i = 0; i < std::min(most, wires_.size()); ++i) {
    const auto& [wire, inst] = wires_[i];
    list.push_back({{"wire", ut_text(wire->name)},
                    {"node", position_json(*wire)},
                    {"in", index_.number_of(*inst)},
                    {"path", paths_.of(*inst)}});
  }
  return {{"count", wires_.size()}, {"wires", std::move(list)}};
}

json query_answers::short_form(const BX_INSTANCE& inst) {
  return {{"instance", index_.number_of(inst)}, {"path", paths_.of(inst)}, {"box", rectangle_json(inst)}};
}

json query_answers::number_or_null(const BX_INSTANCE* inst) const {
  return inst != nullptr ? json(index_.number_of(*inst)) : json(nullptr);
}

json query_answers::long_form(const BX_INSTANCE& inst) {
  json shown = short_form(inst);
  shown["depth"] = index_.depth_of(inst);
  shown["wires"] = inst.getnumwires();
  shown["children"] = inst.getnuminstances();
  shown["parent"] = number_or_null(index_.parent(inst));
  shown["next"] = number_or_null(index_.next(inst));
  shown["next_past"] = number_or_null(index_.next_past(inst));
  return shown;
}

json query_answers::described(const json& question, std::size_t most) {
  instances_ = instances_given_by(question, "instance");
  json list = json::array();
  for (std::size_t i = 0; i < std::min(most, instances_.size()); ++i) list.push_back(long_form(*instances_[i]));
  return {{"count", instances_.size()}, {"instances", std::move(list)}};
}

void query_answers::collect_wires(const char* name, const json& question) {
  wires_.clear();
  for (BX_INSTANCE* inst : instances_given_by(question, "in")) {
    for (BX_WIRE* wire = nullptr; (wire = index_.wire(*inst, name, wire)) != nullptr;) wires_.push_back({wire, inst});
  }
}

// An instance is given by its number in the walk, or by its path, which several can have. A name may hold a "/".
std::vector<BX_INSTANCE*> query_answers::instances_given_by(const json& question, const char* key) const {
  const json& where = question.at(key);
  if (where.is_number_unsigned()) {
    const auto number = where.get<std::uint64_t>();
    if (number >= index_.instances().size()) throw no_question(fmt::format("there is no instance {}", number));
    return {index_.instances()[number]};
  }
  if (!where.is_string()) throw no_question("an instance is given by its number or its path");
  const std::string path = text_of(question, key);
  std::vector<BX_INSTANCE*> found;
  // No file holds longer names.
  const std::size_t shortest = path.size() - std::min<std::size_t>(path.size(), BX_GRID_NAME_LIMIT);
  for (std::size_t begin = shortest; begin <= path.size(); ++begin) {
    if (begin != 0 && path[begin - 1] != '/') continue;
    for (BX_INSTANCE* inst : index_.instances_named(path.c_str() + begin)) {
      if (has_path(*inst, path)) found.push_back(inst);
    }
  }
  std::sort(found.begin(), found.end(),
            [this](const BX_INSTANCE* a, const BX_INSTANCE* b) { return index_.number_of(*a) < index_.number_of(*b); });
  return found;
}

bool query_answers::has_path(const BX_INSTANCE& inst, std::string_view path) const {
  for (const BX_INSTANCE* here = &inst;;) {
    const std::string_view name = ut_text(here->name);
    if (!path.ends_with(name)) return false;
    path.remove_suffix(name.size());
    here = index_.parent(*here);
    if (here == nullptr) return path.empty();
    if (!path.ends_with('/')) return false;
    path.remove_suffix(1);
  }
}

}  // namespace bxdb
