// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "questions.h"

#include <map>
#include <random>

namespace bench {

namespace {

std::vector<wire_question> draw_wires() {
  const flat_tree& flat = flat_device();
  std::mt19937 random(1);
  std::vector<wire_question> drawn;
  while (drawn.size() < many_questions) {
    const std::size_t instance = random() % flat.instances.size();
    const flat_instance& inst = flat.instances[instance];
    if (inst.wires == 0) continue;
    const flat_wire& wire = flat.wires[inst.first_wire + random() % inst.wires];
    drawn.push_back({static_cast<std::uint32_t>(instance), wire.name});
  }
  return drawn;
}

std::vector<BX_POINT> draw_points() {
  const BX_DB& db = device();
  std::mt19937 random(2);
  std::uniform_int_distribution<bx_long> x(db.xmin, db.xmax);
  std::uniform_int_distribution<bx_long> y(db.ymin, db.ymax);
  std::vector<BX_POINT> drawn;
  while (drawn.size() < many_points) {
    const bx_long at_x = x(random);
    drawn.emplace_back(at_x, y(random));
  }
  return drawn;
}

void count_covers(const BX_INSTANCE& inst, const BX_POINT& point, cover_sums& sums) {
  for (bx_long id = -1; (id = inst.getinstanceid(point.x, point.y, id)) >= 0;) {
    const BX_INSTANCE* child = inst.instances[id];
    sums.count(child);
    if (child->getnuminstances() != 0) count_covers(*child, point, sums);
  }
}

template <class Sums, class Answer>
Sums remembered(std::map<std::size_t, Sums>& known, std::size_t count, Answer answer) {
  auto found = known.find(count);
  if (found == known.end()) found = known.emplace(count, answer()).first;
  return found->second;
}

}  // namespace

std::span<const wire_question> wire_questions(std::size_t count) {
  static const std::vector<wire_question> drawn = draw_wires();
  return std::span(drawn).first(count);
}

std::vector<pointer_question> pointer_questions(std::size_t count) {
  const flat_tree& flat = flat_device();
  std::vector<pointer_question> questions;
  questions.reserve(count);
  for (const wire_question& q : wire_questions(count)) {
    questions.push_back({flat.origins[q.instance], flat.names[q.name].c_str()});
  }
  return questions;
}

std::vector<BX_POINT> nodes(std::size_t count) {
  std::vector<BX_POINT> drawn;
  for (const pointer_question& q : pointer_questions(count)) {
    const BX_WIRE* wire = q.inst->getwire(q.name, nullptr);
    drawn.emplace_back(wire->getnodex(), wire->getnodey());
  }
  return drawn;
}

std::span<const BX_POINT> points(std::size_t count) {
  static const std::vector<BX_POINT> drawn = draw_points();
  return std::span(drawn).first(count);
}

std::int64_t library_wire_answers(std::span<const wire_question> asked) {
  const flat_tree& flat = flat_device();
  std::int64_t sum = 0;
  for (const wire_question& q : asked) {
    const BX_WIRE* wire = flat.origins[q.instance]->getwire(flat.names[q.name].c_str(), nullptr);
    if (wire != nullptr) sum += std::int64_t{wire->getnodex()} + wire->getnodey();
  }
  return sum;
}

cover_sums library_covers(std::span<const BX_POINT> asked) {
  cover_sums sums;
  for (const BX_POINT& point : asked) count_covers(device(), point, sums);
  return sums;
}

std::int64_t expected_wire_answers(std::size_t count) {
  static std::map<std::size_t, std::int64_t> known;
  return remembered(known, count, [count] { return library_wire_answers(wire_questions(count)); });
}

cover_sums expected_covers(std::size_t count) {
  static std::map<std::size_t, cover_sums> known;
  return remembered(known, count, [count] { return library_covers(points(count)); });
}

}  // namespace bench
