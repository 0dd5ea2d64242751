// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The lookups against their definitions, written out plainly.
#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "exposed.h"

namespace {

using compare = std::function<int(const std::string&, const std::string&)>;

std::string stem(const std::string& name) { return name.substr(0, name.find('$')); }
int whole_order(const std::string& a, const std::string& b) { return a.compare(b); }
int stem_order(const std::string& a, const std::string& b) { return stem(a).compare(stem(b)); }

// The search by name in a list that need not be sorted.
bx_long plain_id(const std::vector<std::string>& names, const std::string& name, bx_long start, const compare& order) {
  const auto count = static_cast<bx_long>(names.size());
  const auto against = [&](bx_long i) { return order(name, names[static_cast<std::size_t>(i)]); };
  if (start < 0) {
    bx_long lo = 0;
    bx_long hi = count - 1;
    while (lo <= hi) {
      bx_long mid = (lo + hi) / 2;
      if (against(mid) == 0) {
        while (mid > 0 && against(mid - 1) == 0) --mid;
        return mid;
      }
      if (against(mid) < 0) {
        hi = mid - 1;
      } else {
        lo = mid + 1;
      }
    }
    return -1;
  }
  bx_long i = start + 1;
  while (i < count && against(i) < 0) ++i;
  return i < count && against(i) == 0 ? i : -1;
}

bool covers(const BX_INSTANCE& inst, bx_long x, bx_long y) {
  return inst.xmin <= x && x <= inst.xmax && inst.ymin <= y && y <= inst.ymax;
}

BX_WIRE* plain_wire_at(const BX_INSTANCE& inst, bx_long x, bx_long y, const std::string& name, const compare& order) {
  const bx_long id = plain_id(test::wire_names(inst), name, -1, order);
  if (id >= 0) return &inst.wires[id];
  for (BX_INSTANCE* child : inst.instances) {
    if (child->xmin > x + 1) break;
    if (!covers(*child, x, y)) continue;
    if (BX_WIRE* found = plain_wire_at(*child, x, y, name, order)) return found;
  }
  return nullptr;
}

class names_of {
 public:
  names_of(std::mt19937& random, std::string alphabet) : random_(random), alphabet_(std::move(alphabet)) {}
  std::string operator()() {
    std::string text;
    for (std::size_t length = random_() % 4; length > 0; --length) text += alphabet_[random_() % alphabet_.size()];
    return text;
  }

 private:
  std::mt19937& random_;
  std::string alphabet_;
};

class LookupModel : public testing::TestWithParam<unsigned> {
 protected:
  std::mt19937 random{GetParam()};

  bx_long number(bx_long from, bx_long to) { return std::uniform_int_distribution<bx_long>(from, to)(random); }

  void check_wires(const BX_INSTANCE& inst, const std::string& name) {
    const std::vector<std::string> names = test::wire_names(inst);
    for (bx_long start = -2; start <= inst.getnumwires() + 1; ++start) {
      const bx_long id = plain_id(names, name, start, whole_order);
      const bx_long id_tr = plain_id(names, name, start, stem_order);
      ASSERT_EQ(inst.getwireid(name.c_str(), start), id) << name << " from " << start;
      ASSERT_EQ(inst.getwireid_tr(name.c_str(), start), id_tr) << name << " from " << start;
      if (start >= inst.getnumwires() || start < -1) continue;
      BX_WIRE* from = start < 0 ? nullptr : inst.getwire(start);
      ASSERT_EQ(inst.getwire(name.c_str(), from), inst.getwire(id));
      ASSERT_EQ(inst.getwire_tr(name.c_str(), from), inst.getwire(id_tr));
    }
  }

  static bx_long plain_covering(const BX_INSTANCE& inst, bx_long x, bx_long y, bx_long start) {
    for (bx_long i = start + 1; i < inst.getnuminstances(); ++i) {
      if (covers(*inst.instances[i], x, y)) return i;
    }
    return -1;
  }

  void check_children(const BX_INSTANCE& inst, const std::string& name, bx_long x, bx_long y) {
    const std::vector<std::string> names = test::child_names(inst);
    for (bx_long start = -1; start <= inst.getnuminstances(); ++start) {
      const bx_long id = plain_id(names, name, start, whole_order);
      const bx_long id_at = plain_covering(inst, x, y, start);
      ASSERT_EQ(inst.getinstanceid(name.c_str(), start), id) << name << " from " << start;
      ASSERT_EQ(inst.getinstanceid(x, y, start), id_at) << x << " " << y << " from " << start;
      if (start >= inst.getnuminstances()) continue;
      BX_INSTANCE* from = inst.getinstance(start);
      ASSERT_EQ(inst.getinstance(name.c_str(), from), inst.getinstance(id));
      ASSERT_EQ(inst.getinstance(x, y, from), inst.getinstance(id_at));
    }
  }
};

TEST_P(LookupModel, WireSearchesAgreeWithTheDefinition) {
  names_of name(random, "AB$ ~\x80\xff");
  for (int round = 0; round < 60; ++round) {
    BX_INSTANCE inst("I", 0, 0, 1, 1);
    for (bx_long i = number(0, 30); i > 0; --i) test::add_wire(inst, name().c_str());
    for (int i = 0; i < 30; ++i) check_wires(inst, name());
  }
}

TEST_P(LookupModel, EveryWireOfANameIsFoundByRepeatedSearches) {
  names_of name(random, "ABC");
  for (int round = 0; round < 60; ++round) {
    BX_INSTANCE inst("I", 0, 0, 1, 1);
    for (bx_long i = number(0, 40); i > 0; --i) test::add_wire(inst, name().c_str());
    const std::string wanted = name();
    std::vector<bx_long> expected;
    for (bx_long i = 0; i < inst.getnumwires(); ++i) {
      if (wanted == inst.wires[i].name) expected.push_back(i);
    }
    std::vector<bx_long> found;
    for (bx_long id = inst.getwireid(wanted.c_str(), -1); id >= 0; id = inst.getwireid(wanted.c_str(), id)) {
      found.push_back(id);
    }
    EXPECT_EQ(found, expected);
  }
}

TEST_P(LookupModel, ChildSearchesAgreeWithTheDefinition) {
  names_of name(random, "AB");
  for (int round = 0; round < 60; ++round) {
    BX_INSTANCE inst("I", 0, 0, 1, 1);
    for (bx_long i = number(0, 30); i > 0; --i) {
      const bx_long y = number(-9, 9);
      test::add(inst, name().c_str(), number(0, 1) * number(-9, 9), y, number(-9, 9), number(y, 12));
    }
    for (int i = 0; i < 30; ++i) check_children(inst, name(), number(-11, 11), number(-11, 13));
  }
}

TEST_P(LookupModel, PositionalWireSearchesAgreeWithTheDefinition) {
  names_of name(random, "ABab12_$/. ");
  for (int round = 0; round < 20; ++round) {
    BX_INSTANCE root("ROOT", 0, 0, 1, 1);
    test::grow_random_tree(root, random, 120);
    if (round % 2 == 1) root.convert_hierarchy();
    for (int i = 0; i < 200; ++i) {
      const bx_long x = number(-22, 31);
      const bx_long y = number(-22, 31);
      const std::string text = name();
      ASSERT_EQ(root.getwire(x, y, text.c_str()), plain_wire_at(root, x, y, text, whole_order));
      ASSERT_EQ(root.getwire_tr(x, y, text.c_str()), plain_wire_at(root, x, y, text, stem_order));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, LookupModel, testing::Values(1U, 2U, 3U));

}  // namespace
