// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Answers questions to an indexed tree, each a JSON object.
#pragma once

#include <string>
#include <vector>

#include "index_paths.h"
#include "json_output.h"

namespace bxdb {

class query_answers {
 public:
  explicit query_answers(const qelmodb::tree_index& index) : index_(index), paths_(index) {}

  /// The answer to a line of text. One that is no question is answered by {"error": reason}.
  json answer(const std::string& line);

  /// How many lines were no questions.
  std::int64_t faults() const noexcept { return faults_; }

 private:
  json answer_to(const json& question);
  json instances_answer(std::size_t most);
  json wires_answer(std::size_t most);
  json short_form(const BX_INSTANCE& inst);
  json long_form(const BX_INSTANCE& inst);
  json number_or_null(const BX_INSTANCE* inst) const;
  json described(const json& question, std::size_t most);

  void collect_wires(const char* name, const json& question);
  std::vector<BX_INSTANCE*> instances_given_by(const json& question, const char* key) const;
  bool has_path(const BX_INSTANCE& inst, std::string_view path) const;

  const qelmodb::tree_index& index_;
  index_paths paths_;
  std::vector<BX_INSTANCE*> instances_;
  std::vector<qelmodb::placed_wire> wires_;
  std::int64_t faults_ = 0;
};

}  // namespace bxdb
