// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Finds the template of an instance, and the wire list of a switch matrix, among thousands. Both stand for a search
// from the first one on: of several that match, the one with the smallest number is found. Used while a database is
// compressed.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "bx_ass_template.h"
#include "bx_basic_ass_template.h"
#include "bx_db.h"
#include "bx_name_lists.h"
#include "ut_hash.h"

/// A new template with the layout of an instance.
std::unique_ptr<ASS_TEMPLATE> bx_template_of(const BX_INSTANCE& inst);

/// The templates of a table, by number of wires, name and relative nodes.
class bx_template_index {
 public:
  explicit bx_template_index(const std::vector<ASS_TEMPLATE*>& templates) : templates_(templates) {}

  /// The number of the first template that matches, or -1. Takes in what the table got since the last call.
  int find(const BX_INSTANCE& inst);

 private:
  struct order {
    using is_transparent = void;
    bool operator()(const ASS_TEMPLATE* a, const ASS_TEMPLATE* b) const;
    bool operator()(const ASS_TEMPLATE* a, const BX_INSTANCE& b) const;
    bool operator()(const BX_INSTANCE& a, const ASS_TEMPLATE* b) const;
  };

  const std::vector<ASS_TEMPLATE*>& templates_;
  std::map<const ASS_TEMPLATE*, int, order> numbers_;
  std::size_t known_ = 0;
};

/// Numbers for texts, so that lists of names can be compared quickly. The strings must outlive it.
class bx_text_numbers {
 public:
  /// Equal for equal texts. A missing name counts as "".
  int of(const char* text);

 private:
  std::unordered_map<const char*, int> by_address_;
  std::unordered_map<std::string_view, int, ut_text_hash> by_text_;
};

/// A wire list: for each wire the number of its wire template.
using bx_wire_list = std::vector<std::uint16_t>;

/// Wire lists, by the texts of the names that their wire templates have.
class bx_wire_list_index {
 public:
  /// Takes in the lists of a set. A list that refers to no template of the set never matches.
  explicit bx_wire_list_index(const BASIC_ASS_TEMPLATE& set);

  /// The same as if the set's templates had these names.
  bx_wire_list_index(const BASIC_ASS_TEMPLATE& set, std::vector<const char*> template_names);

  /// The number of lists taken in.
  int count() const noexcept { return count_; }

  /// The number of the first list with the names of these wires; count() when there is none.
  int find(const BX_INSTANCE& inst);

  /// Adds a list, with count() for its number.
  void add(const bx_wire_list& list);

 private:
  static constexpr int none = -1;

  int find_texts(const BX_INSTANCE& inst);

  std::vector<const char*> template_names_;
  int count_ = 0;
  bx_text_numbers texts_;
  std::map<std::vector<int>, int> numbers_;
  std::vector<int> key_;
  // Instances with the very strings of one before need no look at texts.
  bx_name_lists strings_;
  std::vector<int> found_;  // by the number that strings_ gives; what was not found is asked for again
};

/// The wire list of an instance for a set with this many wire templates. number_of(name) gives the number that builds
/// know a string by, or bx_no_wire_number. A number beyond the templates is one of an earlier build, and is as good as
/// none. Wires are counted in 16 bits. Null when a wire has no template; missing is its name then.
template <class NumberOf>
std::optional<bx_wire_list> bx_wire_list_of(const BX_INSTANCE& inst, std::size_t templates, NumberOf number_of,
                                            const char*& missing) {
  bx_wire_list list(static_cast<std::uint16_t>(static_cast<bx_ulong>(inst.getnumwires())));
  for (std::size_t j = 0; j < list.size(); ++j) {
    const char* const name = inst.wires[static_cast<bx_long>(j)].name;
    const int number = number_of(name);
    if (number < 0 || static_cast<std::size_t>(number) >= templates) {
      missing = name;
      return std::nullopt;
    }
    list[j] = static_cast<std::uint16_t>(number);
  }
  return list;
}

/// What helps while a database is compressed; bound to it from construction to destruction.
class bx_compression_aids {
 public:
  explicit bx_compression_aids(BX_DB& db);
  bx_compression_aids(const bx_compression_aids&) = delete;
  bx_compression_aids& operator=(const bx_compression_aids&) = delete;
  ~bx_compression_aids();

  bx_template_index templates;
  bx_wire_list_index wire_lists;

 private:
  BX_DB& db_;
};
